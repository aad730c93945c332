// Finds out which log a record is, and of which moment.
#pragma once

#include "Logs/GPSRecord.h"

/// Most observers pass over most records: the identifier is compared first, since the type test,
/// which alone decides, takes far longer.
class CLogCast {
public:
    explicit CLogCast(const CGPSRecord& record)
        : m_record(record), m_messageID(record.GetMessageID()) {}

    /// The record as this log, or null when it is another one, or a command's response.
    template <class TLog>
    const TLog* As(std::uint16_t messageID = TLog::kMessageID) const {
        return m_messageID == messageID ? dynamic_cast<const TLog*>(&m_record) : nullptr;
    }

private:
    const CGPSRecord& m_record;
    std::uint16_t m_messageID;
};

/// The moment that the record's own week and seconds of week name.
inline Core::GPSTime GPSTimeOf(const CGPSRecord& record) {
    std::uint32_t week = 0;
    double seconds = 0.0;
    record.GetGPSTime(week, seconds);
    return Core::GPSTime::FromGPSTime(static_cast<std::int32_t>(week), seconds);
}
