// How far a firmware load is, as the receiver reports it in ASCII; the firmware upgrade reads it.
#pragma once

#include "Logs/NovatelOEMV/NovatelASCIIRecord.h"

#include <string>

namespace Novatel {

class CNovatelSoftLoadStatusRecord : public virtual CNovatelASCIIRecord {
public:
    /// The status of a text that no row of the table has.
    static constexpr int kUnknownStatus = -1;

    explicit CNovatelSoftLoadStatusRecord(const Bytes::Sentence& sentenceData);

    /// This system's own number for the status text, not that of the receiver's binary log.
    int GetStatus() const { return m_status; }
    /// The text as received, between the header's `;` and the checksum's `*`.
    const std::string& GetStatusText() const { return m_statusText; }

    static int StatusOf(std::string_view text);

private:
    std::string m_statusText;
    int m_status;
};

} // namespace Novatel
