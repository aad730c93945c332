// A record made from one of the receiver's binary sentences, with its header.
#pragma once

#include "Bytes/ByteReaders.h"
#include "Logs/CRCCheck.h"
#include "Logs/NovatelOEMV/NovatelHeader.h"
#include "Logs/NovatelOEMV/NovatelRecord.h"

namespace Novatel {

/// By itself, the record of a log of no known kind; otherwise the base of its decoder.
class CNovatelBinaryRecord : public virtual CNovatelRecord {
public:
    /// What a short sentence lacks of its header is zero.
    explicit CNovatelBinaryRecord(const Bytes::Sentence& sentenceData,
                                  ECRCCheck check = ECRCCheck::compute);

    /// The header's time; returns whether the sentence has passed its CRC check.
    bool GetGPSTime(std::uint32_t& week, double& seconds) const override;
    virtual std::uint16_t GetWeek() const;
    virtual double GetSecondsOfWeek() const;
    std::uint16_t GetMessageID() const override;
    virtual std::uint32_t GetReceiverStatus() const;
    /// Half percents.
    virtual std::uint8_t GetIdleTime() const;

    const SNovatelHeader& GetHeader() const { return m_header; }

protected:
    SNovatelHeader m_header;
};

} // namespace Novatel
