#include "Logs/OmnistarVBSStatusWord.h"

#include "Logs/NamedBits.h"

namespace {

enum EBit : unsigned {
    kSubscriptionExpired = 0,
    kOutOfRegion = 1,
    kWetError = 2,
    kSignalState = 3,
    kNoRemoteSites = 4,
    kNoAlmanac = 5,
    kNoPosition = 6,
    kNoTime = 7,
    kUpdatingData = 15,
};

// In the order in which they are printed.
constexpr SNamedBit kFlags[] = {
    {kSignalState, "SignalState"},     {kSubscriptionExpired, "SubscriptionExpired"},
    {kOutOfRegion, "OutOfRegion"},     {kWetError, "WetError"},
    {kNoRemoteSites, "NoRemoteSites"}, {kNoAlmanac, "NoAlmanac"},
    {kNoPosition, "NoPosition"},       {kNoTime, "NoTime"},
    {kUpdatingData, "UpdatingData"},
};

} // namespace

unsigned COmnistarVBSStatusWord::GetSignalState() const {
    return IsBitSet(m_word, kSignalState) ? 1 : 0;
}

bool COmnistarVBSStatusWord::IsSubscriptionExpired() const {
    return IsBitSet(m_word, kSubscriptionExpired);
}

bool COmnistarVBSStatusWord::IsOutOfRegion() const {
    return IsBitSet(m_word, kOutOfRegion);
}

bool COmnistarVBSStatusWord::HasWetError() const {
    return IsBitSet(m_word, kWetError);
}

bool COmnistarVBSStatusWord::HasNoRemoteSites() const {
    return IsBitSet(m_word, kNoRemoteSites);
}

bool COmnistarVBSStatusWord::HasNoAlmanac() const {
    return IsBitSet(m_word, kNoAlmanac);
}

bool COmnistarVBSStatusWord::HasNoPosition() const {
    return IsBitSet(m_word, kNoPosition);
}

bool COmnistarVBSStatusWord::HasNoTime() const {
    return IsBitSet(m_word, kNoTime);
}

bool COmnistarVBSStatusWord::IsUpdatingData() const {
    return IsBitSet(m_word, kUpdatingData);
}

std::string COmnistarVBSStatusWord::AsText() const {
    return "[COmnistarVBSStatusWord]: ," + NamedBitPairs(m_word, kFlags);
}

void COmnistarVBSStatusWord::Print() const {
    PrintLine(AsText());
}
