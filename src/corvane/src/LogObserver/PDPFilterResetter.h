// Resets the receiver's PDP filter once when RTK does not reach its best solution in time.
#pragma once

#include "LogObserver/LogObserver.h"
#include "platform/Time.h"

class CCommandManager;

namespace Novatel {
class CNovatelRTKXYZ;
}

/// Exists only where "pdp_filter_reset" is on. One shot: it resets at most once in the daemon's
/// life, and never once a narrow-lane integer solution has been seen.
class PDPFilterResetter : public CLogObserver {
public:
    /// How long RTK is given, in seconds.
    static constexpr double kDelay = 60.0;

    /// The command manager is not owned.
    explicit PDPFilterResetter(CCommandManager& commands) : m_commands(commands) {}

    void NewRecord(CGPSRecord* record) override;
    virtual void NewRTKPosition(const Novatel::CNovatelRTKXYZ& position);

private:
    CCommandManager& m_commands;
    bool m_hasStartTime = false;
    Core::GPSTime m_startTime; ///< of the first computed solution
    bool m_isArmed = true;
};
