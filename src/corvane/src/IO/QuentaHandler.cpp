#include "IO/QuentaHandler.h"

#include "platform/DebugPrint.h"
#include "platform/QuentaNames.h"
#include "platform/Text.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

int ToMilliseconds(Core::Time timeout) {
    const std::int64_t milliseconds = timeout.AsNanoseconds() / 1'000'000;
    return static_cast<int>(
        std::clamp<std::int64_t>(milliseconds, 0, std::numeric_limits<int>::max()));
}

} // namespace

CQuentaHandler::CQuentaHandler(std::string socketPrefix, std::uint16_t rpcPort)
    : m_socketPrefix(std::move(socketPrefix)), m_rpcPort(rpcPort) {
}

bool CQuentaHandler::Open() {
    if (m_isOpen) {
        dprintf("Quenta is already open.  cannot open twice\n");
        return false;
    }
    if (m_portNumber == kNotSet) {
        dprintf("Quenta port not set yet\n");
        return false;
    }
    m_connection = std::make_unique<QuentaPort>(m_portNumber, m_socketPrefix);
    m_isOpen = EnsureConnected();
    if (!m_isOpen) {
        dprintf("Quenta not opened ok\n");
    }
    return m_isOpen;
}

bool CQuentaHandler::Close() {
    if (!m_isOpen) {
        return false;
    }
    m_connection->Close();
    m_isOpen = false;
    return true;
}

bool CQuentaHandler::EnsureConnected() {
    if (!m_connection) {
        return false;
    }
    const bool isNew = !m_connection->IsConnected();
    if (!m_connection->EnsureConnected()) {
        return false;
    }
    if (isNew && m_unsentBaudRate) {
        SendBaudRate();
    }
    return true;
}

std::string CQuentaHandler::Read(std::int32_t count) {
    if (count <= 0) {
        return {};
    }
    m_isOpen = EnsureConnected();
    if (!m_isOpen) {
        dprintf("Quenta port not connected for Read()\n");
        Core::Sleep(Core::Time::FromMilliseconds(1000));
        return {};
    }
    m_readBuffer.resize(static_cast<std::size_t>(std::min(count, kMaxReadSize)));
    std::size_t taken = 0;
    if (m_readTimeout) {
        m_connection->Read(m_readBuffer.data(), m_readBuffer.size(), ToMilliseconds(*m_readTimeout),
                           taken);
    } else {
        m_connection->Read(m_readBuffer.data(), m_readBuffer.size(), taken);
    }
    if (taken > 0) {
        ReportSuccess(); // not when opened: one that closes whatever opens is told once
    }
    NoticeLoss();
    return std::string(m_readBuffer.begin(),
                       m_readBuffer.begin() + static_cast<std::ptrdiff_t>(taken));
}

bool CQuentaHandler::Write(const std::string& text) {
    return WriteBytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
}

std::int32_t CQuentaHandler::Write(const std::vector<std::uint8_t>& bytes) {
    return WriteBytes(bytes.data(), bytes.size()) ? 1 : 0;
}

bool CQuentaHandler::WriteBytes(const std::uint8_t* bytes, std::size_t count) {
    if (!m_connection) {
        return false;
    }
    const bool isWritten = m_connection->Write(bytes, count);
    NoticeLoss();
    return isWritten;
}

bool CQuentaHandler::HasWaitingBytes() const {
    return m_connection && m_connection->HasWaitingBytes();
}

void CQuentaHandler::ContinueWriting() {
    if (m_connection) {
        m_connection->ContinueWriting();
        NoticeLoss();
    }
}

void CQuentaHandler::Drain() {
    if (m_connection && !m_connection->Drain() && m_connection->IsConnected()) {
        ReportFailure("port " + std::to_string(m_portNumber) +
                      " of the multiplexer does not take what was written");
    }
    if (m_connection) {
        NoticeLoss();
    }
}

void CQuentaHandler::NoticeLoss() {
    if (m_isOpen && !m_connection->IsConnected()) {
        m_isOpen = false;
        ReportFailure("port " + std::to_string(m_portNumber) + " of the multiplexer (" +
                      std::string(QuentaPortName(m_portNumber)) +
                      "): " + m_connection->LossReason());
    }
}

bool CQuentaHandler::SetDevice(const std::string& device) {
    if (m_isOpen || !Core::Utilities::ParseInt(device, m_portNumber)) {
        return false;
    }
    m_connection.reset(); // it was to the port of before
    return true;
}

bool CQuentaHandler::SetReadTimeout(Core::Time timeout) {
    m_readTimeout = timeout;
    return true;
}

bool CQuentaHandler::SetBaudRate(std::int32_t baud) {
    Drain();
    m_unsentBaudRate = baud;
    return m_portNumber == kNotSet || SendBaudRate();
}

bool CQuentaHandler::SendBaudRate() {
    CQuentaMPI multiplexer(m_rpcPort);
    if (!multiplexer.Open() || !multiplexer.SetPortConfig(m_portNumber, *m_unsentBaudRate)) {
        deprintf("Cannot set port %d of the multiplexer to %d baud: %s\n",
                 static_cast<int>(m_portNumber), static_cast<int>(*m_unsentBaudRate),
                 multiplexer.LastError().c_str());
        return false;
    }
    m_unsentBaudRate.reset();
    return true;
}

int CQuentaHandler::FileDescriptor() const {
    return m_connection ? m_connection->Descriptor() : -1;
}
