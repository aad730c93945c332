#include "Recording.h"

#include "Bytes/ByteReaders.h"
#include "Bytes/CRC32.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unistd.h>
#include <vector>

namespace Ctl {

namespace {

constexpr std::uint32_t kMagicNanoseconds = 0xA1B23C4D;
constexpr std::uint32_t kLinkTypeUser0 = 147;
constexpr std::string_view kSync("\xAA\x44\x12", 3);
constexpr std::size_t kHeaderLength = 28;
constexpr std::size_t kCRCLength = 4;
/// Of 1980-01-06, the beginning of GPS time.
constexpr std::int64_t kGPSEpoch = 315'964'800;
constexpr std::int64_t kSecondsPerWeek = 604'800;
constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr int kMostLeapSeconds = 60;
/// Of the year 2104: a packet's time stamp ends in 2106.
constexpr std::uint16_t kLastWeek = 6500;

void AppendWord(std::string& bytes, std::uint32_t value, int size = 4) {
    for (int i = 0; i < size; ++i) {
        bytes += static_cast<char>(value >> (8 * i) & 0xFF);
    }
}

} // namespace

Core::UnixTime UnixTimeOf(std::uint32_t week, std::uint32_t milliseconds) {
    const std::int64_t seconds = kGPSEpoch + week * kSecondsPerWeek + milliseconds / 1000;
    const std::int64_t nanoseconds =
        seconds * kNanosecondsPerSecond + milliseconds % 1000 * std::int64_t{1'000'000};
    const Core::GPSTime wanted =
        Core::GPSTime::FromGPSTime(static_cast<std::int32_t>(week), milliseconds / 1000.0);
    for (std::int64_t leap = 0; leap < kMostLeapSeconds; ++leap) {
        const Core::UnixTime time(
            Core::Time::FromNanoseconds(nanoseconds - leap * kNanosecondsPerSecond));
        if (Core::GPSTime::FromUnixTime(time) == wanted) {
            return time;
        }
    }
    return Core::UnixTime(Core::Time::FromNanoseconds(nanoseconds)); // within a leap second
}

CRecordingWriter::~CRecordingWriter() {
    if (m_file != nullptr) {
        m_file.reset();
        ::unlink(m_partPath.c_str());
    }
}

std::string CRecordingWriter::Open(const std::string& path) {
    m_path = path;
    m_partPath = path + ".part";
    m_file.reset(std::fopen(m_partPath.c_str(), "wb"));
    if (m_file == nullptr) {
        return m_partPath + ": " + std::strerror(errno);
    }
    std::string header;
    AppendWord(header, kMagicNanoseconds);
    AppendWord(header, 2, 2); // the version, 2.4
    AppendWord(header, 4, 2);
    AppendWord(header, 0);
    AppendWord(header, 0);
    AppendWord(header, CBlockSplitter::kMaxBlock);
    AppendWord(header, kLinkTypeUser0);
    return Put(header);
}

std::string CRecordingWriter::Write(Core::UnixTime time, std::string_view block) {
    const std::int64_t nanoseconds = time.SinceEpoch().AsNanoseconds();
    std::string packet;
    AppendWord(packet, static_cast<std::uint32_t>(nanoseconds / kNanosecondsPerSecond));
    AppendWord(packet, static_cast<std::uint32_t>(nanoseconds % kNanosecondsPerSecond));
    AppendWord(packet, static_cast<std::uint32_t>(block.size()));
    AppendWord(packet, static_cast<std::uint32_t>(block.size()));
    packet += block;
    return Put(packet);
}

std::string CRecordingWriter::Put(const std::string& bytes) {
    return std::fwrite(bytes.data(), 1, bytes.size(), m_file.get()) == bytes.size()
               ? ""
               : m_partPath + ": " + std::strerror(errno);
}

std::string CRecordingWriter::Finish() {
    if (std::fflush(m_file.get()) != 0 || ::fsync(::fileno(m_file.get())) != 0 ||
        ::rename(m_partPath.c_str(), m_path.c_str()) != 0) {
        return m_path + ": " + std::strerror(errno);
    }
    m_file.reset();
    return "";
}

void CBlockSplitter::Add(std::string_view bytes) {
    m_buffer += bytes;
    while (ScanLog(false)) {
    }
    if (m_moment && m_scanned > kMaxBlock) {
        HandOut(m_scanned);
    }
}

/// Looks at the next log; false when more bytes are needed for that. At the end no more come: what
/// looked like the beginning of a log was none.
bool CBlockSplitter::ScanLog(bool isEnd) {
    const std::size_t at = m_buffer.find(kSync, m_scanned);
    if (at == std::string::npos) {
        m_scanned = std::max(m_scanned, m_buffer.size() - std::min(m_buffer.size(), kSync.size()));
        return false;
    }
    m_scanned = at;
    if (m_buffer.size() < at + kHeaderLength) {
        m_scanned += isEnd ? 1 : 0;
        return isEnd;
    }
    const std::vector<std::uint8_t> header(m_buffer.begin() + static_cast<std::ptrdiff_t>(at),
                                           m_buffer.begin() +
                                               static_cast<std::ptrdiff_t>(at + kHeaderLength));
    const std::size_t length = std::size_t{header[3]} + Bytes::ReadUInt16(header, 8) + kCRCLength;
    if (header[3] < kHeaderLength) {
        m_scanned = at + 1;
        return true;
    }
    if (m_buffer.size() < at + length) {
        m_scanned += isEnd ? 1 : 0;
        return isEnd;
    }
    const std::vector<std::uint8_t> log(m_buffer.begin() + static_cast<std::ptrdiff_t>(at),
                                        m_buffer.begin() +
                                            static_cast<std::ptrdiff_t>(at + length));
    if (!Bytes::HasValidCRC32(log)) {
        m_scanned = at + 1;
        return true;
    }
    m_scanned = at + length;
    const std::uint16_t week = Bytes::ReadUInt16(header, 14);
    if (week != 0 && week <= kLastWeek) {
        TakeMoment({week, Bytes::ReadUInt32(header, 16)}, at);
    }
    return true;
}

void CBlockSplitter::TakeMoment(const SMoment& moment, std::size_t at) {
    if (m_moment == moment) {
        m_older = 0;
        return;
    }
    const Core::UnixTime time = UnixTimeOf(moment.week, moment.milliseconds);
    const bool isOlder = m_moment && Core::UnixTime(time.SinceEpoch() + m_shift) < m_time;
    m_older = isOlder ? m_older + 1 : 0;
    if (isOlder && m_older < kManyOlder) {
        return;
    }
    if (m_moment) {
        HandOut(at);
    }
    if (isOlder) {
        m_shift = m_time - time;
        m_older = 0;
    }
    m_time = Core::UnixTime(time.SinceEpoch() + m_shift);
    m_moment = moment;
}

void CBlockSplitter::HandOut(std::size_t count) {
    const std::string_view bytes = std::string_view(m_buffer).substr(0, count);
    for (std::size_t at = 0; at < bytes.size(); at += kMaxBlock) {
        m_take(m_time, bytes.substr(at, kMaxBlock));
    }
    m_buffer.erase(0, count);
    m_scanned -= std::min(m_scanned, count);
}

bool CBlockSplitter::Finish() {
    while (ScanLog(true)) {
    }
    if (m_moment) {
        HandOut(m_buffer.size());
    }
    return m_moment.has_value();
}

} // namespace Ctl
