// The byte source over a serial device, which the main loop opens and the port handler reads.
#pragma once

#include "IO/InputOutputHandler.h"
#include "platform/Serial.h"

#include <memory>

/// A serial line: opened when asked for, closed by itself when the line is lost.
class CSerialHandler : public CInputOutputHandler {
public:
    static constexpr std::int32_t kDefaultBaud = 115200;

    /// Opens nothing.
    CSerialHandler();

    using CInputOutputHandler::Read;

    bool Open() override;
    bool Close() override;
    bool IsOpen() const override;
    std::string Read(std::int32_t count) override;
    bool Write(const std::string& text) override;
    std::int32_t Write(const std::vector<std::uint8_t>& bytes) override;

    /// Closes the old device; the new one waits to be opened.
    bool SetDevice(const std::string& device) override;
    bool SetReadTimeout(Core::Time timeout) override;
    /// Opens the line first when it is closed.
    void SendBreak(double seconds) override;
    /// Always true; a speed that the line does not take is a failure to tell.
    bool SetBaudRate(std::int32_t baud) override;
    int FileDescriptor() const override;
    bool HasWaitingBytes() const override;
    void ContinueWriting() override;
    void Drain() override;

private:
    bool Tell(bool hasSucceeded);

    std::unique_ptr<Core::IO::Serial> m_serial;
    Core::Time m_readTimeout = Core::Time::FromMilliseconds(50);
    std::int32_t m_baud = kDefaultBaud;
    std::string m_device = "/dev/ttyUSB0";
};
