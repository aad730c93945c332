// What the methods of the RPC service do; their table is in NovatelMPIServer.cpp.

#include "RPC/NovatelMPIServer.h"

#include "Control/ChannelConfigurations.h"
#include "Control/CommandManager.h"
#include "Control/ReceiverConfiguration.h"
#include "Control/SoftloadManager.h"
#include "LogObserver/GeodeticPosition.h"
#include "LogObserver/ReceiverStatusObserver.h"
#include "platform/DebugPrint.h"
#include "platform/Geodesy.h"

#include <array>
#include <cstdio>
#include <optional>

namespace {

/// Microseconds between the requests for what the receiver knows of itself.
constexpr std::uint32_t kInformationPause = 50'000;
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
    if (m_commands == nullptr) {
        return nullptr;
    }
    return Reply(One(m_commands->IsSBASWanted() ? 1 : 0));
}

CNovatelMPIServer::TReply CNovatelMPIServer::SetSBASPRN(const BListC& arguments) {
    if (m_commands == nullptr) {
        return nullptr;
    }
    m_commands->SetSBASPrn(arguments.GetInt(0));
    return Reply();
}

CNovatelMPIServer::TReply CNovatelMPIServer::GetSBASPRN(const BListC&) {
    if (m_commands == nullptr) {
        return nullptr;
    }
    return Reply(One(m_commands->SBASPrn()));
}

CNovatelMPIServer::TReply CNovatelMPIServer::SetReferenceFormat(const BListC& arguments) {
    if (m_commands == nullptr) {
        return nullptr;
    }
    m_commands->SetReferenceFormat(arguments.GetString(0));
    return Reply();
}

CNovatelMPIServer::TReply CNovatelMPIServer::GetReferenceFormat(const BListC&) {
    if (m_commands == nullptr) {
        return nullptr;
    }
    return Reply(BListC().AddString(m_commands->ReferenceFormat()));
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
    Core::Maths::SVector place;
    const SReferencePosition& reference = m_commands->ReferencePosition();
    if (reference.isValid) {
        place = Core::Maths::ToECEF({reference.latitude, reference.longitude, reference.height});
    }
    return Reply(BListC().Add(place.x).Add(place.y).Add(place.z));
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
    if (m_commands == nullptr) {
        return nullptr;
    }
    return Reply(One(m_commands->GlonassCorrections() ? 1 : 0));
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
    if (m_commands == nullptr) {
        return nullptr;
    }
    return Reply(One(m_commands->GPSLoggingEnabled() ? 1 : 0));
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
    if (m_commands == nullptr) {
        return nullptr;
    }
    return Reply(One(static_cast<std::int32_t>(m_commands->IonosphereMode())));
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
    if (m_commands == nullptr) {
        return nullptr;
    }
    return Reply(One(m_commands->CurrentChannelConfiguration()));
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
    if (m_commands == nullptr) {
        return nullptr;
    }
    return Reply(One(m_commands->FactoryReset() ? 1 : 0));
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
