// A text file that is read a bounded line at a time, for command lists and firmware images.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

/// Regular files only: nothing else has a size, and a pipe would make its reader wait.
class CLineFile {
public:
    static constexpr std::size_t kMaxLine = 1023;

    /// Closes what was open before. False, with the reason in LastError(), when it cannot be read.
    bool Open(const std::string& path);
    void Close();
    bool IsOpen() const { return m_file != nullptr; }

    /// Bytes, when it was opened.
    std::int64_t Size() const { return m_size; }
    /// Bytes taken by all reads so far, line ends included.
    std::int64_t BytesRead() const { return m_bytesRead; }

    /// The next line without its line feed, at most kMaxLine characters: of a longer one the rest
    /// is the next line. Past the end, and when nothing is open, empty.
    std::string ReadLine();

    /// Whether a read has met the end: reading the last line feed has not.
    bool IsAtEnd() const { return m_isAtEnd; }
    /// Whether the end was met because the disk or the file gave no more.
    bool HasFailed() const { return m_hasFailed; }
    const std::string& LastError() const { return m_lastError; }

private:
    struct SCloser {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    bool Fail(const std::string& reason);
    int Peek();

    std::unique_ptr<std::FILE, SCloser> m_file;
    std::int64_t m_size = 0;
    std::int64_t m_bytesRead = 0;
    bool m_isAtEnd = false;
    bool m_hasFailed = false;
    std::string m_lastError;
};
