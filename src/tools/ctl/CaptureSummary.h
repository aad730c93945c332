// What is in a capture or a recording: logs, counts, rates, gaps, time span, checksum failures.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class CSentenceConstructor;

namespace Ctl {

/// The logs of one kind, by the GPS time of their headers. Intervals longer than one and a half of
/// the usual one are gaps.
class CLogStatistics {
public:
    /// `milliseconds` of GPS time since its beginning; 0 for a log that has no time.
    void Take(std::int64_t milliseconds);

    std::uint64_t Count() const { return m_count; }
    /// Logs a second; nothing when no time has passed.
    std::optional<double> Rate() const;
    std::uint64_t Gaps() const;
    /// Seconds; 0 without a gap.
    double LongestGap() const;
    std::int64_t First() const { return m_first; }
    std::int64_t Last() const { return m_last; }

private:
    std::int64_t LongestUsualInterval() const;

    std::uint64_t m_count = 0;
    std::uint64_t m_timed = 0;
    std::int64_t m_first = 0;
    std::int64_t m_last = 0;
    std::map<std::int64_t, std::uint64_t> m_intervals; ///< milliseconds, and how often
};

/// Takes a stream through the daemon's own framers.
class CCaptureSummary {
public:
    struct SFraming {
        std::uint64_t good = 0;
        std::uint64_t rejected = 0;
    };

    CCaptureSummary();
    ~CCaptureSummary();
    CCaptureSummary(const CCaptureSummary&) = delete;
    CCaptureSummary& operator=(const CCaptureSummary&) = delete;

    void Add(std::string_view bytes);

    /// By name: "BESTPOS", "SOFTLOADSTATUSA", "GPGGA", "log 1234".
    const std::map<std::string, CLogStatistics>& Logs() const { return m_logs; }
    const SFraming& Binary() const { return m_framings[0]; }
    const SFraming& ASCII() const { return m_framings[1]; }
    const SFraming& NMEA() const { return m_framings[2]; }
    std::uint64_t Bytes() const { return m_bytes; }

private:
    void Take(const std::vector<std::uint8_t>& sentence);

    std::vector<std::unique_ptr<CSentenceConstructor>> m_framers;
    SFraming m_framings[3];
    std::map<std::string, CLogStatistics> m_logs;
    std::uint64_t m_bytes = 0;
};

} // namespace Ctl
