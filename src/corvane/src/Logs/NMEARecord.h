// An NMEA sentence as a record; the NMEA observer forwards its bytes.
#pragma once

#include "Bytes/ByteReaders.h"
#include "Logs/GPSRecord.h"

/// Keeps the sentence undecoded. It carries no GPS time of its own that is worth trusting, so its
/// GPS time is that of its reception.
class CNMEARecord : public CGPSRecord {
public:
    /// The identifier of every NMEA record, which no log of the receiver uses.
    static constexpr std::uint16_t kMessageID = 65535;

    explicit CNMEARecord(const Bytes::Sentence& sentence);

    /// Always true.
    bool GetGPSTime(std::uint32_t& week, double& seconds) const override;
    std::uint16_t GetMessageID() const override;

    /// From the `$` up to but excluding the line end.
    const Bytes::Sentence& GetSentence() const { return m_sentence; }

private:
    Bytes::Sentence m_sentence;
};
