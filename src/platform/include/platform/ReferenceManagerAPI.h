// The reference manager's client: where the receiver is at which GPS time.
#pragma once

#include "platform/Time.h"

#include <cstdint>

class ReferenceManagerAPI {
public:
    /// Earth-centred Earth-fixed, metres; the satellites used, by system. Each call is one message.
    void SetGPSData(Core::GPSTime time, double x, double y, double z, std::int32_t gpsSatellites,
                    std::int32_t glonassSatellites, std::int32_t otherSatellites);
};
