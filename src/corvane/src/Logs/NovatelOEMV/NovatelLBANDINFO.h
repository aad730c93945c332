// LBANDINFO: the L-band service that the receiver listens to, and its subscriptions.
#pragma once

#include "Logs/LBandLog.h"
#include "Logs/NovatelOEMV/NovatelRecord.h"

namespace Novatel {

class CNovatelLBANDINFO : public CLBandLog, public virtual CNovatelRecord {
public:
    static constexpr std::uint16_t kMessageID = 730;

    struct SSubscription {
        std::uint32_t state = 0; ///< 0 expired, 1 full time, 2 counting down
        std::uint32_t expiryWeek = 0;
        std::uint32_t expirySeconds = 0;
    };

    std::uint32_t GetBaudRate() const { return m_baudRate; }
    std::uint16_t GetServiceID() const { return m_serviceID; }
    std::uint16_t GetReserved() const { return m_reserved; }
    std::uint32_t GetSerialNumber() const { return m_serialNumber; }
    const SSubscription& GetVBSSubscription() const { return m_vbsSubscription; }
    const SSubscription& GetHPSubscription() const { return m_hpSubscription; }
    /// 0 HP, 1 XP.
    std::uint32_t GetHPMode() const { return m_hpMode; }

protected:
    CNovatelLBANDINFO() = default;

    std::uint32_t m_baudRate = 0;
    std::uint16_t m_serviceID = 0;
    std::uint16_t m_reserved = 0;
    std::uint32_t m_serialNumber = 0;
    SSubscription m_vbsSubscription;
    SSubscription m_hpSubscription;
    std::uint32_t m_hpMode = 0;
};

} // namespace Novatel
