// CHANCONFIGLIST: the ways in which the receiver can share its channels, and the one in use.
#pragma once

#include "Logs/NovatelOEMV/NovatelRecord.h"

#include <vector>

namespace Novatel {

class CNovatelCHANCONFIGLIST : public virtual CNovatelRecord {
public:
    static constexpr std::uint16_t kMessageID = 1148;

    struct SSignal {
        std::uint32_t numberOfChannels = 0;
        std::uint32_t signalType = 0; ///< the receiver's enumeration
    };

    struct SChannelConfigSet {
        std::uint32_t number_signals = 0;
        std::vector<SSignal> signals;
    };

    /// Counted from 1.
    std::uint32_t GetSetInUse() const { return m_setInUse; }
    const std::vector<SChannelConfigSet>& GetSets() const { return m_sets; }

protected:
    CNovatelCHANCONFIGLIST() = default;

    std::uint32_t m_setInUse = 0;
    std::vector<SChannelConfigSet> m_sets;
};

} // namespace Novatel
