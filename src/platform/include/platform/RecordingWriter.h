// The writer of recordings: classic pcap files, one recorded block a packet.
#pragma once

#include "platform/Time.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

/// Writes what CLogFileReader reads: link type USER0 (147), nanoseconds.
class CRecordingWriter {
public:
    /// A longer block becomes several of the same time.
    static constexpr std::size_t kLongestBlock = std::size_t{64} * 1024;

    enum class EPlace {
        /// Beside its place, as "<path>.part", until it is finished; what is not is removed.
        whenWhole,
        /// In its place, where no file may be yet. Each block is in the file before Write()
        /// returns, so that a program that is killed leaves a recording that ends there.
        atOnce,
    };

    CRecordingWriter() = default;
    ~CRecordingWriter();
    CRecordingWriter(const CRecordingWriter&) = delete;
    CRecordingWriter& operator=(const CRecordingWriter&) = delete;

    /// Each returns why it cannot be done, the empty text when it is.
    std::string Open(const std::string& path, EPlace place = EPlace::whenWhole);
    /// One that fails leaves a file in its place with the blocks before it, and may be tried again.
    std::string Write(Core::UnixTime time, std::string_view block);
    /// Puts the file, safely on the disk, where it belongs, and closes it.
    std::string Finish();

    bool IsOpen() const { return m_file != nullptr; }
    /// Of the file, bytes.
    std::uint64_t Size() const { return m_size; }

private:
    struct SCloser {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    std::string Put(const std::string& bytes);

    std::string m_path;
    std::string m_writtenPath;
    EPlace m_place = EPlace::whenWhole;
    std::unique_ptr<std::FILE, SCloser> m_file;
    std::uint64_t m_size = 0;
};
