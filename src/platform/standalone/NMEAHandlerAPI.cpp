#include "platform/NMEAHandlerAPI.h"

#include "TypedState.h"

#include <utility>

namespace {

constexpr char kClientName[] = "CNMEAHandlerAPI";

void AppendSeparation(std::string& members, const double& separation) {
    AppendMember(members, "separation", separation);
}

} // namespace

class CNMEAHandlerAPI::Impl {
public:
    CTypedState<double> separation{kClientName, "nmea.geoid", AppendSeparation};
};

CNMEAHandlerAPI::CNMEAHandlerAPI() : m_impl(std::make_unique<Impl>()) {
}

CNMEAHandlerAPI::~CNMEAHandlerAPI() = default;

void CNMEAHandlerAPI::SetNMEAString(const std::string& identifier, unsigned long time,
                                    const std::string& sentence) {
    SLinkMessage message;
    message.method = "nmea.sentence";
    AppendMember(message.members, "name", std::string(kClientName));
    AppendMember(message.members, "id", identifier);
    AppendMember(message.members, "gpsTime", static_cast<long long>(time));
    AppendMember(message.members, "sentence", sentence);
    CHubLink::Get().Publish(std::move(message), CLinkQueue::EPriority::line);
}

void CNMEAHandlerAPI::SetNMEAGeoidalSeparationValue(double separation) {
    m_impl->separation.Publish(separation);
}
