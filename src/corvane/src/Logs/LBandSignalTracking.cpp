#include "Logs/LBandSignalTracking.h"

#include "Logs/NamedBits.h"

namespace {

enum EBit : unsigned {
    kBitTimingLock = 6,
    kPhaseLocked = 7,
    kDCOffsetUnlocked = 8,
    kAGCUnlocked = 9,
};

constexpr SNamedBit kFlags[] = {
    {kBitTimingLock, "BitTimingLock"},
    {kPhaseLocked, "PhaseLocked"},
    {kDCOffsetUnlocked, "DCOffsetUnlocked"},
    {kAGCUnlocked, "AGCUnlocked"},
};

} // namespace

bool CLBandSignalTracking::IsBitTimingLocked() const {
    return IsBitSet(m_word, kBitTimingLock);
}

bool CLBandSignalTracking::IsPhaseLocked() const {
    return IsBitSet(m_word, kPhaseLocked);
}

bool CLBandSignalTracking::IsDCOffsetUnlocked() const {
    return IsBitSet(m_word, kDCOffsetUnlocked);
}

bool CLBandSignalTracking::IsAGCUnlocked() const {
    return IsBitSet(m_word, kAGCUnlocked);
}

std::string CLBandSignalTracking::AsText() const {
    return "[CLBandSignalTracking]:,TrackingState=" + std::to_string(GetTrackingState()) + ',' +
           NamedBitPairs(m_word, kFlags) + ",Error=" + std::to_string(GetError());
}

void CLBandSignalTracking::Print() const {
    PrintLine(AsText());
}
