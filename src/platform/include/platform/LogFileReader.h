// The reader of recordings: classic pcap files, one recorded block a packet.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

/// Reads a recording block by block. Classic pcap, microseconds or nanoseconds, either byte order,
/// link type USER0 (147). An empty file is a recording without blocks, blocks of length zero are
/// skipped, and a truncated or damaged tail ends the recording at the last whole block; so a file
/// cut inside its header has no blocks. Damage is told on standard error.
class CLogFileReader {
public:
    /// Opens the file; IsOpen() tells whether that worked. A file that cannot be read, or is
    /// something else than a recording, is told on standard error.
    explicit CLogFileReader(const std::string& path);
    ~CLogFileReader();
    CLogFileReader(const CLogFileReader&) = delete;
    CLogFileReader& operator=(const CLogFileReader&) = delete;

    bool IsOpen() const { return m_file != nullptr; }

    /// The next block and its recording time, seconds since the Unix epoch. False at the end: then
    /// `timestamp` is as it was and `data` empty.
    bool GetNextBinary(double& timestamp, std::string& data);

    /// The descriptor of the open file, -1 when there is none.
    int Descriptor() const;

private:
    struct SBlockHeader {
        double timestamp = 0.0;
        std::uint32_t length = 0;
    };
    struct SCloser {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    void OpenFile();
    void ReadFileHeader();
    bool TakeMagic(const unsigned char* header);
    void TakeFileHeader(const unsigned char* header);
    bool ReadBlockHeader(SBlockHeader& header);
    bool ReadBlock(const SBlockHeader& header, std::string& data);
    bool End();
    bool EndDamaged(const char* reason);
    void Refuse(const std::string& kind);
    std::uint32_t ReadHalf(const unsigned char* bytes) const;
    std::uint32_t ReadWord(const unsigned char* bytes) const;

    std::string m_path;
    std::unique_ptr<std::FILE, SCloser> m_file;
    bool m_isBigEndian = false;
    std::uint32_t m_unitsPerSecond = 0; ///< of the stamp's second word
    std::uint32_t m_longestBlock = 0;
    std::uint64_t m_position = 0; ///< where the last whole block ended
    bool m_hasEnded = false;
};
