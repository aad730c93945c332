// Turns the receiver's position logs into the position that other programs move on.
#pragma once

#include "LogObserver/LogObserver.h"
#include "platform/Config.h"
#include "platform/Diagnosticator.h"
#include "platform/Logger.h"
#include "platform/NMEAHandlerAPI.h"
#include "platform/PositionAPI.h"
#include "platform/ReferenceManagerAPI.h"
#include "platform/Time.h"

#include <array>
#include <cstdint>
#include <optional>

class CReceiverStatusObserver;

namespace Novatel {
class CNovatelBESTPOS;
class CNovatelCartesianLog;
class CNovatelPDPSTAT;
class CNovatelPDPXYZ;
class CNovatelPSRDOP;
class CNovatelPSRXYZ;
class CNovatelREFSTATION;
class CNovatelRTKXYZ;
class CNovatelSatsLog;
} // namespace Novatel

/// Publishes a solution for each RTKXYZ and PDPXYZ, the reference manager's positions, the base
/// station, the geoid, and status lines about all of them.
///
/// After the receiver's smoothing filter has lost its carrier phases (which the diagnostic tells),
/// the quality of PDPXYZ solutions is held down for "obstruction_lockout" seconds of section
/// "glide" (30 unless set).
class CPositionManager : public CLogObserver {
public:
    static constexpr Diagnosticator::SDescriptor kGlideDiagnostic = {79141, 2};

    /// Publishes a solution that says that there is none yet.
    CPositionManager(CLogger& statusLogger, CConfig& config);

    /// Whom to ask for the receiver's firmware: newer ones need no lockout.
    void SetReceiverStatus(const CReceiverStatusObserver* receiverStatus) {
        m_receiverStatus = receiverStatus;
    }
    /// Who gets the pseudorange positions; nobody while it is null.
    void SetReferenceManager(ReferenceManagerAPI* referenceManager) {
        m_referenceManager = referenceManager;
    }

    void NewRecord(CGPSRecord* record) override;
    /// Publishes the solution.
    void NewPositionPacket(const Novatel::CNovatelCartesianLog& log);

protected:
    std::unique_ptr<CPositionAPI> m_positionAPI;

private:
    struct SSatellites {
        std::int32_t gps = 0;
        std::int32_t glonass = 0;
    };
    /// What the solutions need of the last PDPSTAT.
    struct SPDPStat {
        std::uint32_t week = 0;
        double seconds = 0.0;
        std::array<std::uint32_t, 5> integers{};
        std::array<double, 3> reals{};
    };
    struct SDOP {
        float pdop = 0.0F;
        float hdop = 0.0F;
    };

    void NewPacket(const Novatel::CNovatelPDPXYZ& log);
    void NewPacket(const Novatel::CNovatelRTKXYZ& log);
    void NewPacket(const Novatel::CNovatelPSRXYZ& log);
    void NewPacket(const Novatel::CNovatelPDPSTAT& log);
    void NewPacket(const Novatel::CNovatelPSRDOP& log);
    void NewPacket(const Novatel::CNovatelREFSTATION& log);
    void NewPacket(const Novatel::CNovatelBESTPOS& log);
    void NewSatellites(const Novatel::CNovatelSatsLog& log, SSatellites& satellites);
    void PublishCartesianLine(const std::string& key, const Novatel::CNovatelCartesianLog& log);
    void PublishPDPStat();
    void CheckGlide();
    void FillSatellites(Position::SECEFPositionSolutionData& solution,
                        const Novatel::CNovatelCartesianLog& log) const;
    std::int32_t PositionQuality(const Novatel::CNovatelCartesianLog& log);
    std::int32_t FixQuality(const Novatel::CNovatelCartesianLog& log) const;

    CNMEAHandlerAPI m_nmeaHandler;
    ReferenceManagerAPI* m_referenceManager = nullptr;
    CLogger& m_statusLogger;
    Diagnosticator::CDiagnosticatorAPI m_diagnostics{"CPositionManager"};
    std::uint32_t m_pdpxyzCount = 0;
    std::uint32_t m_rtkxyzCount = 0;
    std::uint32_t m_psrdopCount = 0;
    std::uint32_t m_positionCount = 0;
    std::optional<SPDPStat> m_lastPDPStat;
    std::optional<SDOP> m_lastDOP;
    Core::MonotonicTime m_lockout;
    std::int32_t m_lockoutLength; ///< seconds
    std::uint32_t m_previousPhaseCount = 0;
    const CReceiverStatusObserver* m_receiverStatus = nullptr;
    SSatellites m_rtkSatellites;
    SSatellites m_pdpSatellites;
    SSatellites m_psrSatellites;
};
