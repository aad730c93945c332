// The root of every record that the receiver's stream yields; observers are handed this class.
#pragma once

#include "platform/Time.h"

#include <cstdint>

/// One sentence, decoded, with the time at which it was received. A record does not change after
/// its construction; whoever keeps data of it makes a copy.
class CGPSRecord {
public:
    virtual ~CGPSRecord() = default;
    CGPSRecord& operator=(const CGPSRecord&) = delete;

    /// Writes the reception time in seconds since the Unix epoch and returns 0.
    virtual int GetReceptionTime(double& seconds) const;
    /// The reception time in seconds since the Unix epoch.
    virtual double GetReceptionSeconds() const;
    virtual void GetReceptionUnixTime(Core::UnixTime& time) const;

    /// Writes the record's GPS week and seconds of week; false when they cannot be trusted.
    virtual bool GetGPSTime(std::uint32_t& week, double& seconds) const = 0;
    /// The receiver's number for this kind of message.
    virtual std::uint16_t GetMessageID() const = 0;

protected:
    /// The reception time is now.
    CGPSRecord();
    CGPSRecord(const CGPSRecord&) = default;

private:
    Core::UnixTime m_receptionTime;
};
