// RXSTATUS: the receiver's error word and status words.
#pragma once

#include "Logs/NovatelOEMV/NovatelRecord.h"

#include <string>
#include <vector>

namespace Novatel {

class CNovatelRXSTATUS : public virtual CNovatelRecord {
public:
    static constexpr std::uint16_t kMessageID = 93;

    struct SStatus {
        std::uint32_t status = 0;
        std::uint32_t priorityMask = 0;
        std::uint32_t eventSetMask = 0;
        std::uint32_t eventClearMask = 0;
    };

    std::uint32_t GetErrorWord() const { return m_errorWord; }
    /// The receiver's own status first, then the auxiliary ones.
    const std::vector<SStatus>& GetStatuses() const { return m_statuses; }

    /// The texts of ReceiverStatusWords.h.
    std::string GetErrorText() const;
    /// That of the receiver's own status word; empty when the log carries none.
    std::string GetStatusText() const;

protected:
    CNovatelRXSTATUS() = default;

    std::uint32_t m_errorWord = 0;
    std::vector<SStatus> m_statuses;
};

} // namespace Novatel
