#include "CaptureSummary.h"

#include "Bytes/ByteReaders.h"
#include "Framing/NMEASentenceConstructor.h"
#include "Framing/NovatelASCIISentenceConstructor.h"
#include "Framing/NovatelBinarySentenceConstructor.h"

#include <algorithm>

namespace Ctl {

namespace {

constexpr std::int64_t kMillisecondsPerWeek = 604'800'000;
/// So many different intervals are told apart; a capture without order has no usual one.
constexpr std::size_t kMaxIntervals = 10'000;
constexpr std::uint8_t kResponseBit = 0x80;

struct SName {
    std::uint16_t identifier;
    const char* name;
};

/// The receiver's manual, "log reference".
constexpr SName kNames[] = {
    {5, "LOGLIST"},
    {8, "IONUTC"},
    {37, "VERSION"},
    {41, "RAWEPHEM"},
    {42, "BESTPOS"},
    {43, "RANGE"},
    {47, "PSRPOS"},
    {72, "PORTSTATS"},
    {73, "ALMANAC"},
    {83, "TRACKSTAT"},
    {93, "RXSTATUS"},
    {96, "MATCHEDPOS"},
    {101, "TIME"},
    {128, "RXCONFIG"},
    {141, "RTKPOS"},
    {174, "PSRDOP"},
    {175, "REFSTATION"},
    {215, "RTKDATA"},
    {241, "BESTXYZ"},
    {243, "PSRXYZ"},
    {244, "RTKXYZ"},
    {287, "RAWWAASFRAME"},
    {317, "COMCONFIG"},
    {469, "PDPPOS"},
    {471, "PDPXYZ"},
    {495, "OMNIHPPOS"},
    {719, "GLOCLOCK"},
    {720, "GLORAWALM"},
    {730, "LBANDINFO"},
    {731, "LBANDSTAT"},
    {792, "GLORAWEPHEM"},
    {1085, "PDPSTAT"},
    {1148, "CHANCONFIGLIST"},
    {1162, "PSRSATS"},
    {1174, "RTKSATS"},
    {1234, "PDPSATS"},
    {1235, "SOFTLOADSTATUS"},
};

std::string NameOf(const std::vector<std::uint8_t>& log) {
    const std::uint16_t identifier = Bytes::ReadUInt16(log, 4);
    if ((Bytes::ReadUInt8(log, 6) & kResponseBit) != 0) {
        return "responses";
    }
    const auto* const found =
        std::find_if(std::begin(kNames), std::end(kNames),
                     [&](const SName& each) { return each.identifier == identifier; });
    return found == std::end(kNames) ? "log " + std::to_string(identifier) : found->name;
}

bool IsNameCharacter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '%';
}

/// Of an ASCII log or an NMEA sentence: what stands before the first comma. Bytes within a binary
/// log may have a right checksum by chance.
std::string TextNameOf(const std::vector<std::uint8_t>& sentence) {
    const std::string name(sentence.begin() + 1,
                           std::find(sentence.begin() + 1, sentence.end(), ','));
    return std::all_of(name.begin(), name.end(), IsNameCharacter) ? name.substr(0, 20)
                                                                  : "other texts";
}

} // namespace

void CLogStatistics::Take(std::int64_t milliseconds) {
    ++m_count;
    if (milliseconds == 0) {
        return;
    }
    if (m_timed++ == 0) {
        m_first = milliseconds;
    } else if (milliseconds > m_last && m_intervals.size() < kMaxIntervals) {
        ++m_intervals[milliseconds - m_last];
    }
    m_last = milliseconds;
}

std::optional<double> CLogStatistics::Rate() const {
    if (m_timed < 2 || m_last <= m_first) {
        return std::nullopt;
    }
    return static_cast<double>(m_timed - 1) * 1000.0 / static_cast<double>(m_last - m_first);
}

std::int64_t CLogStatistics::LongestUsualInterval() const {
    std::uint64_t all = 0;
    for (const auto& [interval, count] : m_intervals) {
        all += count;
    }
    std::uint64_t shorter = 0;
    for (const auto& [interval, count] : m_intervals) {
        shorter += count;
        if (2 * shorter >= all) {
            return interval + interval / 2;
        }
    }
    return 0;
}

std::uint64_t CLogStatistics::Gaps() const {
    std::uint64_t gaps = 0;
    const std::int64_t usual = LongestUsualInterval();
    for (const auto& [interval, count] : m_intervals) {
        gaps += interval > usual ? count : 0;
    }
    return gaps;
}

double CLogStatistics::LongestGap() const {
    return Gaps() == 0 ? 0.0 : static_cast<double>(m_intervals.rbegin()->first) / 1000.0;
}

CCaptureSummary::CCaptureSummary() {
    m_framers.push_back(std::make_unique<Novatel::CNovatelBinarySentenceConstructor>());
    m_framers.push_back(std::make_unique<Novatel::CNovatelASCIISentenceConstructor>());
    m_framers.push_back(std::make_unique<CNMEASentenceConstructor>());
}

CCaptureSummary::~CCaptureSummary() = default;

void CCaptureSummary::Add(std::string_view bytes) {
    m_bytes += bytes.size();
    const std::vector<std::uint8_t> chunk(bytes.begin(), bytes.end());
    std::vector<std::uint8_t> sentence;
    for (std::size_t i = 0; i < m_framers.size(); ++i) {
        m_framers[i]->AddBytes(chunk);
        for (int result = m_framers[i]->GetSentence(sentence);
             result != CSentenceConstructor::kExhausted;
             result = m_framers[i]->GetSentence(sentence)) {
            if (result == CSentenceConstructor::kCompleted) {
                ++m_framings[i].good;
                Take(sentence);
            } else {
                ++m_framings[i].rejected;
            }
        }
    }
}

void CCaptureSummary::Take(const std::vector<std::uint8_t>& sentence) {
    if (sentence.front() == '#' || sentence.front() == '$') {
        m_logs[TextNameOf(sentence)].Take(0);
        return;
    }
    const std::int64_t week = Bytes::ReadUInt16(sentence, 14);
    const std::int64_t milliseconds = Bytes::ReadUInt32(sentence, 16);
    m_logs[NameOf(sentence)].Take(week == 0 ? 0 : week * kMillisecondsPerWeek + milliseconds);
}

} // namespace Ctl
