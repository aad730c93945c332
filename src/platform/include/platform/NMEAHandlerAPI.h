// The NMEA service's client: the receiver's own sentences and the geoid's height.
#pragma once

#include <memory>
#include <string>

class CNMEAHandlerAPI {
public:
    CNMEAHandlerAPI();
    ~CNMEAHandlerAPI();
    CNMEAHandlerAPI(const CNMEAHandlerAPI&) = delete;
    CNMEAHandlerAPI& operator=(const CNMEAHandlerAPI&) = delete;

    /// `identifier` as in "GPGSV"; `time` in milliseconds of the GPS week; the sentence from its
    /// "$" to its checksum, without a line end. Each call is one message.
    void SetNMEAString(const std::string& identifier, unsigned long time,
                       const std::string& sentence);
    /// The geoid's height above the ellipsoid at the receiver's position, in metres. After a
    /// reconnect the last one is told again.
    void SetNMEAGeoidalSeparationValue(double separation);

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};
