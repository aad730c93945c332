#include "LogObserver/PositionManager.h"

#include "LogObserver/GeodeticPosition.h"
#include "LogObserver/ReceiverStatusObserver.h"
#include "LogObserver/SolutionQuality.h"
#include "Logs/DamagedLog.h"
#include "Logs/LogCast.h"
#include "Logs/NovatelOEMV/NovatelBESTPOS.h"
#include "Logs/NovatelOEMV/NovatelPDPSTAT.h"
#include "Logs/NovatelOEMV/NovatelPDPXYZ.h"
#include "Logs/NovatelOEMV/NovatelPSRDOP.h"
#include "Logs/NovatelOEMV/NovatelPSRXYZ.h"
#include "Logs/NovatelOEMV/NovatelREFSTATION.h"
#include "Logs/NovatelOEMV/NovatelRTKXYZ.h"
#include "Logs/NovatelOEMV/NovatelSatsLog.h"
#include "platform/Maths.h"

#include <cmath>

using namespace Novatel;

namespace {

/// From this firmware on the receiver's smoothing filter recovers by itself.
constexpr std::int32_t kLastFirmwareWithLockout = 10100;
constexpr double kNoStandardDeviation = 1e9;
constexpr double kNoDOP = 100.0;

// Known by their position in the log only.
constexpr std::size_t kSmoothedFlag = 2;
constexpr std::size_t kPhaseCount = 4;

} // namespace

CPositionManager::CPositionManager(CLogger& statusLogger, CConfig& config)
    : m_positionAPI(std::make_unique<CPositionAPI>()),
      m_statusLogger(statusLogger),
      m_lockoutLength(config.GetInteger("glide", "obstruction_lockout", 30)) {
    Position::SECEFPositionSolutionData none;
    none.standardDeviationX = kNoStandardDeviation;
    none.standardDeviationY = kNoStandardDeviation;
    none.standardDeviationZ = kNoStandardDeviation;
    none.hostTime = Core::UnixTime::Now().AsSeconds();
    none.hdop = kNoDOP;
    none.vdop = kNoDOP;
    none.solutionClass = SolutionQuality::kSingleClass;
    m_positionAPI->SetECEFPositionData(none);
}

void CPositionManager::NewRecord(CGPSRecord* record) {
    if (record == nullptr) {
        return;
    }
    const CLogCast log(*record);
    if (const auto* pdpxyz = log.As<CNovatelPDPXYZ>()) {
        NewPacket(*pdpxyz);
    } else if (const auto* rtkxyz = log.As<CNovatelRTKXYZ>()) {
        NewPacket(*rtkxyz);
    } else if (const auto* psrxyz = log.As<CNovatelPSRXYZ>()) {
        NewPacket(*psrxyz);
    } else if (const auto* pdpstat = log.As<CNovatelPDPSTAT>()) {
        NewPacket(*pdpstat);
    } else if (const auto* psrdop = log.As<CNovatelPSRDOP>()) {
        NewPacket(*psrdop);
    } else if (const auto* refstation = log.As<CNovatelREFSTATION>()) {
        NewPacket(*refstation);
    } else if (const auto* bestpos = log.As<CNovatelBESTPOS>()) {
        NewPacket(*bestpos);
    } else if (const auto* rtksats = log.As<CNovatelSatsLog>(CNovatelSatsLog::kRTKSATS)) {
        NewSatellites(*rtksats, m_rtkSatellites);
    } else if (const auto* pdpsats = log.As<CNovatelSatsLog>(CNovatelSatsLog::kPDPSATS)) {
        NewSatellites(*pdpsats, m_pdpSatellites);
    } else if (const auto* psrsats = log.As<CNovatelSatsLog>(CNovatelSatsLog::kPSRSATS)) {
        NewSatellites(*psrsats, m_psrSatellites);
    }
}

void CPositionManager::NewPacket(const CNovatelPDPXYZ& log) {
    ++m_pdpxyzCount;
    m_statusLogger.SetEssentialStatus("message18", "%d", static_cast<int>(m_pdpxyzCount));
    if (m_lastPDPStat) {
        PublishCartesianLine("message18_info", log);
        PublishPDPStat();
        CheckGlide();
    }
    NewPositionPacket(log);
}

void CPositionManager::NewPacket(const CNovatelRTKXYZ& log) {
    ++m_rtkxyzCount;
    m_statusLogger.SetEssentialStatus("rtkxyz", "%d", static_cast<int>(m_rtkxyzCount));
    PublishCartesianLine("rtkxyz_info", log);
    m_statusLogger.SetEssentialStatus("rtkxyz_quality_flag", "%d",
                                      SolutionQuality::RTKXYZQualityFlag(log.GetPositionType()));
    NewPositionPacket(log);
}

void CPositionManager::NewPacket(const CNovatelPSRXYZ& log) {
    PublishCartesianLine("psrxyz_info", log);
    if (log.GetPositionStatus() != SolutionQuality::kComputed) {
        return;
    }
    const auto position = SGeodeticPosition::FromECEF(log.GetX(), log.GetY(), log.GetZ());
    m_statusLogger.SetEssentialStatus("psrxyz_pos", "%.4f,%.4f,%.4f,%.12f,%.12f,%.4f", log.GetX(),
                                      log.GetY(), log.GetZ(),
                                      Core::Maths::Degrees(position.latitude),
                                      Core::Maths::Degrees(position.longitude), position.height);
    if (m_referenceManager != nullptr) {
        m_referenceManager->SetGPSData(GPSTimeOf(log), log.GetX(), log.GetY(), log.GetZ(),
                                       m_psrSatellites.gps, m_psrSatellites.glonass, 0);
    }
}

void CPositionManager::NewPacket(const CNovatelPDPSTAT& log) {
    SPDPStat last;
    log.GetGPSTime(last.week, last.seconds);
    last.integers = log.GetIntegers();
    last.reals = log.GetReals();
    m_lastPDPStat = last;
}

void CPositionManager::NewPacket(const CNovatelPSRDOP& log) {
    ++m_psrdopCount;
    m_statusLogger.SetInfoStatus("psrdop_messages", "%d", static_cast<int>(m_psrdopCount));
    m_lastDOP = {log.GetPDOP(), log.GetHDOP()};
}

void CPositionManager::NewPacket(const CNovatelREFSTATION& log) {
    m_statusLogger.SetEssentialStatus("reference_position_ecef", "%.3f,%.3f,%.3f", log.GetX(),
                                      log.GetY(), log.GetZ());
    m_positionAPI->SetBasePosition(log.GetX(), log.GetY(), log.GetZ());
}

void CPositionManager::NewPacket(const CNovatelBESTPOS& log) {
    m_statusLogger.SetEssentialStatus("novatel_undulation", "%f", log.GetUndulation());
    const unsigned status = log.GetExtendedSolutionStatus();
    m_statusLogger.SetEssentialStatus(
        "bestpos_extended_solution_info", "%d,%d,0x%02X", static_cast<int>(status & 1U),
        static_cast<int>(status >> 1 & 7U), static_cast<unsigned>(log.GetGPSGLONASSMask()));
    m_nmeaHandler.SetNMEAGeoidalSeparationValue(log.GetUndulation());
}

void CPositionManager::NewSatellites(const CNovatelSatsLog& log, SSatellites& satellites) {
    constexpr std::uint32_t kL1 = 1;
    satellites = {};
    for (const CNovatelSatsLog::SSatellite& satellite : log.GetSatellites()) {
        const bool isUsed = (satellite.signalMask & kL1) != 0;
        satellites.gps += isUsed && satellite.system == CNovatelSatsLog::kGPS ? 1 : 0;
        satellites.glonass += isUsed && satellite.system == CNovatelSatsLog::kGLONASS ? 1 : 0;
    }
}

void CPositionManager::PublishCartesianLine(const std::string& key,
                                            const CNovatelCartesianLog& log) {
    const unsigned status = log.GetExtendedSolutionStatus();
    // The 0 stands where the solution's Galileo signals would; kept: consumers rely on it.
    m_statusLogger.SetEssentialStatus(
        key, "%d,%d,%d,%d,%f,%f,%f,%d,%d,%d,%d,%d,%d,%d,0x%02X",
        static_cast<int>(log.GetPositionStatus()), static_cast<int>(log.GetPositionType()),
        static_cast<int>(log.GetVelocityStatus()), static_cast<int>(log.GetVelocityType()),
        static_cast<double>(log.GetVelocityLatency()),
        static_cast<double>(log.GetDifferentialAge()), static_cast<double>(log.GetSolutionAge()),
        static_cast<int>(log.GetSatellitesTracked()), static_cast<int>(log.GetSatellitesUsed()),
        static_cast<int>(log.GetSatellitesUsedL1()),
        static_cast<int>(log.GetSatellitesUsedMultiFrequency()), static_cast<int>(status & 1U),
        static_cast<int>(status >> 1 & 7U), 0, static_cast<unsigned>(log.GetGPSGLONASSMask()));
}

void CPositionManager::PublishPDPStat() {
    const auto& integers = m_lastPDPStat->integers;
    const auto& reals = m_lastPDPStat->reals;
    m_statusLogger.SetEssentialStatus("message18_pdpstat", "%d,%d,%d,%d,%d,%5.2lf,%2.5lf,%2.5lf",
                                      static_cast<int>(integers[0]), static_cast<int>(integers[1]),
                                      static_cast<int>(integers[2]), static_cast<int>(integers[3]),
                                      static_cast<int>(integers[4]), reals[0], reals[1], reals[2]);
}

/// The timer starts anew on every epoch that stays without phases after the first, so that the
/// lockout runs from the last of them.
void CPositionManager::CheckGlide() {
    if (m_receiverStatus != nullptr &&
        m_receiverStatus->FirmwareVersion() > kLastFirmwareWithLockout) {
        return;
    }
    const std::uint32_t phaseCount = m_lastPDPStat->integers[kPhaseCount];
    if (phaseCount == 0 && m_previousPhaseCount == 0) {
        m_lockout = Core::MonotonicTime::Timer(m_lockoutLength);
        m_diagnostics.Raise(kGlideDiagnostic, 1);
    } else if (phaseCount == 0) {
        m_statusLogger.Warn("Glide dropped zero phase measurements: %d %lf",
                            static_cast<int>(m_lastPDPStat->week), m_lastPDPStat->seconds);
    }
    m_previousPhaseCount = phaseCount;
}

void CPositionManager::NewPositionPacket(const CNovatelCartesianLog& log) {
    Position::SECEFPositionSolutionData solution;
    solution.x = log.GetX();
    solution.y = log.GetY();
    solution.z = log.GetZ();
    solution.velocityX = log.GetVelocityX();
    solution.velocityY = log.GetVelocityY();
    solution.velocityZ = log.GetVelocityZ();
    solution.standardDeviationX = log.GetXStandardDeviation();
    solution.standardDeviationY = log.GetYStandardDeviation();
    solution.standardDeviationZ = log.GetZStandardDeviation();
    std::uint32_t week = 0;
    log.GetGPSTime(week, solution.seconds);
    solution.week = static_cast<std::int32_t>(week);
    if (m_positionAPI == nullptr) {
        DamagedLog::FailAssertion(
            "src/corvane/src/LogObserver/PositionManager", __LINE__,
            "void CPositionManager::NewPositionPacket(Novatel::CNovatelCartesianLog*)",
            "m_positionAPI");
    }
    solution.hostTime = Core::UnixTime::Now().AsSeconds();
    solution.positionQuality = PositionQuality(log);
    solution.fixQuality = FixQuality(log);
    solution.differentialAge = log.GetDifferentialAge();
    FillSatellites(solution, log);
    const double pdop = m_lastDOP ? m_lastDOP->pdop : kNoDOP;
    const double hdop = m_lastDOP ? m_lastDOP->hdop : kNoDOP;
    solution.hdop = hdop;
    // A sum, not the difference that geometry would want; kept: consumers rely on it.
    solution.vdop = m_lastDOP ? std::sqrt(pdop * pdop + hdop * hdop) : kNoDOP;
    solution.solutionClass = SolutionQuality::SolutionClass(log.GetPositionType());
    solution.velocityLatency = log.GetVelocityLatency();
    m_positionAPI->SetECEFPositionData(solution);
    ++m_positionCount;
    m_statusLogger.SetEssentialStatus("pos_messages", "%d", static_cast<int>(m_positionCount));
}

/// The satellite logs tell the systems apart, the solution itself does not.
void CPositionManager::FillSatellites(Position::SECEFPositionSolutionData& solution,
                                      const CNovatelCartesianLog& log) const {
    const bool isRTK = log.GetMessageID() == CNovatelRTKXYZ::kMessageID;
    const SSatellites& bySystem = isRTK ? m_rtkSatellites : m_pdpSatellites;
    if (bySystem.gps > 0) {
        solution.satellites = {bySystem.gps, bySystem.glonass, 0};
    } else {
        solution.satellites = {log.GetSatellitesUsed(), 0, 0};
    }
}

std::int32_t CPositionManager::PositionQuality(const CNovatelCartesianLog& log) {
    if (!SolutionQuality::IsUsable(log.GetPositionStatus(), log.GetPositionType())) {
        return 0;
    }
    if (!m_lastPDPStat) {
        return 1;
    }
    const std::int32_t qualityOfType = SolutionQuality::QualityOfType(log.GetPositionType());
    if (qualityOfType != 0) {
        return qualityOfType;
    }
    if (log.GetMessageID() == CNovatelRTKXYZ::kMessageID) {
        return 1;
    }
    const bool hasExpired = m_lockout.HasExpired();
    if (hasExpired) {
        m_diagnostics.Clear(kGlideDiagnostic);
    }
    return hasExpired && m_lastPDPStat->integers[kSmoothedFlag] == 1 ? 2 : 1;
}

std::int32_t CPositionManager::FixQuality(const CNovatelCartesianLog& log) const {
    if (!SolutionQuality::IsUsable(log.GetPositionStatus(), log.GetPositionType())) {
        return 0;
    }
    return m_lastPDPStat ? SolutionQuality::FixQuality(log.GetPositionType()) : 1;
}
