// What start-up decides: the configuration database's settings, overridden by the command line.
#pragma once

#include "platform/Config.h"

#include <cstdint>
#include <string>

/// Built once in main and only read after parsing.
class HandlerSettings {
public:
    enum EIOType : std::int32_t { rawFile = 0, serialPort = 1, replay = 2, portMultiplexer = 3 };

    /// Reads section "Corvane" of the database.
    explicit HandlerSettings(CConfig& config);

    /// Reads the command line's options. False, told on standard error, on one it does not know.
    bool ParseOptions(int argc, char* const argv[]);

    CConfig& Config() const { return m_config; }
    /// An EIOType, or any other number that the database holds.
    std::int32_t IOType() const { return m_ioType; }
    /// A device or file path, or the multiplexer's port number as text.
    const std::string& Device() const { return m_device; }
    std::int32_t BaudRate() const { return m_baudRate; }
    /// Milliseconds.
    std::int32_t ReadTimeout() const { return m_readTimeout; }
    /// Bytes asked for by each read.
    std::int32_t ReadSize() const { return m_readSize; }
    bool ElevatePriority() const { return m_elevatePriority; }
    bool DisplayPackets() const { return m_displayPackets; }
    /// 0 none, 1 zq2, 2 break, 3 softbreak.
    std::int32_t BreakoutMode() const { return m_breakoutMode; }
    const std::string& ConfigurationFile() const { return m_configurationFile; }
    bool PDPFilterReset() const { return m_pdpFilterReset; }

    bool IsRawFile() const { return m_ioType == rawFile; }
    bool IsSerial() const { return m_ioType == serialPort; }
    bool IsReplay() const { return m_ioType == replay; }
    bool IsPortMultiplexer() const { return m_ioType == portMultiplexer; }

private:
    bool ApplyOption(int option, const char* argument);
    void SetSource(const char* device, EIOType ioType);
    bool SetBreakoutMode(const std::string& mode);

    CConfig& m_config;
    std::int32_t m_ioType = serialPort;
    std::string m_device = "/dev/ttyS0";
    std::int32_t m_baudRate = 115200;
    std::int32_t m_readTimeout = 100;
    std::int32_t m_readSize = 1024;
    bool m_elevatePriority = true;
    bool m_displayPackets = false;
    std::int32_t m_breakoutMode = 0;
    std::string m_configurationFile;
    bool m_pdpFilterReset = false;
};

/// Prints the help to standard output; `program` is the path it was started by.
void PrintUsage(const char* program);
