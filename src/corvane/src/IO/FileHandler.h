// The byte source over a raw file: captured receiver bytes, read as fast as they are asked for.
#pragma once

#include "IO/InputOutputHandler.h"

#include <vector>

/// A file of raw bytes. Its regular end is the end of an offline run; nothing can be written.
class CFileHandler : public CInputOutputHandler {
public:
    static constexpr std::int32_t kInitialCapacity = 1024;

    CFileHandler();
    ~CFileHandler() override;
    CFileHandler(const CFileHandler&) = delete;
    CFileHandler& operator=(const CFileHandler&) = delete;

    using CInputOutputHandler::Read;

    /// False, with the reason on standard error, when the file cannot be opened or is a directory.
    bool Open() override;
    /// False when it is closed already.
    bool Close() override;
    bool IsOpen() const override { return m_isOpen; }

    /// At most kMaxReadSize bytes. Empty at the end, when nothing is there yet, and when the read
    /// fails; the failure is kept for TakeFailure().
    std::string Read(std::int32_t count) override;

    /// Stores the path; false while a file is open.
    bool SetDevice(const std::string& path) override;
    /// A negative one, the default, reads without asking whether there is anything to read.
    bool SetReadTimeout(Core::Time timeout) override;
    int FileDescriptor() const override { return m_descriptor; }

    /// True once a read has met the end, or was asked for nothing: that would never get further.
    bool IsAtEnd() const override { return m_isAtEnd; }

private:
    std::string ReadBytes(std::size_t count);

    std::int32_t m_descriptor = -1;
    bool m_isOpen = false;
    std::string m_path;
    std::vector<char> m_buffer;
    Core::Time m_readTimeout = Core::Time::FromMilliseconds(-1);
    bool m_isAtEnd = false;
};
