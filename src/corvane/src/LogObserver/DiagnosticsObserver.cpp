#include "LogObserver/DiagnosticsObserver.h"

#include "Logs/LogCast.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryRecord.h"
#include "Logs/NovatelOEMV/NovatelRXSTATUS.h"

using Novatel::CNovatelRXSTATUS;

namespace {

/// A word with these bits set.
constexpr std::uint32_t Bits(auto... bits) {
    return ((std::uint32_t{1} << bits) | ... | 0U);
}

/// Raised while any of the bits is set in its word.
struct SWatchedBits {
    Diagnosticator::SDescriptor descriptor;
    std::uint32_t error;
    std::uint32_t status;
};

// clang-format off
constexpr SWatchedBits kWatchedBits[] = {
    {{79151, 0},  Bits(9), Bits(1)},
    {{79161, 4},  Bits(7), Bits(2)},
    {{70950, 4},  Bits(),  Bits(3)},
    {{70922, 5},  Bits(),  Bits(5)},
    {{70922, 6},  Bits(),  Bits(6)},
    {{79195, 0},  Bits(),  Bits(7)}, // raised for a low idle time as well, by its own observer
    {{79203, 12}, Bits(),  Bits(8, 9, 10, 11)},
    {{73505, 17}, Bits(),  Bits(18)},
    {{79200, 12}, Bits(0, 2, 4, 6, 10, 11, 12, 13, 14, 15, 31), Bits(15, 17)},
    {{79202, 12}, Bits(1),  Bits()},
    {{79207, 12}, Bits(16), Bits(24)},
    {{79201, 12}, Bits(17), Bits()},
    {{79177, 12}, Bits(5),  Bits()},
};
// clang-format on

/// The receiver's own status word is the first block's; a log without blocks has the header's.
std::uint32_t ReceiverStatusWord(const CNovatelRXSTATUS& log) {
    if (!log.GetStatuses().empty()) {
        return log.GetStatuses().front().status;
    }
    const auto* const binary = dynamic_cast<const Novatel::CNovatelBinaryRecord*>(&log);
    return binary == nullptr ? 0 : binary->GetReceiverStatus();
}

} // namespace

void CDiagnosticsObserver::NewRecord(CGPSRecord* record) {
    if (record == nullptr) {
        return;
    }
    const auto* const rxstatus = CLogCast(*record).As<CNovatelRXSTATUS>();
    if (rxstatus == nullptr) {
        return;
    }
    const std::uint32_t errorWord = rxstatus->GetErrorWord();
    const std::uint32_t statusWord = ReceiverStatusWord(*rxstatus);
    if (errorWord != m_previousErrorWord || statusWord != m_previousStatusWord) {
        m_previousErrorWord = errorWord;
        m_previousStatusWord = statusWord;
        Publish();
    }
}

void CDiagnosticsObserver::Publish() {
    for (const SWatchedBits& row : kWatchedBits) {
        if ((m_previousErrorWord & row.error) != 0 || (m_previousStatusWord & row.status) != 0) {
            m_diagnostics.Raise(row.descriptor, 1);
        } else {
            m_diagnostics.Clear(row.descriptor);
        }
    }
}
