// What goes wrong between the receiver and those who listen.
#pragma once

#include "Random.h"
#include "Receiver.h"

#include <optional>

namespace Sim {

/// A time of the simulation, counted from its start.
struct SPeriod {
    Milliseconds at = 0;
    Milliseconds duration = kNever;

    bool Holds(Milliseconds sinceStart) const {
        return sinceStart >= at && sinceStart - at < duration;
    }
};

/// Rates are probabilities.
struct SFaultSettings {
    std::optional<SPeriod> silent = {};
    std::optional<SPeriod> wrongBaud = {}; ///< the COM ports run at a speed that nobody else has
    double noise = 0.0;                    ///< of a burst of noise in front of a log
    double bitErrors = 0.0;                ///< of each bit
    double drop = 0.0;                     ///< of each log: it does not come
    double duplicate = 0.0;                ///< it comes twice
    double cut = 0.0;                      ///< its end is missing
};

/// So many bytes of what a line at the wrong speed makes of anything.
Bytes Noise(CRandom& random, std::size_t count);

/// Stands before an output and spoils what comes through. The same seed spoils the same bytes.
class CFaults : public CReceiverOutput {
public:
    CFaults(const SFaultSettings& settings, std::uint64_t seed, STime start, CReceiverOutput& next);

    void Say(const SUtterance& utterance) override;

    /// Whether what arrives on the port cannot be understood.
    bool IsDeaf(EPort port, Milliseconds moment) const;

private:
    Bytes Spoil(const SUtterance& utterance);
    void FlipBits(Bytes& bytes);

    SFaultSettings m_settings;
    CRandom m_random;
    Milliseconds m_start;
    CReceiverOutput& m_next;
};

} // namespace Sim
