#include "platform/Localisation.h"

#include "platform/Config.h"

namespace Localisation {

namespace {

struct SBuiltInRegion {
    const char* name;
    const char* sbas;
};

constexpr SBuiltInRegion kBuiltInRegions[] = {
    {"north_america", "waas"},
    {"europe", "egnos"},
    {"japan", "msas"},
    {"none", "none"},
};

/// The system's database for as long as this lives.
class CSystemConfig {
public:
    CSystemConfig() : m_config(CConfig::GetSystemConfig()) {}
    ~CSystemConfig() { m_config->Release(); }
    CSystemConfig(const CSystemConfig&) = delete;
    CSystemConfig& operator=(const CSystemConfig&) = delete;

    CConfig* operator->() const { return m_config; }

private:
    CConfig* m_config;
};

} // namespace

CRegionManager& CRegionManager::Get() {
    static CRegionManager manager;
    return manager;
}

std::string CRegionManager::CurrentRegion() const {
    return CSystemConfig()->GetString("localisation", "region", "none");
}

bool CRegionManager::RegionDefaults(const std::string& region, SRegionDefaults& defaults) const {
    defaults.values.clear();
    bool isKnown = false;
    for (const SBuiltInRegion& builtIn : kBuiltInRegions) {
        if (region == builtIn.name) {
            defaults.values["sbas"] = builtIn.sbas;
            isKnown = true;
        }
    }
    if (const auto section = CSystemConfig()->GetSection("region:" + region)) {
        for (const auto& [key, value] : *section) {
            defaults.values[key] = value;
        }
        isKnown = true;
    }
    return isKnown;
}

} // namespace Localisation
