// TIME: the receiver's clock model and UTC.
#pragma once

#include "Logs/NovatelOEMV/NovatelRecord.h"

namespace Novatel {

class CNovatelTIME : public virtual CNovatelRecord {
public:
    static constexpr std::uint16_t kMessageID = 101;

    /// 0 valid, 1 converging, 2 iterating, 3 invalid.
    std::uint32_t GetClockStatus() const { return m_clockStatus; }
    /// Seconds.
    double GetClockOffset() const { return m_clockOffset; }
    double GetClockOffsetDeviation() const { return m_clockOffsetDeviation; }
    /// GPS time plus this is UTC, in seconds: the negative count of leap seconds.
    double GetUTCOffset() const { return m_utcOffset; }
    std::uint32_t GetUTCYear() const { return m_utcYear; }
    std::uint8_t GetUTCMonth() const { return m_utcMonth; }
    std::uint8_t GetUTCDay() const { return m_utcDay; }
    std::uint8_t GetUTCHour() const { return m_utcHour; }
    std::uint8_t GetUTCMinute() const { return m_utcMinute; }
    /// Of the minute: up to 60999, in a leap second.
    std::uint32_t GetUTCMilliseconds() const { return m_utcMilliseconds; }
    /// 0 invalid, 1 valid, 2 warning.
    std::uint32_t GetUTCStatus() const { return m_utcStatus; }

protected:
    CNovatelTIME() = default;

    std::uint32_t m_clockStatus = 0;
    double m_clockOffset = 0;
    double m_clockOffsetDeviation = 0;
    double m_utcOffset = 0;
    std::uint32_t m_utcYear = 0;
    std::uint8_t m_utcMonth = 0;
    std::uint8_t m_utcDay = 0;
    std::uint8_t m_utcHour = 0;
    std::uint8_t m_utcMinute = 0;
    std::uint32_t m_utcMilliseconds = 0;
    std::uint32_t m_utcStatus = 0;
};

} // namespace Novatel
