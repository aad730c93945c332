// The header of the receiver's logs, as every receiver record keeps it.
#pragma once

#include <array>
#include <cstdint>

namespace Novatel {

/// How well the receiver knows GPS time (the receiver's manual, "GPS time status"). Values without
/// a name occur and are kept.
enum class ETimeStatus : std::uint32_t {
    none = 0, ///< the sentence has no such field
    unknown = 20,
    approximate = 60,
    coarseAdjusting = 80,
    coarse = 100,
    coarseSteering = 120,
    freewheeling = 130,
    fineAdjusting = 140,
    fine = 160,
    fineBackupSteering = 170,
    fineSteering = 180,
    satTime = 200
};

struct SNovatelHeader {
    std::array<std::uint8_t, 3> m_sync{};
    std::uint8_t m_headerLength = 0; ///< bytes; the body starts there
    std::uint16_t m_messageID = 0;
    std::uint8_t m_messageType = 0; ///< bit 7: a response to a command
    std::uint8_t m_portAddress = 0;
    std::uint16_t m_messageLength = 0; ///< bytes of the body alone
    std::uint16_t m_sequence = 0;
    std::uint8_t m_idleTime = 0; ///< half percents
    ETimeStatus m_timeStatus = ETimeStatus::none;
    std::uint16_t m_week = 0;         ///< GPS week without roll-over
    std::uint32_t m_milliseconds = 0; ///< of the week
    std::uint32_t m_receiverStatus = 0;
    std::uint16_t m_reserved = 0;
    std::uint16_t m_softwareVersion = 0; ///< build number

    double SecondsOfWeek() const { return m_milliseconds / 1000.0; }
};

} // namespace Novatel
