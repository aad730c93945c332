// PDPSTAT: statistics of the receiver's smoothing filter.
#pragma once

#include "Logs/NovatelOEMV/NovatelRecord.h"

#include <array>

namespace Novatel {

/// The log is unpublished; its values are known by their position only.
class CNovatelPDPSTAT : public virtual CNovatelRecord {
public:
    static constexpr std::uint16_t kMessageID = 1085;

    const std::array<std::uint32_t, 5>& GetIntegers() const { return m_integers; }
    const std::array<double, 3>& GetReals() const { return m_reals; }

protected:
    CNovatelPDPSTAT() = default;

    std::array<std::uint32_t, 5> m_integers{};
    std::array<double, 3> m_reals{};
};

} // namespace Novatel
