// The RPC service: other programs ask about and steer the receiver's handling while the daemon
// runs.
#pragma once

#include "platform/MPISocketServer.h"

#include <cstdint>
#include <memory>
#include <set>
#include <string>

class CCommandManager;
class CReceiverStatusObserver;
class SoftloadManager;

/// Every method is a row of one table in the source, which docs/rpc.md explains. A method whose
/// manager is missing returns nothing.
class CNovatelMPIServer : public MPISocketServerC {
public:
    static constexpr std::uint16_t kPort = 5314;

    /// Nothing is owned; any of the three may be null.
    CNovatelMPIServer(SocketCollectionC& sockets, CCommandManager* commands,
                      SoftloadManager* upgrade, CReceiverStatusObserver* receiverStatus);

protected:
    void ConnectionClosed(MPISocketConnectionC& connection) override;

private:
    using TReply = std::unique_ptr<BListC>;
    struct SMethod;
    static const SMethod kMethods[];

    TReply DummyFunction(const BListC& arguments);
    TReply RequestNMEA(const BListC& arguments);
    TReply SetSBASEnabled(const BListC& arguments);
    TReply GetSBASEnabled(const BListC& arguments);
    TReply SetSBASPRN(const BListC& arguments);
    TReply GetSBASPRN(const BListC& arguments);
    TReply SetReferenceFormat(const BListC& arguments);
    TReply GetReferenceFormat(const BListC& arguments);
    TReply SetReferencePosition(const BListC& arguments);
    TReply GetReferencePosition(const BListC& arguments);
    TReply UnsetReferencePosition(const BListC& arguments);
    TReply SetGlonassCorrectionsEnabled(const BListC& arguments);
    TReply GetGlonassCorrectionsEnabled(const BListC& arguments);
    TReply SetGPSLoggingEnabled(const BListC& arguments);
    TReply GetGPSLoggingEnabled(const BListC& arguments);
    TReply RefreshRegionSettings(const BListC& arguments);
    TReply ResetRTKFilter(const BListC& arguments);
    TReply ResetPDPFilter(const BListC& arguments);
    TReply GetIonosphereMode(const BListC& arguments);
    TReply SetIonosphereMode(const BListC& arguments);
    TReply GetCurrentChannelConfiguration(const BListC& arguments);
    TReply GetAllowableChannelConfigurations(const BListC& arguments);
    TReply GetVersionInformation(const BListC& arguments);
    TReply SendFReset(const BListC& arguments);
    TReply RefreshReceiverConfiguration(const BListC& arguments);
    TReply GetReceiverTrackingStatus(const BListC& arguments);
    TReply SetReferenceOutputBandwidth(const BListC& arguments);
    TReply GetFirmwareUpgradeStatus(const BListC& arguments);
    TReply StartFirmwareUpgrade(const BListC& arguments);

    std::string WhyNoPosition(const BListC& arguments) const;
    std::string WhyNoRoomToQueue() const;
    std::string WhyNoSentence(const BListC& arguments) const;
    std::string WhyNoRoomToSend(std::size_t count) const;
    std::string WhyNoRoomForOne() const;
    std::string WhyNoRoomForInformation() const;
    std::string WhyNoRoomToReplay() const;
    void PostTrackingStatus(std::int32_t distinctPRNs);

    CCommandManager* m_commands;
    SoftloadManager* m_upgrade;
    CReceiverStatusObserver* m_receiverStatus;
    /// Those that have asked for the tracking status are told when it changes.
    std::set<MPISocketConnectionC*> m_trackers;
};
