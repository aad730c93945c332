// VERSION: the receiver's components, with their models and versions.
#pragma once

#include "Logs/NovatelOEMV/NovatelRecord.h"

#include <string>
#include <vector>

namespace Novatel {

class CNovatelVERSION : public virtual CNovatelRecord {
public:
    static constexpr std::uint16_t kMessageID = 37;

    /// The texts keep their full width on the wire, padded and closed by zero bytes.
    struct SComponent {
        std::uint32_t type = 0; ///< 1 is the receiver card
        std::string model;
        std::string serialNumber;
        std::string hardwareVersion;
        std::string softwareVersion;
        std::string bootVersion;
        std::string compileDate;
        std::string compileTime;
    };

    std::uint32_t GetNumberOfComponents() const { return m_numberOfComponents; }
    const std::vector<SComponent>& GetComponents() const { return m_components; }

protected:
    CNovatelVERSION() = default;

    std::uint32_t m_numberOfComponents = 0;
    std::vector<SComponent> m_components;
};

} // namespace Novatel
