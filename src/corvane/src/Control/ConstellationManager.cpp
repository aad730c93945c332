#include "Control/ConstellationManager.h"

#include "Control/ChannelConfigurations.h"
#include "Logs/LogCast.h"
#include "platform/Localisation.h"

#include <array>
#include <cstdio>

using Novatel::CNovatelCHANCONFIGLIST;
using Novatel::CNovatelVERSION;

namespace {

constexpr char kSection[] = "Corvane";
/// The component type of the receiver itself.
constexpr std::uint32_t kReceiverCard = 1;

std::string ConfigurationText(const CNovatelCHANCONFIGLIST::SChannelConfigSet& set) {
    std::string text;
    for (const CNovatelCHANCONFIGLIST::SSignal& signal : set.signals) {
        std::array<char, 16> count;
        std::snprintf(count.data(), count.size(), "%2d",
                      static_cast<std::int32_t>(signal.numberOfChannels));
        text += count.data();
        text += " " + SignalTypeName(signal.signalType) + ", ";
    }
    return text;
}

} // namespace

CConstellationManager::CConstellationManager()
    : m_config(CConfig::GetSystemConfig()),
      m_receiverSupportsGlonass(m_config->GetInteger(kSection, "receiver_supports_glonass", 0) > 0),
      m_forceGlonassState(ReadFlag("force_glonass_state", 0)),
      m_forceGlonassOn(ReadFlag("force_glonass_on", 0)),
      // Forced, and off, until somebody asks for SBAS.
      m_forceSBASState(ReadFlag("force_sbas_state", 1)),
      m_forceSBASOn(ReadFlag("force_sbas_on", 0)),
      m_lastConfigurationSent(m_config->GetInteger(kSection, "current_channel_configuration", 0)),
      m_receiverIs615(ReadFlag("receiver_is_615", 0)) {
    m_logger.Warn(
        "CConstellationManager::CConstellationManager: loaded last sent channel config as %d",
        static_cast<int>(m_lastConfigurationSent));
    RefreshRegionDefaults();
}

CConstellationManager::~CConstellationManager() {
    m_config->Release();
}

bool CConstellationManager::ReadFlag(const char* key, std::int32_t defaultValue) const {
    return m_config->GetInteger(kSection, key, defaultValue) != 0;
}

void CConstellationManager::WriteInteger(const char* key, std::int32_t value) {
    m_config->SetInteger(kSection, key, value);
}

void CConstellationManager::NewRecord(CGPSRecord* record) {
    if (record != nullptr) {
        DispatchNovatelLog(*record);
    }
}

void CConstellationManager::DispatchNovatelLog(const CGPSRecord& record) {
    const CLogCast log(record);
    if (const auto* const version = log.As<CNovatelVERSION>()) {
        HandleVersion(*version);
    } else if (const auto* const list = log.As<CNovatelCHANCONFIGLIST>()) {
        HandleChannelConfigList(*list);
    } else {
        return;
    }
    m_logger.Warn("CConstellationManager::DispatchNovatelLog: updating channel config");
    UpdateChannelConfiguration();
}

/// A model that tracks GLONASS has a "G" in its name.
void CConstellationManager::HandleVersion(const CNovatelVERSION& version) {
    m_isModelKnown = true;
    for (const CNovatelVERSION::SComponent& component : version.GetComponents()) {
        if (component.type != kReceiverCard) {
            continue;
        }
        const bool isSupported = component.model.find('G') != std::string::npos;
        if (isSupported != m_receiverSupportsGlonass) {
            m_receiverSupportsGlonass = isSupported;
            WriteInteger("receiver_supports_glonass", isSupported ? 1 : 0);
        }
    }
}

void CConstellationManager::HandleChannelConfigList(const CNovatelCHANCONFIGLIST& list) {
    const auto current = static_cast<std::int32_t>(list.GetSetInUse());
    m_logger.Warn("CConstellationManager::DispatchNovatelLog_CHANCONFIGLIST: currentChannel: %d "
                  "m_lastSetChannelConfiguration: %d",
                  static_cast<int>(current), static_cast<int>(m_lastConfigurationSent));
    StoreLastConfigurationSent(current);
    m_availableConfigurations = list.GetSets();
    PublishChannelConfigList(list);
}

void CConstellationManager::PublishChannelConfigList(const CNovatelCHANCONFIGLIST& list) {
    const auto& sets = list.GetSets();
    m_logger.SetEssentialStatus("current_channel_configuration", "%d",
                                static_cast<int>(list.GetSetInUse()));
    m_logger.SetEssentialStatus("number_channel_configs_available", "%d",
                                static_cast<int>(sets.size()));
    for (std::size_t i = 0; i < sets.size(); ++i) {
        m_logger.SetEssentialStatus("channel_config_" + std::to_string(i + 1), "%s",
                                    ConfigurationText(sets[i]).c_str());
    }
}

void CConstellationManager::ChannelConfigSelected(std::int32_t number) {
    m_logger.Warn("CConstellationManager::ChannelConfigSelected: currentChannel: %d "
                  "m_lastSetChannelConfiguration: %d",
                  static_cast<int>(number), static_cast<int>(m_lastConfigurationSent));
    StoreLastConfigurationSent(number);
}

void CConstellationManager::StoreLastConfigurationSent(std::int32_t number) {
    if (number != m_lastConfigurationSent) {
        m_lastConfigurationSent = number;
        WriteInteger("current_channel_configuration", number);
        UpdateChannelConfiguration();
    }
}

bool CConstellationManager::SetSBASForced(bool state, bool on) {
    m_forceSBASState = state;
    m_forceSBASOn = on;
    WriteInteger("force_sbas_state", state ? 1 : 0);
    WriteInteger("force_sbas_on", on ? 1 : 0);
    UpdateChannelConfiguration();
    return true;
}

/// EGNOS and GLONASS are not used together; so a region that names no SBAS wants it only together
/// with GLONASS, which has always been so.
void CConstellationManager::RefreshRegionDefaults() {
    const Localisation::CRegionManager& regions = Localisation::CRegionManager::Get();
    Localisation::SRegionDefaults defaults;
    const bool isKnown = regions.RegionDefaults(regions.CurrentRegion(), defaults);
    const auto entry = defaults.values.find("sbas");
    const std::string sbas = entry == defaults.values.end() ? "none" : entry->second;
    m_regionalSBAS = isKnown && sbas != "none";
    m_regionalSBASWithGlonass = isKnown && sbas != "egnos";
    UpdateChannelConfiguration(true);
}

void CConstellationManager::UpdateChannelConfiguration(bool isRefreshed) {
    Decide();
    m_logger.SetEssentialStatus("desired_channel_configuration", "%d",
                                static_cast<int>(m_desiredConfiguration));
    m_logger.Warn("CConstellationManager::UpdateChannelConfiguration(%d) %d", isRefreshed ? 1 : 0,
                  static_cast<int>(m_desiredConfiguration));
    if (!m_isModelKnown) {
        return;
    }
    if (m_receiverSupportsGlonass) {
        m_diagnostics.Clear(kGlonassUnsupportedDiagnostic);
    } else {
        m_diagnostics.Raise(kGlonassUnsupportedDiagnostic, 1);
    }
}

void CConstellationManager::Decide() {
    m_isGlonassWanted = m_receiverSupportsGlonass && (!m_forceGlonassState || m_forceGlonassOn);
    if (m_forceSBASState) {
        m_isSBASWanted = m_forceSBASOn;
    } else {
        m_isSBASWanted = m_isGlonassWanted ? m_regionalSBASWithGlonass : m_regionalSBAS;
    }
    m_desiredConfiguration = (m_isGlonassWanted ? 4 : 1) + (m_isSBASWanted ? 1 : 0);
}
