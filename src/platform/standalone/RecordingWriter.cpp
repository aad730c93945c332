#include "platform/RecordingWriter.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <unistd.h>

namespace {

// The layout is that of libpcap's savefile format, version 2.4 (pcap-savefile(5)).
constexpr std::uint32_t kMagicNanoseconds = 0xA1B23C4D;
constexpr std::uint32_t kLinkTypeUser0 = 147;
constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr std::int64_t kLastSecond = std::numeric_limits<std::uint32_t>::max();

void AppendWord(std::string& bytes, std::uint32_t value, int size = 4) {
    for (int i = 0; i < size; ++i) {
        bytes += static_cast<char>(value >> (8 * i) & 0xFF);
    }
}

std::string FileHeader() {
    std::string header;
    AppendWord(header, kMagicNanoseconds);
    AppendWord(header, 2, 2); // the version, 2.4
    AppendWord(header, 4, 2);
    AppendWord(header, 0);
    AppendWord(header, 0);
    AppendWord(header, CRecordingWriter::kLongestBlock);
    AppendWord(header, kLinkTypeUser0);
    return header;
}

std::string Packet(std::int64_t nanoseconds, std::string_view block) {
    std::string packet;
    AppendWord(packet, static_cast<std::uint32_t>(nanoseconds / kNanosecondsPerSecond));
    AppendWord(packet, static_cast<std::uint32_t>(nanoseconds % kNanosecondsPerSecond));
    AppendWord(packet, static_cast<std::uint32_t>(block.size()));
    AppendWord(packet, static_cast<std::uint32_t>(block.size()));
    packet += block;
    return packet;
}

} // namespace

CRecordingWriter::~CRecordingWriter() {
    if (m_file != nullptr && m_place == EPlace::whenWhole) {
        ::unlink(m_writtenPath.c_str());
    }
}

std::string CRecordingWriter::Open(const std::string& path, EPlace place) {
    m_path = path;
    m_place = place;
    m_writtenPath = place == EPlace::whenWhole ? path + ".part" : path;
    m_size = 0;
    m_file.reset(std::fopen(m_writtenPath.c_str(), place == EPlace::whenWhole ? "wbe" : "wbex"));
    if (m_file == nullptr) {
        return m_writtenPath + ": " + std::strerror(errno);
    }
    if (place == EPlace::atOnce) {
        std::setvbuf(m_file.get(), nullptr, _IONBF, 0);
    }
    std::string why = Put(FileHeader());
    if (!why.empty()) {
        m_file.reset();
        ::unlink(m_writtenPath.c_str());
    }
    return why;
}

std::string CRecordingWriter::Write(Core::UnixTime time, std::string_view block) {
    const std::int64_t nanoseconds = std::clamp(time.SinceEpoch().AsNanoseconds(), std::int64_t{0},
                                                (kLastSecond + 1) * kNanosecondsPerSecond - 1);
    std::string packets;
    do {
        const std::string_view piece = block.substr(0, kLongestBlock);
        packets += Packet(nanoseconds, piece);
        block.remove_prefix(piece.size());
    } while (!block.empty());
    return Put(packets);
}

std::string CRecordingWriter::Put(const std::string& bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), m_file.get()) == bytes.size()) {
        m_size += bytes.size();
        return "";
    }
    const int error = errno;
    if (m_place == EPlace::atOnce) {
        const auto size = static_cast<off_t>(m_size);
        if (::ftruncate(::fileno(m_file.get()), size) == 0) {
            ::fseeko(m_file.get(), size, SEEK_SET);
        }
    }
    return m_writtenPath + ": " + std::strerror(error);
}

std::string CRecordingWriter::Finish() {
    if (std::fflush(m_file.get()) != 0 || ::fsync(::fileno(m_file.get())) != 0 ||
        (m_writtenPath != m_path && ::rename(m_writtenPath.c_str(), m_path.c_str()) != 0)) {
        return m_path + ": " + std::strerror(errno);
    }
    m_file.reset();
    return "";
}
