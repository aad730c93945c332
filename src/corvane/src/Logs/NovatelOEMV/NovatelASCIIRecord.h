// A record made from one of the receiver's ASCII logs.
#pragma once

#include "Bytes/ByteReaders.h"
#include "Logs/NovatelOEMV/NovatelHeader.h"
#include "Logs/NovatelOEMV/NovatelRecord.h"

#include <string_view>

namespace Novatel {

/// Only the identifier of its header is filled, from the log's name. Its valid flag is the outcome
/// of the binary CRC check, which an ASCII log fails as a rule: its own checksum is the framer's.
class CNovatelASCIIRecord : public virtual CNovatelRecord {
public:
    static constexpr int kSoftLoadStatusID = 1235;
    static constexpr int kUnknownLogID = -1;

    explicit CNovatelASCIIRecord(const Bytes::Sentence& sentenceData);

    /// Week 0 and 0 seconds; returns the valid flag.
    bool GetGPSTime(std::uint32_t& week, double& seconds) const override;
    virtual std::uint16_t GetWeek() const;
    virtual double GetSecondsOfWeek() const;
    std::uint16_t GetMessageID() const override;
    virtual std::uint32_t GetReceiverStatus() const;
    virtual std::uint8_t GetIdleTime() const;

    const SNovatelHeader& GetHeader() const { return m_header; }

    /// The text between the first character and the first comma; empty without a comma.
    static std::string_view LogName(const Bytes::Sentence& sentenceData);
    /// kSoftLoadStatusID for "SOFTLOADSTATUSA", the one log that is understood in ASCII;
    /// kUnknownLogID for any other.
    static int MessageIDOf(std::string_view logName);

protected:
    SNovatelHeader m_header;
};

} // namespace Novatel
