// Decides how the receiver's channels should be shared among GPS, GLONASS and SBAS.
#pragma once

#include "LogObserver/LogObserver.h"
#include "Logs/NovatelOEMV/NovatelCHANCONFIGLIST.h"
#include "Logs/NovatelOEMV/NovatelVERSION.h"
#include "platform/Config.h"
#include "platform/Diagnosticator.h"
#include "platform/RemoteLogger.h"

#include <cstdint>
#include <string>
#include <vector>

/// Raised while the receiver's model cannot track GLONASS.
inline constexpr Diagnosticator::SDescriptor kGlonassUnsupportedDiagnostic{79188, 12};

/// Learns from the receiver's VERSION and CHANCONFIGLIST, the region and section "Corvane" of the
/// system's configuration database, and publishes what is wanted and what is in force. It never
/// sends anything: an operator selects the configuration.
class CConstellationManager : public CLogObserver {
public:
    using Configurations = std::vector<Novatel::CNovatelCHANCONFIGLIST::SChannelConfigSet>;

    CConstellationManager();
    ~CConstellationManager() override;
    CConstellationManager(const CConstellationManager&) = delete;
    CConstellationManager& operator=(const CConstellationManager&) = delete;

    void NewRecord(CGPSRecord* record) override;

    /// Takes over what the current region presets for SBAS.
    void RefreshRegionDefaults();
    /// The receiver has been told to use this configuration.
    void ChannelConfigSelected(std::int32_t number);
    /// With `state` SBAS is as `on` says, without it as the region presets. Always true.
    bool SetSBASForced(bool state, bool on);

    /// 1 neither GLONASS nor SBAS, 2 SBAS, 4 GLONASS, 5 both.
    std::int32_t DesiredConfiguration() const { return m_desiredConfiguration; }
    /// The configuration last sent to the receiver or reported by it; 0 when there is none.
    std::int32_t CurrentConfiguration() const { return m_lastConfigurationSent; }
    bool IsGlonassWanted() const { return m_isGlonassWanted; }
    bool IsSBASWanted() const { return m_isSBASWanted; }
    bool ReceiverIs615() const { return m_receiverIs615; }
    /// In the receiver's order, which counts them from 1.
    Configurations AvailableConfigurations() const { return m_availableConfigurations; }

private:
    void DispatchNovatelLog(const CGPSRecord& record);
    void HandleVersion(const Novatel::CNovatelVERSION& version);
    void HandleChannelConfigList(const Novatel::CNovatelCHANCONFIGLIST& list);
    void PublishChannelConfigList(const Novatel::CNovatelCHANCONFIGLIST& list);
    void UpdateChannelConfiguration(bool isRefreshed = false);
    void Decide();
    void StoreLastConfigurationSent(std::int32_t number);
    bool ReadFlag(const char* key, std::int32_t defaultValue) const;
    void WriteInteger(const char* key, std::int32_t value);

    CRemoteLogger m_logger{"NovatelConstellationManager"};
    Diagnosticator::CDiagnosticatorAPI m_diagnostics{"CConstellationManager"};
    CConfig* m_config;
    bool m_receiverSupportsGlonass;
    bool m_forceGlonassState;
    bool m_forceGlonassOn;
    bool m_regionalSBAS = false;            ///< where GLONASS is not used
    bool m_regionalSBASWithGlonass = false; ///< where it is
    bool m_forceSBASState;
    bool m_forceSBASOn;
    bool m_isGlonassWanted = false;
    bool m_isSBASWanted = false;
    std::int32_t m_desiredConfiguration = 0;
    std::int32_t m_lastConfigurationSent;
    bool m_isModelKnown = false;
    Configurations m_availableConfigurations;
    bool m_receiverIs615;
};
