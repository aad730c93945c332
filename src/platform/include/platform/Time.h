// Spans of time, the monotonic clock, the wall clock and GPS time, as every program uses them.
#pragma once

#include <compare>
#include <cstdint>

namespace Core {

/// A span of time, kept in whole nanoseconds (signed 64-bit: about 292 years either way).
class Time {
public:
    constexpr Time() = default;

    /// Rounds to the nearest nanosecond; spans beyond +-9.2e9 s, and NaN as 0, are clamped.
    static Time FromSeconds(double seconds);
    static constexpr Time FromNanoseconds(std::int64_t nanoseconds) { return Time(nanoseconds); }
    static constexpr Time FromMilliseconds(std::int64_t milliseconds) {
        return Time(milliseconds * 1'000'000);
    }

    constexpr std::int64_t AsNanoseconds() const { return m_nanoseconds; }
    constexpr double AsSeconds() const {
        // Apart: nanoseconds since 1970 are more digits than a double has.
        const std::int64_t whole = m_nanoseconds / 1'000'000'000;
        const std::int64_t fraction = m_nanoseconds % 1'000'000'000;
        return static_cast<double>(whole) + static_cast<double>(fraction) / 1e9;
    }
    constexpr bool IsNegative() const { return m_nanoseconds < 0; }

    constexpr auto operator<=>(const Time&) const = default;
    constexpr Time operator+(Time other) const { return Time(m_nanoseconds + other.m_nanoseconds); }
    constexpr Time operator-(Time other) const { return Time(m_nanoseconds - other.m_nanoseconds); }

private:
    explicit constexpr Time(std::int64_t nanoseconds) : m_nanoseconds(nanoseconds) {}

    std::int64_t m_nanoseconds = 0;
};

/// A moment of the clock that never steps (CLOCK_MONOTONIC). The default one, zero, lies before
/// every moment that Now() returns, so a deadline of zero has expired.
class MonotonicTime {
public:
    constexpr MonotonicTime() = default;

    static MonotonicTime Now();
    /// The deadline so many seconds from now.
    static MonotonicTime Timer(std::int32_t seconds);
    /// Whether the clock has reached this deadline.
    bool HasExpired() const { return Now() >= *this; }

    constexpr double AsSeconds() const { return m_sinceStart.AsSeconds(); }
    constexpr bool IsZero() const { return m_sinceStart == Time(); }

    constexpr auto operator<=>(const MonotonicTime&) const = default;
    constexpr MonotonicTime operator+(Time span) const {
        return MonotonicTime(m_sinceStart + span);
    }
    constexpr Time operator-(MonotonicTime earlier) const {
        return m_sinceStart - earlier.m_sinceStart;
    }

private:
    explicit constexpr MonotonicTime(Time sinceStart) : m_sinceStart(sinceStart) {}

    Time m_sinceStart;
};

/// A moment of the wall clock: UTC since 1970-01-01, without leap seconds, as POSIX counts it.
class UnixTime {
public:
    constexpr UnixTime() = default;
    explicit constexpr UnixTime(Time sinceEpoch) : m_sinceEpoch(sinceEpoch) {}

    static UnixTime Now();

    constexpr double AsSeconds() const { return m_sinceEpoch.AsSeconds(); }
    constexpr Time SinceEpoch() const { return m_sinceEpoch; }

    constexpr auto operator<=>(const UnixTime&) const = default;
    constexpr Time operator-(UnixTime earlier) const { return m_sinceEpoch - earlier.m_sinceEpoch; }

private:
    Time m_sinceEpoch;
};

/// A moment of GPS time: since 1980-01-06 00:00:00 UTC, without leap seconds (IS-GPS-200).
class GPSTime {
public:
    constexpr GPSTime() = default;

    /// Adds the leap seconds that had been inserted by then (IERS Bulletin C; table in
    /// GPSTime.cpp). A moment before the GPS epoch gives the epoch.
    static GPSTime FromUnixTime(UnixTime time);

    /// `week` counts from the GPS epoch without roll-over; `seconds` of week may lie outside a week
    /// and are kept to the nanosecond. A moment before the GPS epoch gives the epoch, seconds that
    /// are no number give the start of the week.
    static GPSTime FromGPSTime(std::int32_t week, double seconds);

    /// Writes the week and the seconds of week, from 0 to below 604800.
    void AsGPSTime(std::uint32_t& week, double& seconds) const;

    /// The moment whose GPS time this is; of the two within a leap second, the later one.
    UnixTime AsUnixTime() const;

    constexpr auto operator<=>(const GPSTime&) const = default;
    /// As a double, which holds every span that weeks can be apart; negative for a later one.
    double SecondsSince(GPSTime earlier) const;

private:
    // Apart: together they would leave 64 bits of nanoseconds in the year 2272, and a receiver that
    // has lost its time sends any week.
    std::int32_t m_week = 0;
    std::int64_t m_nanoseconds = 0; ///< of the week
};

/// Stops this thread for `span` (at once when it is not positive) and meanwhile serves the link to
/// the services, if the process has one: the only way the daemon ever pauses.
void Sleep(Time span);

} // namespace Core
