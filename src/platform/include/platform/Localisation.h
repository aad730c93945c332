// The region that the machine works in, and what is usual there.
#pragma once

#include <map>
#include <string>

namespace Localisation {

/// What a region presets, by name. "sbas" is its satellite-based augmentation: "waas", "egnos",
/// "msas" or "none".
struct SRegionDefaults {
    std::map<std::string, std::string> values;
};

/// Reads the system's configuration database anew with every call: section "localisation" names
/// the region, a section "region:<name>" adds one or overrides what is built in.
class CRegionManager {
public:
    /// The one manager of the process.
    static CRegionManager& Get();

    /// Key "region" of section "localisation", "none" unless set.
    std::string CurrentRegion() const;

    /// False, and `defaults` empty, for a region that nobody has defined.
    bool RegionDefaults(const std::string& region, SRegionDefaults& defaults) const;

private:
    CRegionManager() = default;
};

} // namespace Localisation
