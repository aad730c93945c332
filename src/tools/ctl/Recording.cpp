#include "Recording.h"

#include "Bytes/ByteReaders.h"
#include "Bytes/CRC32.h"

#include <algorithm>
#include <vector>

namespace Ctl {

namespace {

constexpr std::string_view kSync("\xAA\x44\x12", 3);
constexpr std::size_t kHeaderLength = 28;
constexpr std::size_t kCRCLength = 4;
/// Of the year 2104: a packet's time stamp ends in 2106.
constexpr std::uint16_t kLastWeek = 6500;

} // namespace

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
    const Core::UnixTime time =
        Core::GPSTime::FromGPSTime(moment.week, moment.milliseconds / 1000.0).AsUnixTime();
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
