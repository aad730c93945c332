#include "RPC/NovatelMPIServer.h"

#include "Control/CommandManager.h"
#include "LogObserver/ReceiverStatusObserver.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace {

using EType = MPICallbackBase::EType;
using ECost = MPICallbackBase::ECost;

/// For what the receiver knows of itself.
constexpr std::size_t kInformationRequests = 3;
/// Far beyond every orbit, and far from where arithmetic overflows; metres.
constexpr double kMaxCoordinate = 1e9;

} // namespace

struct CNovatelMPIServer::SMethod {
    const char* name;
    std::initializer_list<MPICallbackBase::SArgument> arguments;
    MPICallback<CNovatelMPIServer>::Operation operation;
    ECost cost = ECost::light;
    MPICallback<CNovatelMPIServer>::Check whyNotNow = nullptr;
    MPICallback<CNovatelMPIServer>::ArgumentCheck whyWrong = nullptr;
};

// clang-format off
const CNovatelMPIServer::SMethod CNovatelMPIServer::kMethods[] = {
    {"DummyFunction", {}, &CNovatelMPIServer::DummyFunction},
    {"RequestNMEA", {{"sentence name", EType::text, true}, {"period in milliseconds", EType::integer, true}},
     &CNovatelMPIServer::RequestNMEA, ECost::light, &CNovatelMPIServer::WhyNoRoomForOne,
     &CNovatelMPIServer::WhyNoSentence},
    {"novatel_SetSBASEnabled", {{"enabled", EType::integer}},
     &CNovatelMPIServer::SetSBASEnabled, ECost::settingsWrite},
    {"novatel_GetSBASEnabled", {}, &CNovatelMPIServer::GetSBASEnabled},
    {"novatel_SetSBASPRN", {{"PRN", EType::integer}},
     &CNovatelMPIServer::SetSBASPRN, ECost::settingsWrite},
    {"novatel_GetSBASPRN", {}, &CNovatelMPIServer::GetSBASPRN},
    {"novatel_SetReferenceFormat", {{"format", EType::text}},
     &CNovatelMPIServer::SetReferenceFormat, ECost::settingsWrite},
    {"novatel_GetReferenceFormat", {}, &CNovatelMPIServer::GetReferenceFormat},
    {"novatel_SetReferencePosition", {{"X", EType::number}, {"Y", EType::number}, {"Z", EType::number}},
     &CNovatelMPIServer::SetReferencePosition, ECost::settingsWrite, nullptr,
     &CNovatelMPIServer::WhyNoPosition},
    {"novatel_GetReferencePosition", {}, &CNovatelMPIServer::GetReferencePosition},
    {"novatel_UnsetReferencePosition", {},
     &CNovatelMPIServer::UnsetReferencePosition, ECost::settingsWrite},
    {"novatel_SetGlonassCorrectionsEnabled", {{"enabled", EType::integer}},
     &CNovatelMPIServer::SetGlonassCorrectionsEnabled, ECost::settingsWrite},
    {"novatel_GetGlonassCorrectionsEnabled", {}, &CNovatelMPIServer::GetGlonassCorrectionsEnabled},
    {"novatel_SetGPSLoggingEnabled", {{"enabled", EType::integer}},
     &CNovatelMPIServer::SetGPSLoggingEnabled, ECost::settingsWrite},
    {"novatel_GetGPSLoggingEnabled", {}, &CNovatelMPIServer::GetGPSLoggingEnabled},
    {"novatel_RefreshRegionSettings", {}, &CNovatelMPIServer::RefreshRegionSettings},
    {"novatel_ResetRTKFilter", {},
     &CNovatelMPIServer::ResetRTKFilter, ECost::light, &CNovatelMPIServer::WhyNoRoomToQueue},
    {"novatel_ResetPDPFilter", {},
     &CNovatelMPIServer::ResetPDPFilter, ECost::light, &CNovatelMPIServer::WhyNoRoomToQueue},
    {"novatel_GetIonosphereMode", {}, &CNovatelMPIServer::GetIonosphereMode},
    {"novatel_SetIonosphereMode", {{"mode", EType::integer, true}},
     &CNovatelMPIServer::SetIonosphereMode, ECost::settingsWrite},
    {"novatel_GetCurrentChannelConfiguration", {}, &CNovatelMPIServer::GetCurrentChannelConfiguration},
    {"novatel_GetAllowableChannelConfigurations", {}, &CNovatelMPIServer::GetAllowableChannelConfigurations},
    {"novatel_GetVersionInformation", {}, &CNovatelMPIServer::GetVersionInformation},
    {"novatel_SendFReset", {},
     &CNovatelMPIServer::SendFReset, ECost::light, &CNovatelMPIServer::WhyNoRoomToReplay},
    {"novatel_RefreshReceiverConfiguration", {},
     &CNovatelMPIServer::RefreshReceiverConfiguration, ECost::pause, &CNovatelMPIServer::WhyNoRoomForInformation},
    {"novatel_GetReceiverTrackingStatus", {}, &CNovatelMPIServer::GetReceiverTrackingStatus},
    {"novatel_SetReferenceOutputBandwidth", {}, &CNovatelMPIServer::SetReferenceOutputBandwidth},
    {"novatel_GetFirmwareUpgradeStatus", {}, &CNovatelMPIServer::GetFirmwareUpgradeStatus},
    {"novatel_StartFirmwareUpgrade", {{"firmware file", EType::text}},
     &CNovatelMPIServer::StartFirmwareUpgrade, ECost::pause},
};
// clang-format on

CNovatelMPIServer::CNovatelMPIServer(SocketCollectionC& sockets, CCommandManager* commands,
                                     SoftloadManager* upgrade,
                                     CReceiverStatusObserver* receiverStatus)
    : MPISocketServerC(sockets),
      m_commands(commands),
      m_upgrade(upgrade),
      m_receiverStatus(receiverStatus) {
    for (const SMethod& method : kMethods) {
        Register(std::make_unique<MPICallback<CNovatelMPIServer>>(
            method.name, method.arguments, method.cost, *this, method.operation, method.whyNotNow,
            method.whyWrong));
    }
    if (m_receiverStatus != nullptr) {
        m_receiverStatus->OnTrackedChanged(
            [this](std::int32_t distinctPRNs) { PostTrackingStatus(distinctPRNs); });
    }
}

void CNovatelMPIServer::ConnectionClosed(MPISocketConnectionC& connection) {
    m_trackers.erase(&connection);
}

void CNovatelMPIServer::PostTrackingStatus(std::int32_t distinctPRNs) {
    for (MPISocketConnectionC* const tracker : m_trackers) {
        tracker->PostCallback("cb_trackingStatus", BListC().AddInt(distinctPRNs));
    }
}

std::string CNovatelMPIServer::WhyNoRoomToQueue() const {
    return m_commands == nullptr || m_commands->HasRoomToQueue(1)
               ? ""
               : "10000 commands wait to be sent to the receiver already";
}

std::string CNovatelMPIServer::WhyNoRoomToSend(std::size_t count) const {
    return m_commands == nullptr || m_commands->HasRoomToSend(count)
               ? ""
               : "10000 commands are kept to be sent again after a reset; changing a setting or "
                 "starting the daemon again begins anew";
}

std::string CNovatelMPIServer::WhyNoRoomForOne() const {
    return WhyNoRoomToSend(1);
}

std::string CNovatelMPIServer::WhyNoRoomForInformation() const {
    return WhyNoRoomToSend(kInformationRequests);
}

/// The command itself is kept as well, and replayed.
std::string CNovatelMPIServer::WhyNoRoomToReplay() const {
    if (m_commands == nullptr ||
        m_commands->HasRoomToQueue(m_commands->Configuration().size() + 1)) {
        return WhyNoRoomForOne();
    }
    return "10000 commands would wait to be sent to the receiver";
}

std::string CNovatelMPIServer::WhyNoSentence(const BListC& arguments) const {
    const std::string name = arguments.GetString(0);
    const bool isWord = std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    });
    return isWord ? "" : "argument 0 (sentence name) must be letters and digits";
}

std::string CNovatelMPIServer::WhyNoPosition(const BListC& arguments) const {
    for (std::size_t i = 0; i < 3; ++i) {
        if (!(std::fabs(arguments.GetDouble(i)) <= kMaxCoordinate)) {
            return "the coordinates must be within 1e9 m";
        }
    }
    return {};
}
