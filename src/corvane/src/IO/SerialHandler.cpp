#include "IO/SerialHandler.h"

CSerialHandler::CSerialHandler() {
    m_serial = std::make_unique<Core::IO::Serial>(m_device, m_baud, m_readTimeout);
}

bool CSerialHandler::Open() {
    const bool isOpen = Tell(m_serial->Open());
    if (isOpen) {
        ReportSuccess();
    }
    return isOpen;
}

bool CSerialHandler::Close() {
    m_serial->Close();
    return true;
}

bool CSerialHandler::IsOpen() const {
    return m_serial->IsOpen();
}

std::string CSerialHandler::Read(std::int32_t count) {
    if (!m_serial->IsOpen()) {
        return {};
    }
    std::string bytes = m_serial->Read(count);
    Tell(m_serial->IsOpen());
    return bytes;
}

bool CSerialHandler::Write(const std::string& text) {
    return m_serial->IsOpen() && Tell(m_serial->Write(text));
}

std::int32_t CSerialHandler::Write(const std::vector<std::uint8_t>& bytes) {
    return m_serial->IsOpen() && Tell(m_serial->Write(bytes)) ? 1 : 0;
}

bool CSerialHandler::SetDevice(const std::string& device) {
    m_device = device;
    m_serial = std::make_unique<Core::IO::Serial>(m_device, m_baud, m_readTimeout);
    return true;
}

bool CSerialHandler::SetReadTimeout(Core::Time timeout) {
    m_readTimeout = timeout;
    m_serial->SetTimeout(timeout);
    return true;
}

void CSerialHandler::SendBreak(double seconds) {
    if (m_serial->IsOpen() || Open()) {
        Tell(m_serial->SendBreak(static_cast<float>(seconds)));
    }
}

bool CSerialHandler::SetBaudRate(std::int32_t baud) {
    m_baud = baud;
    Tell(m_serial->SetBaudRate(baud));
    return true;
}

int CSerialHandler::FileDescriptor() const {
    return m_serial->Descriptor();
}

bool CSerialHandler::HasWaitingBytes() const {
    return m_serial->HasWaitingBytes();
}

void CSerialHandler::ContinueWriting() {
    if (m_serial->IsOpen()) {
        Tell(m_serial->ContinueWriting());
    }
}

void CSerialHandler::Drain() {
    if (m_serial->IsOpen()) {
        Tell(m_serial->Drain());
    }
}

bool CSerialHandler::Tell(bool hasSucceeded) {
    if (!hasSucceeded) {
        ReportFailure(m_serial->LastError());
    }
    return hasSucceeded;
}
