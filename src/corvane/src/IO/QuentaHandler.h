// The byte source over a port of the port multiplexer, which owns the controller's serial lines.
#pragma once

#include "IO/InputOutputHandler.h"
#include "IO/QuentaMPI.h"
#include "IO/QuentaPort.h"

#include <memory>
#include <optional>

/// Its device is the number of a logical port, as text. A connection that is lost, by an end or an
/// error of a read or a write, leaves it closed, and it can be opened again.
class CQuentaHandler : public CInputOutputHandler {
public:
    /// Tests have their multiplexer elsewhere.
    explicit CQuentaHandler(std::string socketPrefix = QuentaPort::kSocketPrefix,
                            std::uint16_t rpcPort = CQuentaMPI::kPort);

    bool Open() override;
    /// False when it was not open.
    bool Close() override;
    bool IsOpen() const override { return m_isOpen; }

    using CInputOutputHandler::Read;
    /// Connects again first when the connection is gone; when that cannot be done, sleeps one
    /// second, so that a caller who does nothing but read does not spin.
    std::string Read(std::int32_t count) override;

    bool Write(const std::string& text) override;
    std::int32_t Write(const std::vector<std::uint8_t>& bytes) override;

    /// False while open, and for a text that is no decimal integer.
    bool SetDevice(const std::string& device) override;
    /// Whole milliseconds; without one, and with a negative one, a read never waits.
    bool SetReadTimeout(Core::Time timeout) override;
    /// Tells the multiplexer at once when the port number is known, else when the port is opened;
    /// what was written reaches it before.
    /// False when that failed; the port's next opening then tries again.
    bool SetBaudRate(std::int32_t baud) override;

    int FileDescriptor() const override;

    bool HasWaitingBytes() const override;
    void ContinueWriting() override;
    void Drain() override;

private:
    static constexpr std::int32_t kNotSet = -1;

    bool WriteBytes(const std::uint8_t* bytes, std::size_t count);
    bool EnsureConnected();
    bool SendBaudRate();
    void NoticeLoss();

    std::string m_socketPrefix;
    std::uint16_t m_rpcPort;
    std::int32_t m_portNumber = kNotSet;
    std::unique_ptr<QuentaPort> m_connection;
    bool m_isOpen = false;
    std::optional<Core::Time> m_readTimeout;
    std::optional<std::int32_t> m_unsentBaudRate;
    std::vector<std::uint8_t> m_readBuffer;
};
