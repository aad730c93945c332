#include "platform/ReferenceManagerAPI.h"

#include "HubLink.h"

#include <utility>

void ReferenceManagerAPI::SetGPSData(Core::GPSTime time, double x, double y, double z,
                                     std::int32_t gpsSatellites, std::int32_t glonassSatellites,
                                     std::int32_t otherSatellites) {
    std::uint32_t week = 0;
    double seconds = 0.0;
    time.AsGPSTime(week, seconds);
    SLinkMessage message;
    message.method = "reference.gps";
    AppendMember(message.members, "name", std::string("ReferenceManagerAPI"));
    AppendMember(message.members, "week", static_cast<long long>(week));
    AppendMember(message.members, "seconds", seconds);
    AppendMember(message.members, "x", x);
    AppendMember(message.members, "y", y);
    AppendMember(message.members, "z", z);
    AppendMember(message.members, "gps", static_cast<long long>(gpsSatellites));
    AppendMember(message.members, "glonass", static_cast<long long>(glonassSatellites));
    AppendMember(message.members, "other", static_cast<long long>(otherSatellites));
    CHubLink::Get().Publish(std::move(message), CLinkQueue::EPriority::line);
}
