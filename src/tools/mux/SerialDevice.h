// A serial line or a pseudo-terminal as a port's device.
#pragma once

#include "mux/Device.h"
#include "platform/Serial.h"

namespace Mux {

class CSerialDevice : public CDevice {
public:
    CSerialDevice(const std::string& path, std::int32_t baud) : m_line(path, baud, Core::Time()) {}

    EOpening Open() override { return m_line.Open() ? EOpening::open : EOpening::failed; }
    bool IsOpen() const override { return m_line.IsOpen(); }
    int Descriptor() const override { return m_line.Descriptor(); }
    bool WantsToWrite() const override { return m_line.HasWaitingBytes(); }

    std::string Read() override { return m_line.Read(kReadSize); }
    bool Write(const std::string& bytes) override { return m_line.Write(bytes); }
    void ContinueWriting() override { m_line.ContinueWriting(); }
    std::size_t WaitingBytes() const override { return m_line.WaitingBytes(); }

    bool SetBaudRate(std::int32_t baud) override { return m_line.SetBaudRate(baud); }
    std::int32_t BaudRate() const override { return m_line.BaudRate(); }

    const std::string& LastError() const override { return m_line.LastError(); }

private:
    static constexpr std::int32_t kReadSize = 4096;

    Core::IO::Serial m_line;
};

} // namespace Mux
