// A byte source whose bytes, descriptor and failures a test sets, and which keeps what is done to
// it.
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
        done.emplace_back("open");
        isOpen = canOpen;
        return isOpen;
    }
    bool Close() override {
        ++closes;
        done.emplace_back("close");
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
    bool Write(const std::string& text) override {
        done.push_back("write " + text);
        texts.push_back(text);
        return canWrite;
    }
    std::int32_t Write(const std::vector<std::uint8_t>& bytes) override {
        written.assign(bytes.begin(), bytes.end());
        return vectorWriteResult;
    }
    bool SetDevice(const std::string&) override { return true; }
    bool SetReadTimeout(Core::Time) override { return true; }
    int FileDescriptor() const override { return descriptor; }
    bool IsAtEnd() const override { return isAtEnd && toRead.empty(); }
    void ContinueWriting() override { ++continues; }
    bool HasWaitingBytes() const override { return hasWaitingBytes; }
    void Drain() override { done.emplace_back("drain"); }
    void SendBreak(double seconds) override { done.push_back("break " + std::to_string(seconds)); }
    bool SetBaudRate(std::int32_t baud) override {
        done.push_back("baud " + std::to_string(baud));
        return true;
    }

    void Bring(std::string_view bytes) { toRead.emplace_back(bytes); }
    template <class TBytes>
    void Bring(const TBytes& bytes) {
        toRead.emplace_back(bytes.begin(), bytes.end());
    }
    void Fail(const std::string& reason) { ReportFailure(reason); }

    /// Everything but reading, in order: "open", "write +++", "baud 9600", "break 0.300000" ...
    std::vector<std::string> done;
    std::vector<std::string> texts; ///< the texts written
    bool canWrite = true;
    bool hasWaitingBytes = false;
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
