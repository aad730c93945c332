// Messages as the daemon tells them, for the tests of the gpsd server.
#pragma once

#include "Support/FakeClock.h"
#include "hub/Messages.h"
#include "hub/gpsd/Reports.h"

#include <cstdio>
#include <string>

namespace GPSDTesting {

/// 2025-11-22T18:06:40Z: 20414 days and 65200 seconds after the Unix epoch, which is second 583618
/// of GPS week 2393 (2393 weeks after 315964800, and 18 leap seconds).
inline constexpr double kMoment = 1763834800.0;
inline constexpr std::int32_t kWeek = 2393;
inline constexpr double kSeconds = 583618.0;

/// Both clocks stand still until a test moves them; the wall clock begins at kMoment.
class CClocks {
public:
    CClocks() {
        s_wall = Core::Time::FromSeconds(kMoment);
        Core::ClockHooks().unix = [] { return s_wall; };
    }
    void Advance(std::int64_t milliseconds) {
        m_monotonic.Advance(Core::Time::FromMilliseconds(milliseconds));
        SetWallForward(milliseconds);
    }
    void SetWallForward(std::int64_t milliseconds) {
        s_wall = s_wall + Core::Time::FromMilliseconds(milliseconds);
    }
    static double Now() { return s_wall.AsSeconds(); }

private:
    CFakeClock m_monotonic;
    static inline Core::Time s_wall;
};

/// On the equator at longitude 0, where up is X, east is Y and north is Z: 100 m above the
/// ellipsoid. RTK fixed.
inline Hub::SSolution Solution(double time = kMoment) {
    Hub::SSolution solution;
    solution.name = "CPositionAPI";
    solution.time = time;
    solution.sender = 1;
    Position::SECEFPositionSolutionData& data = solution.data;
    data.x = 6378137.0 + 100.0;
    data.velocityX = 0.5;
    data.velocityY = 3.0;
    data.velocityZ = 4.0;
    data.standardDeviationX = 0.5;
    data.standardDeviationY = 0.25;
    data.standardDeviationZ = 0.125;
    data.week = kWeek;
    data.seconds = kSeconds;
    data.hostTime = time;
    data.positionQuality = 3;
    data.fixQuality = 4;
    data.differentialAge = 1.5;
    data.satellites = {9, 5, 0};
    data.hdop = 77.0; // no dilution at all, and never to be told as one
    data.vdop = 78.0;
    data.solutionClass = 6;
    data.velocityLatency = 0.1;
    return solution;
}

inline Hub::SSolution NoPosition(double time = kMoment) {
    Hub::SSolution solution;
    solution.name = "CPositionAPI";
    solution.time = time;
    solution.sender = 1;
    solution.data.solutionClass = -1;
    return solution;
}

inline Hub::GPSD::SFix Fix(const Hub::SSolution& solution = Solution(),
                           std::optional<double> geoid = std::nullopt) {
    return {solution, Hub::Navigate(solution, geoid), geoid, std::nullopt};
}

/// Of what stands between "$" and "*".
inline Hub::SSentence Sentence(const std::string& text, double time = kMoment) {
    unsigned checksum = 0;
    for (const char c : text) {
        checksum ^= static_cast<unsigned char>(c);
    }
    char end[8];
    std::snprintf(end, sizeof end, "*%02X", checksum);
    Hub::SSentence sentence;
    sentence.name = "CNMEAHandlerAPI";
    sentence.time = time;
    sentence.sender = 1;
    sentence.id = text.substr(0, 5);
    sentence.sentence = "$" + text + end;
    return sentence;
}

inline Hub::SSky Sky(std::vector<Hub::SSky::SChannel> channels, double time = kMoment) {
    Hub::SSky sky;
    sky.name = "CPositionAPI";
    sky.time = time;
    sky.sender = 1;
    sky.channels = std::move(channels);
    return sky;
}

inline Hub::SSky::SChannel Channel(std::uint8_t prn, std::optional<double> cn0) {
    return {prn, 0, 0, cn0};
}

} // namespace GPSDTesting
