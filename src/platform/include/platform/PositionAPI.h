// The position service's client: the solution, the satellites in view, the base station.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace Position {

/// One solution in Earth-centred Earth-fixed coordinates (WGS-84), in the service's order.
struct SECEFPositionSolutionData {
    double x = 0.0; ///< metres, like the other coordinates and their standard deviations
    double y = 0.0;
    double z = 0.0;
    double velocityX = 0.0; ///< metres per second
    double velocityY = 0.0;
    double velocityZ = 0.0;
    double standardDeviationX = 0.0;
    double standardDeviationY = 0.0;
    double standardDeviationZ = 0.0;
    std::int32_t week = 0; ///< GPS week without roll-over
    double seconds = 0.0;  ///< of the week
    double hostTime = 0.0; ///< seconds since the Unix epoch, at publication
    /// 0 no position, 1 usable, 2 good, 3 best.
    std::int32_t positionQuality = 0;
    /// 0 no position, 1 single, 2 differential or float, 4 narrow-lane integer.
    std::int32_t fixQuality = 0;
    double differentialAge = 0.0; ///< seconds
    /// Used in the solution: all, 0, 0; or, where the receiver tells them apart, GPS, GLONASS, 0.
    std::array<std::int32_t, 3> satellites{};
    /// Made of the receiver's PSRDOP as it is kept: no dilutions in the usual sense.
    double hdop = 0.0;
    double vdop = 0.0;
    /// 4 single, 5 float, 6 integer, 2 L-band, -1 none of them.
    std::int32_t solutionClass = 0;
    double velocityLatency = 0.0; ///< seconds
};

} // namespace Position

/// Each call is one message; after a reconnect the last of each kind is told again.
class CPositionAPI {
public:
    struct sSSatinfo {
        std::uint8_t prn = 0;
        std::uint32_t word1 = 0;
        std::uint32_t word2 = 0;
        /// Carrier to noise density in whole dB-Hz; not finite when the receiver's figure is not.
        double cn0 = 0.0;
    };

    CPositionAPI();
    ~CPositionAPI();
    CPositionAPI(const CPositionAPI&) = delete;
    CPositionAPI& operator=(const CPositionAPI&) = delete;

    void SetECEFPositionData(const Position::SECEFPositionSolutionData& solution);
    /// One entry a channel; satellites received on two frequencies come twice.
    void SetSkyView(const std::vector<sSSatinfo>& satellites);
    /// Earth-centred Earth-fixed, metres.
    void SetBasePosition(double x, double y, double z);

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};
