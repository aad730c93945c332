// Publishes the receiver's own state: status and error words, versions, ports, what it tracks.
#pragma once

#include "LogObserver/LogObserver.h"
#include "LogObserver/TrackedSatellites.h"
#include "Logs/NovatelOEMV/NovatelVERSION.h"
#include "platform/Diagnosticator.h"
#include "platform/PositionAPI.h"
#include "platform/RemoteLogger.h"
#include "platform/Time.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Novatel {
class CNovatelCHANCONFIGLIST;
class CNovatelCOMCONFIG;
class CNovatelPDPSTAT;
class CNovatelRANGE;
class CNovatelRXSTATUS;
class CNovatelTIME;
struct SNovatelHeader;
} // namespace Novatel

/// The first of the observers: the others ask it for the firmware's version and for the time.
class CReceiverStatusObserver : public CLogObserver {
public:
    static constexpr Diagnosticator::SDescriptor kNoSatellitesDiagnostic = {79160, 1};
    static constexpr Diagnosticator::SDescriptor kCPUOverloadDiagnostic = {79195, 0};

    /// What is known of the receiver's card.
    struct SCard {
        std::string model;
        std::string serialNumber;
        std::string hardwareVersion;
        std::string softwareVersion;
        /// The number that the software version holds, as in 10201 of "L6X010201RN0000"; -1 for
        /// none.
        std::int32_t softwareVersionNumber = -1;
    };

    /// Publishes an empty sky.
    CReceiverStatusObserver();

    void NewRecord(CGPSRecord* record) override;

    const SCard& Card() const { return m_card; }
    /// What the last TRACKSTAT said.
    const STrackedSatellites& Tracked() const { return m_tracked; }
    /// "0x00000000: ...", as published; empty before the first.
    const std::string& StatusText() const { return m_statusText; }
    /// Called with the number of different PRNs whenever it changes.
    void OnTrackedChanged(std::function<void(std::int32_t)> call) {
        m_onTrackedChanged = std::move(call);
    }

    std::int32_t FirmwareVersion() const { return m_card.softwareVersionNumber; }
    /// GPS seconds of week of the last TIME; 0 before the first.
    double LastTimeSeconds() const { return m_lastTimeSeconds; }

protected:
    std::unique_ptr<CPositionAPI> m_positionAPI;

private:
    /// How many logs of a kind came, and when the last one did.
    struct SRate {
        std::uint32_t count = 0;
        Core::GPSTime last;
    };

    void NewHeader(const CGPSRecord& record);
    void NewHeader(const Novatel::SNovatelHeader& header);
    void NewPacket_VERSION(const Novatel::CNovatelVERSION& log);
    void TranslateReceiverVersion(const Novatel::CNovatelVERSION::SComponent& component);
    void NewPacket_RXSTATUS(const Novatel::CNovatelRXSTATUS& log);
    void NewPacket_COMCONFIG(const Novatel::CNovatelCOMCONFIG& log);
    void NewPacket_TRACKSTAT(const Novatel::CNovatelTRACKSTAT& log);
    void PublishTracked(const STrackedSatellites& tracked);
    void PublishSkyView(const Novatel::CNovatelTRACKSTAT& log);
    void NewPacket_TIME(const Novatel::CNovatelTIME& log);
    void PublishCount(const std::string& key, std::uint32_t& count);
    void PublishRate(const std::string& key, SRate& rate, const CGPSRecord& record);

    CRemoteLogger m_statusLogger{"NovatelReceiverStatus"};
    Diagnosticator::CDiagnosticatorAPI m_diagnostics{"CReceiverStatusObserver"};
    std::uint32_t m_previousStatus = 0xFFFFFFFF;
    std::uint32_t m_previousIdleTime = 0;
    std::uint32_t m_versionCount = 0;
    std::uint32_t m_chanconfiglistCount = 0;
    std::uint32_t m_timeCount = 0;
    SRate m_rxstatusRate;
    SRate m_comconfigRate;
    SRate m_trackstatRate;
    SRate m_rangeRate;
    SRate m_pdpstatRate;
    SCard m_card;
    double m_lastTimeSeconds = 0.0;
    std::vector<CPositionAPI::sSSatinfo> m_skyView;
    STrackedSatellites m_tracked;
    std::string m_statusText;
    std::function<void(std::int32_t)> m_onTrackedChanged;
};
