// The one device that clients see, made of what programs tell the hub.
#pragma once

#include "hub/gpsd/NMEASentences.h"
#include "hub/gpsd/Satellites.h"
#include "hub/state/State.h"

#include <optional>
#include <string>

namespace Hub::GPSD {

/// It is there while the program that tells the solutions is connected.
class CDevice {
public:
    /// Returns whether it was not there before.
    bool Take(const SSolution& solution);
    /// Each returns the report that it leads to, if any.
    std::optional<TReport> Take(const SSky& sky);
    std::optional<TReport> Take(const SSentence& sentence);
    void Take(const SGeoid& geoid) { m_geoid = geoid.separation; }
    /// Returns whether the device has left with the program.
    bool TakeEnd(TProcess process);

    /// When it came, seconds since the Unix epoch; nothing while it is not there.
    std::optional<double> Activated() const { return m_activated; }
    /// Whether the last solution is young enough to be told.
    bool IsLive() const;

    /// Of the last solution; without a position when there is none or an old one.
    TReport Position() const;
    /// GGA, RMC and VTG of the same, as far as the receiver does not send them.
    std::string Sentences() const;
    /// GST of the same, unless the receiver's own sentences tell it.
    std::optional<TReport> NoiseOfSolution() const;
    /// All that is known.
    TReport Poll() const;

private:
    SFix Fix() const;
    std::optional<TReport> Sky() const;
    bool SendsNoise() const;
    std::optional<TReport> NoiseOfReceiver() const;

    std::optional<SKept<SSolution>> m_solution;
    std::optional<double> m_activated;
    std::optional<double> m_geoid;
    std::optional<SKept<SSentence>> m_noise;
    CSatellites m_satellites;
    CNMEASentences m_sentences;
};

} // namespace Hub::GPSD
