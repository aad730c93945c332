#include "Faults.h"

namespace Sim {

namespace {

/// Tells the chance of faults from that of the world.
constexpr std::uint64_t kFaultSeed = 0x5EEDFA17;
constexpr std::uint64_t kLongestBurst = 32;

} // namespace

Bytes Noise(CRandom& random, std::size_t count) {
    Bytes bytes(count);
    for (std::uint8_t& byte : bytes) {
        byte = random.Byte();
    }
    return bytes;
}

CFaults::CFaults(const SFaultSettings& settings, std::uint64_t seed, STime start,
                 CReceiverOutput& next)
    : m_settings(settings),
      m_random(seed ^ kFaultSeed),
      m_start(SinceGPSEpoch(start)),
      m_next(next) {
}

bool CFaults::IsDeaf(EPort port, Milliseconds moment) const {
    return FactsOf(port).hasLineSpeed && m_settings.wrongBaud &&
           m_settings.wrongBaud->Holds(moment - m_start);
}

void CFaults::Say(const SUtterance& utterance) {
    if (m_settings.silent && m_settings.silent->Holds(utterance.moment - m_start)) {
        return;
    }
    if (utterance.isLog && m_random.Happens(m_settings.drop)) {
        return;
    }
    SUtterance spoilt = utterance;
    spoilt.bytes = Spoil(utterance);
    m_next.Say(spoilt);
    if (utterance.isLog && m_random.Happens(m_settings.duplicate)) {
        m_next.Say(spoilt);
    }
}

Bytes CFaults::Spoil(const SUtterance& utterance) {
    Bytes bytes = utterance.bytes;
    if (IsDeaf(utterance.port, utterance.moment)) {
        return Noise(m_random, bytes.size());
    }
    if (utterance.isLog && m_random.Happens(m_settings.cut)) {
        bytes.resize(m_random.Below(bytes.size()));
    }
    if (utterance.isLog && m_random.Happens(m_settings.noise)) {
        const Bytes burst = Noise(m_random, 1 + m_random.Below(kLongestBurst));
        bytes.insert(bytes.begin(), burst.begin(), burst.end());
    }
    if (m_settings.bitErrors > 0.0) {
        FlipBits(bytes);
    }
    return bytes;
}

void CFaults::FlipBits(Bytes& bytes) {
    for (std::uint8_t& byte : bytes) {
        for (unsigned int bit = 0; bit < 8; ++bit) {
            if (m_random.Happens(m_settings.bitErrors)) {
                byte = static_cast<std::uint8_t>(byte ^ (1U << bit));
            }
        }
    }
}

} // namespace Sim
