#include "Control/CommandManager.h"

#include "Control/ConstellationManager.h"
#include "Control/LineFile.h"
#include "Control/ReceiverConfiguration.h"
#include "IO/InputOutputHandler.h"
#include "platform/DebugPrint.h"
#include "platform/LogClient.h"
#include "platform/Maths.h"
#include "platform/Text.h"
#include "platform/Time.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace {

constexpr char kSection[] = "Corvane";
/// The logging service's category of the bytes that the receiver sends.
constexpr char kRawCategory[] = "NovatelPortHandler";

constexpr std::string_view kReferenceFormats[] = {"VARN1", "CMR", "RTCM3", "RTCM2"};

/// A command with one of these is for once: replayed with the configuration it would undo what has
/// been reached since.
constexpr std::string_view kOneShotWords[] = {"SELECTCHANCONFIG", "FRESET", "RESET"};

struct SReferenceLog {
    std::string_view suffix;
    bool needsGlonass = false;
};
constexpr SReferenceLog kCMRLogs[] = {
    {" cmrobs ontime 1"},
    {" cmrgloobs ontime 1", true},
    {" cmrdesc ontime 10"},
    {" cmrref ontime 10"},
};
constexpr SReferenceLog kRTCM3Logs[] = {
    {" rtcm1004 ontime 1"},
    {" rtcm1012 ontime 1", true},
    {" rtcm1005 ontime 10"},
    {" rtcm1033 ontime 60"},
};

std::string Upper(std::string text) {
    for (char& c : text) {
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    }
    return text;
}

bool IsOneShot(const std::string& command) {
    const std::string text = Upper(command);
    return std::any_of(std::begin(kOneShotWords), std::end(kOneShotWords),
                       [&](std::string_view word) { return text.find(word) != std::string::npos; });
}

} // namespace

void CCommandManager::NewRecord(CGPSRecord*) {
    if (CanSelectChannelConfiguration()) {
        RefreshChannelConfiguration();
    }
}

bool CCommandManager::EnsureOpen() {
    if (m_source == nullptr) {
        return false;
    }
    if (!m_source->IsOpen()) {
        m_source->Open();
    }
    return true;
}

bool CCommandManager::SendCommand(const std::string& text) {
    m_configuration.push_back(text);
    if (!EnsureOpen()) {
        return false;
    }
    m_source->Write(text);
    return true;
}

void CCommandManager::QueueCommand(const std::string& text) {
    m_pending.push_back(text);
}

bool CCommandManager::ReplayConfiguration() {
    if (!EnsureOpen()) {
        return false;
    }
    for (const std::string& command : m_configuration) {
        dprintf("Queueing Novatel Command '%s'\n", command.c_str());
        QueueCommand(command);
    }
    std::erase_if(m_configuration, IsOneShot);
    return true;
}

void CCommandManager::Reset() {
    QueueCommand(std::string("RESET") + kCommandEnd);
}

void CCommandManager::ResetPDPFilter() {
    QueueCommand(std::string("pdpfilter reset") + kCommandEnd);
}

std::string CCommandManager::NextCommand() {
    if (m_pending.empty()) {
        return {};
    }
    std::string command = std::move(m_pending.front());
    m_pending.pop_front();
    return command;
}

void CCommandManager::InspectCommand(const std::string& text) {
    const auto words = Core::Utilities::Split(text, ' ');
    std::int32_t number = 0;
    if (words.size() >= 2 && words[0] == "selectchanconfig" &&
        Core::Utilities::ParseInt(words[1], number) && m_constellation != nullptr) {
        m_constellation->ChannelConfigSelected(number);
    }
}

void CCommandManager::ResetRTKFilter() {
    QueueCommand(std::string("rtkcommand reset") + kCommandEnd);
}

bool CCommandManager::FactoryReset() {
    SendCommand(std::string("FRESET STANDARD") + kCommandEnd);
    ReplayConfiguration();
    return true;
}

void CCommandManager::RequestReceiverInformation(std::uint32_t pause) {
    for (const char* command :
         {"LOG CHANCONFIGLISTB ONCE", "LOG LOGLISTB ONCE", "LOG RXCONFIGB ONCE"}) {
        SendCommand(std::string(command) + kCommandEnd);
        Core::Sleep(Core::Time::FromNanoseconds(std::int64_t{pause} * 1000));
    }
}

bool CCommandManager::RebuildAndReplay() {
    BuildConfiguration();
    return ReplayConfiguration();
}

void CCommandManager::SetGlonassCorrections(bool isOn) {
    m_config.SetBoolean(kSection, "glonass_corrections", isOn);
    m_settings.glonassCorrections = isOn;
}

void CCommandManager::SetGPSLoggingEnabled(bool isOn) {
    if (isOn == m_settings.gpsLoggingEnabled) {
        return;
    }
    m_settings.gpsLoggingEnabled = isOn;
    m_config.SetInteger(kSection, "gps_logging_enabled", isOn ? 1 : 0);
    RebuildAndReplay();
    CLogClient().SetCategory(kRawCategory, isOn);
}

bool CCommandManager::SetIonosphereMode(std::uint32_t mode) {
    if (mode != m_settings.ionosphereMode) {
        m_settings.ionosphereMode = mode;
        m_config.SetInteger(kSection, "ionosphere_mode", static_cast<std::int32_t>(mode));
        RebuildAndReplay();
    }
    return true;
}

void CCommandManager::SetSBASPrn(std::int32_t prn) {
    if (prn != m_settings.sbasPrn) {
        m_settings.sbasPrn = prn;
        m_config.SetInteger(kSection, "sbas_prn", prn);
        RebuildAndReplay();
    }
}

void CCommandManager::SetReferencePosition(double latitude, double longitude, double height) {
    m_settings.referencePosition = {true, latitude, longitude, height};
    std::array<char, 1024> text; // three doubles of 309 digits and their decimals
    std::snprintf(text.data(), text.size(), "%.12f,%.12f,%.4f", Core::Maths::Degrees(latitude),
                  Core::Maths::Degrees(longitude), height);
    m_config.SetString(kSection, "reference_position", text.data());
    RebuildAndReplay();
}

bool CCommandManager::ClearReferencePosition() {
    m_settings.referencePosition.isValid = false;
    m_config.Remove(kSection, "reference_position");
    return RebuildAndReplay();
}

std::int32_t CCommandManager::SetReferenceFormat(const std::string& name) {
    if (std::find(std::begin(kReferenceFormats), std::end(kReferenceFormats), name) ==
        std::end(kReferenceFormats)) {
        return -1;
    }
    if (name == m_settings.referenceFormat) {
        return 0;
    }
    m_settings.referenceFormat = name;
    m_config.SetString(kSection, "reference_format_real", name);
    return RebuildAndReplay() ? 1 : 0;
}

bool CCommandManager::SetSBASEnabled(bool isOn) {
    if (m_constellation == nullptr) {
        return false;
    }
    const bool isForced = m_constellation->SetSBASForced(true, isOn);
    RebuildAndReplay();
    return isForced;
}

bool CCommandManager::RefreshChannelConfiguration() {
    if (m_constellation != nullptr) {
        m_constellation->RefreshRegionDefaults();
    }
    return RebuildAndReplay();
}

bool CCommandManager::BuildConfiguration() {
    ReadReceiverSettings(m_config, m_settings);
    m_pending.clear();
    SConfigurationInput input{m_settings, {}};
    if (m_constellation != nullptr) {
        input.desiredChannelConfiguration = m_constellation->DesiredConfiguration();
    }
    m_configuration = ReceiverConfiguration(input);
    return true;
}

bool CCommandManager::LoadConfigurationFile(const std::string& path) {
    if (path.empty()) {
        return BuildConfiguration();
    }
    CLineFile file;
    if (!file.Open(path)) {
        m_lastError = file.LastError();
        return false;
    }
    if (file.Size() > kMaxFileSize) {
        m_lastError = path + ": larger than 16 MiB, which no list of commands is";
        return false;
    }
    std::vector<std::string> commands;
    do {
        commands.push_back(std::string(Core::Utilities::Trim(file.ReadLine())) + kCommandEnd);
    } while (!file.IsAtEnd() && commands.size() <= kMaxFileLines);
    if (file.HasFailed() || commands.size() > kMaxFileLines) {
        m_lastError =
            path + ": " + (file.HasFailed() ? file.LastError() : "more than 100000 lines");
        return false;
    }
    m_configuration = std::move(commands);
    return true;
}

void CCommandManager::AddReferenceOutputLogs(const std::string& port, const std::string& format) {
    const auto add = [&](const auto& logs) {
        for (const SReferenceLog& log : logs) {
            if (!log.needsGlonass || m_settings.glonassCorrections) {
                m_configuration.push_back("log " + port + std::string(log.suffix) + kCommandEnd);
            }
        }
    };
    if (format == "VARN1" || format == "CMR") {
        add(kCMRLogs);
    } else if (format == "RTCM3") {
        add(kRTCM3Logs);
    }
}

bool CCommandManager::IsSBASWanted() const {
    return m_constellation != nullptr && m_constellation->IsSBASWanted();
}

bool CCommandManager::IsGlonassWanted() const {
    return m_constellation != nullptr && m_constellation->IsGlonassWanted();
}

std::int32_t CCommandManager::CurrentChannelConfiguration() const {
    return m_constellation == nullptr ? 0 : m_constellation->CurrentConfiguration();
}

CConstellationManager::Configurations CCommandManager::ChannelConfigurations() const {
    return m_constellation == nullptr ? CConstellationManager::Configurations()
                                      : m_constellation->AvailableConfigurations();
}
