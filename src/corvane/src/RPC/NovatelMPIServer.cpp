#include "RPC/NovatelMPIServer.h"

#include "Control/ChannelConfigurations.h"
#include "Control/CommandManager.h"
#include "Control/ReceiverConfiguration.h"
#include "Control/SoftloadManager.h"
#include "LogObserver/GeodeticPosition.h"
#include "LogObserver/ReceiverStatusObserver.h"
#include "platform/DebugPrint.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <optional>

namespace {

using EType = MPICallbackBase::EType;
using ECost = MPICallbackBase::ECost;

/// Microseconds between the requests for what the receiver knows of itself.
constexpr std::uint32_t kInformationPause = 50'000;
constexpr std::size_t kInformationRequests = 3;
/// Far beyond every orbit, and far from where arithmetic overflows; metres.
constexpr double kMaxCoordinate = 1e9;
/// NMEA sentences are named by talker and type.
constexpr std::size_t kSentenceNameLength = 5;
/// The modes that exist are below.
constexpr std::int32_t kNoIonosphereMode = 4;

std::unique_ptr<BListC> Reply(BListC values = BListC()) {
    return std::make_unique<BListC>(std::move(values));
}

BListC One(std::int32_t value) {
    return BListC().AddInt(value);
}

std::string NMEACommand(const std::string& name, std::int32_t period) {
    if (period == 0) {
        return "unlog " + name + kCommandEnd;
    }
    if (period < 0) {
        return "log " + name + kCommandEnd;
    }
    std::array<char, 32> seconds;
    std::snprintf(seconds.data(), seconds.size(), "%.3f", period / 1000.0);
    return "log " + name + " ontime " + seconds.data() + kCommandEnd;
}

} // namespace

struct CNovatelMPIServer::SMethod {
    const char* name;
    std::vector<MPICallbackBase::SArgument> arguments;
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
        tracker->PostCallback("cb_trackingStatus", One(distinctPRNs));
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

CNovatelMPIServer::TReply CNovatelMPIServer::DummyFunction(const BListC&) {
    return Reply();
}

CNovatelMPIServer::TReply CNovatelMPIServer::RequestNMEA(const BListC& arguments) {
    if (arguments.Size() != 2) {
        return Reply();
    }
    const std::string name = arguments.GetString(0);
    if (name.size() != kSentenceNameLength) {
        dprintf("Invalid Sentence size\n");
        return Reply(One(0));
    }
    if (m_commands == nullptr) {
        dprintf("CommandManager not yet initialised\n");
        return Reply(One(1));
    }
    const std::string command = NMEACommand(name, arguments.GetInt(1));
    dprintf("Sending command '%s'\n", command.c_str());
    return Reply(One(m_commands->SendCommand(command) ? 1 : 0));
}

CNovatelMPIServer::TReply CNovatelMPIServer::SetSBASEnabled(const BListC& arguments) {
    if (m_commands == nullptr) {
        return nullptr;
    }
    m_commands->SetSBASEnabled(arguments.GetInt(0) != 0);
    return Reply();
}

CNovatelMPIServer::TReply CNovatelMPIServer::GetSBASEnabled(const BListC&) {
    dprintf("CNovatelMPIServer::api_GetSBASEnable\n");
    return m_commands == nullptr ? nullptr : Reply(One(m_commands->IsSBASWanted() ? 1 : 0));
}

CNovatelMPIServer::TReply CNovatelMPIServer::SetSBASPRN(const BListC& arguments) {
    if (m_commands == nullptr) {
        return nullptr;
    }
    m_commands->SetSBASPrn(arguments.GetInt(0));
    return Reply();
}

CNovatelMPIServer::TReply CNovatelMPIServer::GetSBASPRN(const BListC&) {
    return m_commands == nullptr ? nullptr : Reply(One(m_commands->SBASPrn()));
}

CNovatelMPIServer::TReply CNovatelMPIServer::SetReferenceFormat(const BListC& arguments) {
    if (m_commands == nullptr) {
        return nullptr;
    }
    m_commands->SetReferenceFormat(arguments.GetString(0));
    return Reply();
}

CNovatelMPIServer::TReply CNovatelMPIServer::GetReferenceFormat(const BListC&) {
    return m_commands == nullptr ? nullptr
                                 : Reply(BListC().AddString(m_commands->ReferenceFormat()));
}

CNovatelMPIServer::TReply CNovatelMPIServer::SetReferencePosition(const BListC& arguments) {
    if (m_commands == nullptr) {
        return nullptr;
    }
    const SGeodeticPosition position = SGeodeticPosition::FromECEF(
        arguments.GetDouble(0), arguments.GetDouble(1), arguments.GetDouble(2));
    m_commands->SetReferencePosition(position.latitude, position.longitude, position.height);
    return Reply(One(1));
}

CNovatelMPIServer::TReply CNovatelMPIServer::GetReferencePosition(const BListC&) {
    if (m_commands == nullptr) {
        return nullptr;
    }
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    const SReferencePosition& reference = m_commands->ReferencePosition();
    if (reference.isValid) {
        SGeodeticPosition{reference.latitude, reference.longitude, reference.height}.ToECEF(x, y,
                                                                                            z);
    }
    return Reply(BListC().Add(x).Add(y).Add(z));
}

CNovatelMPIServer::TReply CNovatelMPIServer::UnsetReferencePosition(const BListC&) {
    if (m_commands == nullptr) {
        return Reply(One(0));
    }
    m_commands->ClearReferencePosition();
    return Reply(One(1));
}

CNovatelMPIServer::TReply CNovatelMPIServer::SetGlonassCorrectionsEnabled(const BListC& arguments) {
    if (m_commands == nullptr) {
        return nullptr;
    }
    m_commands->SetGlonassCorrections(arguments.GetInt(0) != 0);
    return Reply();
}

CNovatelMPIServer::TReply CNovatelMPIServer::GetGlonassCorrectionsEnabled(const BListC&) {
    return m_commands == nullptr ? nullptr : Reply(One(m_commands->GlonassCorrections() ? 1 : 0));
}

CNovatelMPIServer::TReply CNovatelMPIServer::SetGPSLoggingEnabled(const BListC& arguments) {
    if (m_commands == nullptr) {
        return nullptr;
    }
    m_commands->SetGPSLoggingEnabled(arguments.GetInt(0) != 0);
    return Reply();
}

CNovatelMPIServer::TReply CNovatelMPIServer::GetGPSLoggingEnabled(const BListC&) {
    dprintf("CNovatelMPIServer::api_GetGPSLoggingEnabled\n");
    return m_commands == nullptr ? nullptr : Reply(One(m_commands->GPSLoggingEnabled() ? 1 : 0));
}

CNovatelMPIServer::TReply CNovatelMPIServer::RefreshRegionSettings(const BListC&) {
    if (m_commands == nullptr) {
        return nullptr;
    }
    m_commands->RefreshChannelConfiguration();
    return Reply(One(1));
}

CNovatelMPIServer::TReply CNovatelMPIServer::ResetRTKFilter(const BListC&) {
    if (m_commands == nullptr) {
        return nullptr;
    }
    m_commands->ResetRTKFilter();
    return Reply(One(1));
}

CNovatelMPIServer::TReply CNovatelMPIServer::ResetPDPFilter(const BListC&) {
    if (m_commands == nullptr) {
        return nullptr;
    }
    m_commands->ResetPDPFilter();
    return Reply();
}

CNovatelMPIServer::TReply CNovatelMPIServer::GetIonosphereMode(const BListC&) {
    return m_commands == nullptr
               ? nullptr
               : Reply(One(static_cast<std::int32_t>(m_commands->IonosphereMode())));
}

/// A mode that does not exist, and none at all, is refused without an answer.
CNovatelMPIServer::TReply CNovatelMPIServer::SetIonosphereMode(const BListC& arguments) {
    const std::optional<std::int32_t> wanted = arguments.At(0).AsInteger();
    const auto mode = static_cast<std::uint32_t>(wanted.value_or(kNoIonosphereMode));
    if (m_commands == nullptr || mode >= static_cast<std::uint32_t>(kNoIonosphereMode)) {
        return nullptr;
    }
    return Reply(One(m_commands->SetIonosphereMode(mode) ? 1 : 0));
}

CNovatelMPIServer::TReply CNovatelMPIServer::GetCurrentChannelConfiguration(const BListC&) {
    return m_commands == nullptr ? nullptr : Reply(One(m_commands->CurrentChannelConfiguration()));
}

CNovatelMPIServer::TReply CNovatelMPIServer::GetAllowableChannelConfigurations(const BListC&) {
    if (m_commands == nullptr) {
        return nullptr;
    }
    BListC configurations;
    std::int32_t number = 0;
    for (const auto& set : m_commands->ChannelConfigurations()) {
        BListC configuration = One(++number);
        for (const auto& signal : set.signals) {
            configuration.AddInt(static_cast<std::int32_t>(signal.numberOfChannels))
                .AddString(SignalTypeName(signal.signalType));
        }
        configurations.Add(std::move(configuration));
    }
    return Reply(std::move(configurations));
}

CNovatelMPIServer::TReply CNovatelMPIServer::GetVersionInformation(const BListC&) {
    if (m_receiverStatus == nullptr) {
        return nullptr;
    }
    const CReceiverStatusObserver::SCard& card = m_receiverStatus->Card();
    return Reply(BListC()
                     .AddString(card.model)
                     .AddString(card.serialNumber)
                     .AddString(card.hardwareVersion)
                     .AddString(card.softwareVersion));
}

CNovatelMPIServer::TReply CNovatelMPIServer::SendFReset(const BListC&) {
    return m_commands == nullptr ? nullptr : Reply(One(m_commands->FactoryReset() ? 1 : 0));
}

CNovatelMPIServer::TReply CNovatelMPIServer::RefreshReceiverConfiguration(const BListC&) {
    if (m_commands == nullptr) {
        return nullptr;
    }
    m_commands->RequestReceiverInformation(kInformationPause);
    return Reply(One(1));
}

CNovatelMPIServer::TReply CNovatelMPIServer::GetReceiverTrackingStatus(const BListC&) {
    if (m_receiverStatus == nullptr) {
        return nullptr;
    }
    m_trackers.insert(Caller());
    const STrackedSatellites& tracked = m_receiverStatus->Tracked();
    return Reply(BListC()
                     .AddInt(tracked.gpsL1)
                     .AddInt(tracked.gpsL2)
                     .AddInt(tracked.glonassL1)
                     .AddInt(tracked.glonassL2)
                     .AddInt(tracked.distinctPRNs)
                     .AddString(tracked.sbas)
                     .AddString(m_receiverStatus->StatusText()));
}

/// Kept for callers that set it; the reference output is dormant.
CNovatelMPIServer::TReply CNovatelMPIServer::SetReferenceOutputBandwidth(const BListC&) {
    return nullptr;
}

CNovatelMPIServer::TReply CNovatelMPIServer::GetFirmwareUpgradeStatus(const BListC&) {
    if (m_upgrade == nullptr) {
        return nullptr;
    }
    bool ended = false;
    std::int32_t percent = 0;
    const bool isWell = m_upgrade->GetProgress(ended, percent);
    return Reply(BListC().AddInt(isWell ? 1 : 0).AddInt(ended ? 1 : 0).AddInt(percent));
}

CNovatelMPIServer::TReply CNovatelMPIServer::StartFirmwareUpgrade(const BListC& arguments) {
    if (m_upgrade == nullptr) {
        return nullptr;
    }
    return Reply(One(m_upgrade->StartUpgrade(arguments.GetString(0)) ? 1 : 0));
}
