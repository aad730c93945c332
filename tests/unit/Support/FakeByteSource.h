// A byte source whose bytes, descriptor and failures a test sets.
#pragma once

#include "IO/InputOutputHandler.h"

#include <algorithm>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

class CFakeByteSource : public CInputOutputHandler {
public:
    bool Open() override {
        ++opens;
        isOpen = canOpen;
        return isOpen;
    }
    bool Close() override {
        ++closes;
        isOpen = false;
        return true;
    }
    bool IsOpen() const override { return isOpen; }

    std::string Read() override {
        ++reads;
        if (toRead.empty()) {
            return {};
        }
        const std::string bytes = toRead.front();
        toRead.pop_front();
        return bytes;
    }
    std::string Read(std::int32_t) override { return Read(); }
    using CInputOutputHandler::Write;
    std::int32_t Write(const std::vector<std::uint8_t>& bytes) override {
        written.assign(bytes.begin(), bytes.end());
        return vectorWriteResult;
    }
    bool SetDevice(const std::string&) override { return true; }
    bool SetReadTimeout(Core::Time) override { return true; }
    int FileDescriptor() const override { return descriptor; }
    bool IsAtEnd() const override { return isAtEnd && toRead.empty(); }
    void ContinueWriting() override { ++continues; }

    void Bring(std::string_view bytes) { toRead.emplace_back(bytes); }
    template <class TBytes>
    void Bring(const TBytes& bytes) {
        toRead.emplace_back(bytes.begin(), bytes.end());
    }
    void Fail(const std::string& reason) { ReportFailure(reason); }

    std::deque<std::string> toRead;
    std::string written;
    std::int32_t vectorWriteResult = 1;
    int descriptor = -1;
    bool isOpen = true;
    bool canOpen = true;
    bool isAtEnd = false;
    int opens = 0;
    int closes = 0;
    int reads = 0;
    int continues = 0;
};
