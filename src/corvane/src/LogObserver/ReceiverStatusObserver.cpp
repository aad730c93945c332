#include "LogObserver/ReceiverStatusObserver.h"

#include "LogObserver/InterfaceModeName.h"
#include "Logs/DamagedLog.h"
#include "Logs/LogCast.h"
#include "Logs/NovatelOEMV/NovatelASCIIRecord.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryRecord.h"
#include "Logs/NovatelOEMV/NovatelCHANCONFIGLIST.h"
#include "Logs/NovatelOEMV/NovatelCOMCONFIG.h"
#include "Logs/NovatelOEMV/NovatelPDPSTAT.h"
#include "Logs/NovatelOEMV/NovatelRANGE.h"
#include "Logs/NovatelOEMV/NovatelRXSTATUS.h"
#include "Logs/NovatelOEMV/NovatelTIME.h"
#include "Logs/NovatelOEMV/ReceiverStatusWords.h"
#include "platform/Text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

using namespace Novatel;

namespace {

constexpr double kPercentPerIdleUnit = 0.5;
/// In half percents: no more than this is an overload.
constexpr std::uint32_t kOverloadedIdleTime = 5;
constexpr std::uint32_t kReceiverCard = 1;

struct SPortKey {
    std::uint32_t port;
    const char* key;
};

/// The ports whose settings are published, in this order.
constexpr SPortKey kPortKeys[] = {
    {1, "COM1_Config"},  {2, "COM2_Config"},  {13, "USB1_Config"},
    {14, "USB2_Config"}, {15, "USB3_Config"},
};

/// -1 when the text holds no version that can be told: others begin without letters ("3.701").
std::int32_t SoftwareVersionNumber(const std::string& version) {
    std::int32_t number = -1;
    constexpr std::size_t kPrefixLength = 3;
    if ((version.starts_with("L6X") || version.starts_with("OEM")) &&
        version.size() > kPrefixLength) {
        Core::Utilities::ParseInt(version.substr(kPrefixLength), number);
    }
    return number;
}

} // namespace

CReceiverStatusObserver::CReceiverStatusObserver()
    : m_positionAPI(std::make_unique<CPositionAPI>()) {
    m_positionAPI->SetSkyView({});
}

void CReceiverStatusObserver::NewRecord(CGPSRecord* record) {
    if (record == nullptr) {
        return;
    }
    NewHeader(*record);
    const CLogCast log(*record);
    if (const auto* version = log.As<CNovatelVERSION>()) {
        NewPacket_VERSION(*version);
    } else if (const auto* rxstatus = log.As<CNovatelRXSTATUS>()) {
        NewPacket_RXSTATUS(*rxstatus);
    } else if (const auto* comconfig = log.As<CNovatelCOMCONFIG>()) {
        NewPacket_COMCONFIG(*comconfig);
    } else if (const auto* trackstat = log.As<CNovatelTRACKSTAT>()) {
        NewPacket_TRACKSTAT(*trackstat);
    } else if (const auto* range = log.As<CNovatelRANGE>()) {
        PublishRate("range_messages", m_rangeRate, *range);
    } else if (const auto* pdpstat = log.As<CNovatelPDPSTAT>()) {
        PublishRate("pdpstat_messages", m_pdpstatRate, *pdpstat);
    } else if (log.As<CNovatelCHANCONFIGLIST>() != nullptr) {
        PublishCount("chanconfiglist_messages", m_chanconfiglistCount);
    } else if (const auto* time = log.As<CNovatelTIME>()) {
        NewPacket_TIME(*time);
    }
}

/// An ASCII record's header is all zeros, and counts as any other; kept: consumers rely on it.
void CReceiverStatusObserver::NewHeader(const CGPSRecord& record) {
    if (const auto* binary = dynamic_cast<const CNovatelBinaryRecord*>(&record)) {
        NewHeader(binary->GetHeader());
    } else if (const auto* ascii = dynamic_cast<const CNovatelASCIIRecord*>(&record)) {
        NewHeader(ascii->GetHeader());
    }
}

void CReceiverStatusObserver::NewHeader(const SNovatelHeader& header) {
    if (header.m_receiverStatus != m_previousStatus) {
        m_previousStatus = header.m_receiverStatus;
        std::array<char, 16> word;
        std::snprintf(word.data(), word.size(),
                      "0x%08X: ", static_cast<unsigned>(m_previousStatus));
        m_statusText = word.data() + ReceiverStatusText(m_previousStatus);
        m_statusLogger.SetEssentialStatus("ReceiverStatus", "%s", m_statusText.c_str());
    }
    if (header.m_idleTime != m_previousIdleTime) {
        m_previousIdleTime = header.m_idleTime;
        m_statusLogger.SetInfoStatus("ReceiverCPUIdlePercentage", "%.1f",
                                     m_previousIdleTime * kPercentPerIdleUnit);
        if (m_previousIdleTime > kOverloadedIdleTime) {
            m_diagnostics.Clear(kCPUOverloadDiagnostic);
        } else {
            m_diagnostics.Raise(kCPUOverloadDiagnostic, 1);
        }
    }
}

void CReceiverStatusObserver::NewPacket_VERSION(const CNovatelVERSION& log) {
    PublishCount("version_messages", m_versionCount);
    const auto& components = log.GetComponents();
    for (std::size_t i = 0; i < components.size(); ++i) {
        const CNovatelVERSION::SComponent& component = components[i];
        char prefix[32];
        std::snprintf(prefix, sizeof prefix, "component_%02d", static_cast<int>(i));
        const std::string key = prefix;
        m_statusLogger.SetEssentialStatus(key + ".componentType", "%d",
                                          static_cast<int>(component.type));
        // c_str(): the texts end at their first zero byte.
        m_statusLogger.SetEssentialStatus(key + ".model", "%s", component.model.c_str());
        m_statusLogger.SetEssentialStatus(key + ".psn", "%s", component.serialNumber.c_str());
        m_statusLogger.SetEssentialStatus(key + ".hardwareVersion", "%s",
                                          component.hardwareVersion.c_str());
        m_statusLogger.SetEssentialStatus(key + ".softwareVersion", "%s",
                                          component.softwareVersion.c_str());
        if (component.type == kReceiverCard) {
            TranslateReceiverVersion(component);
        }
    }
}

void CReceiverStatusObserver::TranslateReceiverVersion(
    const CNovatelVERSION::SComponent& component) {
    m_card.model = component.model.c_str();
    m_card.serialNumber = component.serialNumber.c_str();
    m_card.hardwareVersion = component.hardwareVersion.c_str();
    m_card.softwareVersion = component.softwareVersion.c_str();
    m_card.softwareVersionNumber = SoftwareVersionNumber(m_card.softwareVersion);
    m_statusLogger.Warn("CReceiverStatusObserver::TranslateReceiverVersion: got sw_version_int %d "
                        "from version %s",
                        static_cast<int>(m_card.softwareVersionNumber),
                        m_card.softwareVersion.c_str());
}

void CReceiverStatusObserver::NewPacket_RXSTATUS(const CNovatelRXSTATUS& log) {
    PublishRate("rxstatus_messages", m_rxstatusRate, log);
    m_statusLogger.SetEssentialStatus("ReceiverError", "0x%08X: %s",
                                      static_cast<unsigned>(log.GetErrorWord()),
                                      log.GetErrorText().c_str());
}

void CReceiverStatusObserver::NewPacket_COMCONFIG(const CNovatelCOMCONFIG& log) {
    PublishRate("comconfig_messages", m_comconfigRate, log);
    for (const SPortKey& row : kPortKeys) {
        const auto port =
            std::ranges::find(log.GetPorts(), row.port, &CNovatelCOMCONFIG::SPort::port);
        if (port != log.GetPorts().end()) {
            // Transmit before receive, unlike in the log; kept: consumers rely on it.
            m_statusLogger.SetInfoStatus(row.key, "%d,%s,%s", static_cast<int>(port->baudRate),
                                         InterfaceModeName(port->transmitMode).c_str(),
                                         InterfaceModeName(port->receiveMode).c_str());
        }
    }
}

void CReceiverStatusObserver::NewPacket_TRACKSTAT(const CNovatelTRACKSTAT& log) {
    PublishRate("trackstat_messages", m_trackstatRate, log);
    PublishTracked(STrackedSatellites::Of(log));
    PublishSkyView(log);
}

void CReceiverStatusObserver::PublishTracked(const STrackedSatellites& tracked) {
    m_statusLogger.SetEssentialStatus("sbas_tracking", "%s", tracked.sbas.c_str());
    m_statusLogger.SetEssentialStatus("sats_tracked_gps", "%d,%d", tracked.gpsL1, tracked.gpsL2);
    m_statusLogger.SetEssentialStatus("sats_tracked_glonass", "%d,%d", tracked.glonassL1,
                                      tracked.glonassL2);
    m_statusLogger.SetEssentialStatus("sats_tracked", "%d,%d,%d", tracked.distinctPRNs,
                                      tracked.gpsL1 + tracked.glonassL1,
                                      tracked.gpsL2 + tracked.glonassL2);
    const bool hasChanged = tracked.distinctPRNs != m_tracked.distinctPRNs;
    m_tracked = tracked;
    if (hasChanged && m_onTrackedChanged) {
        m_onTrackedChanged(tracked.distinctPRNs);
    }
    if (tracked.distinctPRNs > 0) {
        m_diagnostics.Clear(kNoSatellitesDiagnostic);
    } else {
        m_diagnostics.Raise(kNoSatellitesDiagnostic, 1);
    }
}

void CReceiverStatusObserver::PublishSkyView(const CNovatelTRACKSTAT& log) {
    m_skyView.clear();
    for (const CNovatelTRACKSTAT::SChannel& channel : log.GetChannels()) {
        if (channel.prn > 0) {
            // The sum makes a zero of the negative zero that is left of -0.5.
            const double cn0 = std::trunc(static_cast<double>(channel.carrierToNoise)) + 0.0;
            m_skyView.push_back({static_cast<std::uint8_t>(channel.prn), 0, 0, cn0});
        }
    }
    if (m_positionAPI == nullptr) {
        DamagedLog::FailAssertion("src/corvane/src/LogObserver/ReceiverStatusObserver", __LINE__,
                                  "void CReceiverStatusObserver::NewPacket_TRACKSTAT(const "
                                  "Novatel::CNovatelTRACKSTAT*)",
                                  "m_positionAPI");
    }
    m_positionAPI->SetSkyView(m_skyView);
}

void CReceiverStatusObserver::NewPacket_TIME(const CNovatelTIME& log) {
    std::uint32_t week = 0;
    log.GetGPSTime(week, m_lastTimeSeconds);
    PublishCount("time_messages", m_timeCount);
    m_statusLogger.SetEssentialStatus("gps_time", "%u,%.3f", static_cast<unsigned>(week),
                                      m_lastTimeSeconds);
}

void CReceiverStatusObserver::PublishCount(const std::string& key, std::uint32_t& count) {
    ++count;
    m_statusLogger.SetInfoStatus(key, "%d", static_cast<int>(count));
}

void CReceiverStatusObserver::PublishRate(const std::string& key, SRate& rate,
                                          const CGPSRecord& record) {
    ++rate.count;
    const Core::GPSTime time = GPSTimeOf(record);
    m_statusLogger.SetInfoStatus(key, "%d,%lf", static_cast<int>(rate.count),
                                 time.SecondsSince(rate.last));
    rate.last = time;
}
