// Everything the daemon says to the receiver in the receiver's command language.
#pragma once

#include "Control/ReceiverSettings.h"
#include "LogObserver/LogObserver.h"
#include "Logs/NovatelOEMV/NovatelCHANCONFIGLIST.h"
#include "platform/Config.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

class CConstellationManager;
class CInputOutputHandler;

/// Keeps the receiver's configuration as a list of commands, and the commands that wait to be sent,
/// of which the port handler takes one a pass. Whoever changes a setting here changes it in the
/// configuration database, rebuilds the list and queues it whole.
class CCommandManager : public CLogObserver {
public:
    /// How many lines a configuration file may have, and bytes.
    static constexpr std::size_t kMaxFileLines = 100'000;
    static constexpr std::int64_t kMaxFileSize = std::int64_t{16} * 1024 * 1024;

    /// How many commands may wait, or make the configuration, at the wish of somebody else.
    static constexpr std::size_t kMaxCommands = 10'000;

    explicit CCommandManager(CConfig& config) : m_config(config) {}

    /// Neither is owned; without a byte source nothing can be sent.
    void SetByteSource(CInputOutputHandler* source) { m_source = source; }
    void SetConstellationManager(CConstellationManager* constellation) {
        m_constellation = constellation;
    }

    /// Takes nothing from the records: it would refresh the channel configuration if that could be
    /// commanded.
    void NewRecord(CGPSRecord* record) override;

    /// Writes the command at once, opening the source when it is closed, and makes it part of the
    /// configuration. False without a byte source.
    virtual bool SendCommand(const std::string& text);
    /// Puts the command behind all that wait.
    virtual void QueueCommand(const std::string& text);
    /// Queues the whole configuration, and forgets those of its commands that are for once: resets
    /// and the selection of a channel configuration. False without a byte source.
    virtual bool ReplayConfiguration();
    virtual void Reset();
    virtual void ResetPDPFilter();
    /// Takes the command that has waited longest; the empty text when none waits.
    virtual std::string NextCommand();
    /// To be called with each command that was sent from the queue: what it means is noted.
    virtual void InspectCommand(const std::string& text);

    void ResetRTKFilter();
    /// Always true.
    bool FactoryReset();
    /// Asks for channel configurations, logs and settings, with a pause (microseconds) after each.
    void RequestReceiverInformation(std::uint32_t pause);
    std::size_t PendingCount() const { return m_pending.size(); }
    /// Whether so many more commands may be queued, or sent at once.
    bool HasRoomToQueue(std::size_t count) const {
        return m_pending.size() + count <= kMaxCommands;
    }
    bool HasRoomToSend(std::size_t count) const {
        return m_configuration.size() + count <= kMaxCommands;
    }

    /// In force with the next rebuild.
    void SetGlonassCorrections(bool isOn);
    void SetGPSLoggingEnabled(bool isOn);
    /// 0 to 3; always true.
    bool SetIonosphereMode(std::uint32_t mode);
    void SetSBASPrn(std::int32_t prn);
    /// Radians, and metres above the ellipsoid.
    void SetReferencePosition(double latitude, double longitude, double height);
    /// False without a byte source.
    bool ClearReferencePosition();
    /// Non-zero, and nothing changed, for a name other than VARN1, CMR, RTCM3 and RTCM2; 0 for the
    /// one in force; else 1 when the new configuration was queued, 0 when there is no byte source.
    std::int32_t SetReferenceFormat(const std::string& name);
    /// False without a constellation manager.
    bool SetSBASEnabled(bool isOn);
    /// Takes over what the region presets. False without a byte source.
    bool RefreshChannelConfiguration();

    /// Makes the list from the settings and forgets what waits. Always true.
    bool BuildConfiguration();
    /// Makes the list from a file's lines; with an empty path, from the settings. False, with the
    /// reason in LastError() and the list as it was, when the file cannot be read.
    bool LoadConfigurationFile(const std::string& path);
    const std::string& LastError() const { return m_lastError; }

    /// Adds the logs of a reference station's output to the list; `port` is the receiver's.
    void AddReferenceOutputLogs(const std::string& port, const std::string& format);

    const std::vector<std::string>& Configuration() const { return m_configuration; }
    bool GPSLoggingEnabled() const { return m_settings.gpsLoggingEnabled; }
    std::uint32_t IonosphereMode() const { return m_settings.ionosphereMode; }
    std::int32_t SBASPrn() const { return m_settings.sbasPrn; }
    const std::string& ReferenceFormat() const { return m_settings.referenceFormat; }
    const SReferencePosition& ReferencePosition() const { return m_settings.referencePosition; }
    /// What the constellation manager says; false, 0 and nothing without one.
    bool IsSBASWanted() const;
    bool IsGlonassWanted() const;
    std::int32_t CurrentChannelConfiguration() const;
    std::vector<Novatel::CNovatelCHANCONFIGLIST::SChannelConfigSet> ChannelConfigurations() const;
    bool GlonassCorrections() const { return m_settings.glonassCorrections; }

private:
    bool EnsureOpen();
    bool RebuildAndReplay();

    CConfig& m_config;
    CInputOutputHandler* m_source = nullptr;
    CConstellationManager* m_constellation = nullptr;
    SReceiverSettings m_settings;
    std::vector<std::string> m_configuration;
    std::deque<std::string> m_pending;
    std::string m_lastError;
};
