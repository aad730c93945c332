#include "Logs/OmnistarHPStatusWord.h"

#include "Logs/NamedBits.h"

namespace {

enum EBit : unsigned {
    kSubExpired = 0,
    kOutOfRegion = 1,
    kWetError = 2,
    kLinkError = 3,
    kNoMeasurements = 4,
    kNoEphemeris = 5,
    kNoInitialPosition = 6,
    kNoTimeSet = 7,
    kVelocityError = 8,
    kNoBaseStations = 9,
    kNoMappingMessage = 10,
    kStaticInitialisationMode = 26,
    kUpdatingData = 31,
};

constexpr SNamedBit kFlags[] = {
    {kSubExpired, "SubExpired"},
    {kOutOfRegion, "OutOfRegion"},
    {kWetError, "WetError"},
    {kLinkError, "LinkError"},
    {kNoMeasurements, "NoMeasurements"},
    {kNoEphemeris, "NoEphemeris"},
    {kNoInitialPosition, "NoInitialPosition"},
    {kNoTimeSet, "NoTimeSet"},
    {kVelocityError, "VelocityError"},
    {kNoBaseStations, "NoBaseStations"},
    {kNoMappingMessage, "NoMappingMessage"},
    {kStaticInitialisationMode, "StaticInitialisationMode"},
    {kUpdatingData, "UpdatingData"},
};

} // namespace

bool COmnistarHPStatusWord::IsSubscriptionExpired() const {
    return IsBitSet(m_word, kSubExpired);
}

bool COmnistarHPStatusWord::IsOutOfRegion() const {
    return IsBitSet(m_word, kOutOfRegion);
}

bool COmnistarHPStatusWord::HasWetError() const {
    return IsBitSet(m_word, kWetError);
}

bool COmnistarHPStatusWord::HasLinkError() const {
    return IsBitSet(m_word, kLinkError);
}

bool COmnistarHPStatusWord::HasNoMeasurements() const {
    return IsBitSet(m_word, kNoMeasurements);
}

bool COmnistarHPStatusWord::HasNoEphemeris() const {
    return IsBitSet(m_word, kNoEphemeris);
}

bool COmnistarHPStatusWord::HasNoInitialPosition() const {
    return IsBitSet(m_word, kNoInitialPosition);
}

bool COmnistarHPStatusWord::HasNoTimeSet() const {
    return IsBitSet(m_word, kNoTimeSet);
}

bool COmnistarHPStatusWord::HasVelocityError() const {
    return IsBitSet(m_word, kVelocityError);
}

bool COmnistarHPStatusWord::HasNoBaseStations() const {
    return IsBitSet(m_word, kNoBaseStations);
}

bool COmnistarHPStatusWord::HasNoMappingMessage() const {
    return IsBitSet(m_word, kNoMappingMessage);
}

bool COmnistarHPStatusWord::IsInStaticInitialisation() const {
    return IsBitSet(m_word, kStaticInitialisationMode);
}

bool COmnistarHPStatusWord::IsUpdatingData() const {
    return IsBitSet(m_word, kUpdatingData);
}

std::string COmnistarHPStatusWord::AsText() const {
    return "[COmnistarHPStatusWord]: " + NamedBitPairs(m_word, kFlags);
}

void COmnistarHPStatusWord::Print() const {
    PrintLine(AsText());
}
