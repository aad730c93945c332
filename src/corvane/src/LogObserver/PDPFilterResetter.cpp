#include "LogObserver/PDPFilterResetter.h"

#include "Control/CommandManager.h"
#include "Logs/LogCast.h"
#include "Logs/NovatelOEMV/NovatelRTKXYZ.h"
#include "Logs/NovatelOEMV/PositionType.h"

namespace {

/// The receiver's solution status "computed".
constexpr std::uint32_t kComputed = 0;

} // namespace

void PDPFilterResetter::NewRecord(CGPSRecord* record) {
    if (record == nullptr) {
        return;
    }
    if (const auto* const position = CLogCast(*record).As<Novatel::CNovatelRTKXYZ>()) {
        NewRTKPosition(*position);
    }
}

void PDPFilterResetter::NewRTKPosition(const Novatel::CNovatelRTKXYZ& position) {
    if (position.GetPositionStatus() != kComputed) {
        return;
    }
    if (position.GetPositionType() == Novatel::PositionType::kNarrowInteger) {
        m_isArmed = false;
        return;
    }
    const Core::GPSTime time = GPSTimeOf(position);
    if (!m_hasStartTime) {
        m_startTime = time;
        m_hasStartTime = true;
        return;
    }
    if (m_isArmed && time.SecondsSince(m_startTime) >= kDelay) {
        m_commands.ResetPDPFilter();
        m_isArmed = false;
    }
}
