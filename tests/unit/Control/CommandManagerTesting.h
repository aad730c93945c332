// A command manager with a byte source, a configuration file and a clock of a test's own.
#pragma once

#include "Control/CategoryWishes.h"
#include "Control/CommandManager.h"
#include "Control/ConstellationManager.h"
#include "Control/ExpectedConfiguration.h"
#include "Support/FakeByteSource.h"
#include "Support/FakeClock.h"
#include "Support/TemporaryFolder.h"
#include "TraceOutputs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

/// The system's configuration database, in a file of its own.
class CSystemConfigFile {
public:
    explicit CSystemConfigFile(const std::string& path) {
        setenv("CORVANE_CONFIG", path.c_str(), 1);
        m_config = CConfig::GetSystemConfig();
    }
    ~CSystemConfigFile() {
        m_config->Release();
        unsetenv("CORVANE_CONFIG");
    }
    CSystemConfigFile(const CSystemConfigFile&) = delete;
    CSystemConfigFile& operator=(const CSystemConfigFile&) = delete;

    CConfig& Config() const { return *m_config; }

private:
    CConfig* m_config;
};

class CCommandManagerTesting : public testing::Test {
protected:
    using Lines = std::vector<std::string>;

    CCommandManagerTesting() {
        Trace("off");
        CCategoryWishes::Forget();
        m_commands.SetByteSource(&m_source);
    }
    ~CCommandManagerTesting() override {
        unsetenv("CORVANE_TRACE");
        CTraceOutputs::Restart();
    }

    /// Where the trace goes: every replay writes each of its commands there.
    static void Trace(const char* where) {
        setenv("CORVANE_TRACE", where, 1);
        CTraceOutputs::Restart();
    }

    /// As another program writes the settings.
    void WriteSettings(const std::string& lines) {
        std::ofstream(m_folder.Path("new.conf")) << "[Corvane]\n" << lines;
        std::filesystem::rename(m_folder.Path("new.conf"), m_folder.Path("corvane.conf"));
    }
    std::string SettingsFile() const {
        std::stringstream text;
        text << std::ifstream(m_folder.Path("corvane.conf")).rdbuf();
        return text.str();
    }

    CConstellationManager& AttachConstellationManager() {
        m_constellation = std::make_unique<CConstellationManager>();
        m_commands.SetConstellationManager(m_constellation.get());
        return *m_constellation;
    }

    /// Takes all that waits.
    Lines TakePending() {
        Lines lines;
        for (std::size_t count = m_commands.PendingCount(); count > 0; --count) {
            lines.push_back(m_commands.NextCommand());
        }
        return lines;
    }
    Lines Configuration() const { return m_commands.Configuration(); }
    /// What is left of a list when it has been replayed.
    static Lines WithoutReset(Lines commands) {
        std::erase(commands, "rtkcommand reset\r\n");
        return commands;
    }

    CFakeClock m_clock;
    CTemporaryFolder m_folder;
    CSystemConfigFile m_system{m_folder.Write("corvane.conf", "")};
    CConfig& m_config = m_system.Config();
    CFakeByteSource m_source;
    std::unique_ptr<CConstellationManager> m_constellation;
    CCommandManager m_commands{m_config};
};
