#include "IO/InputOutputHandler.h"

#include <algorithm>
#include <utility>

std::string CInputOutputHandler::Read() {
    if (m_readSize <= 0) {
        return Read(0);
    }
    return Read(std::min(m_readSize, kMaxReadSize));
}

bool CInputOutputHandler::Write(const std::string&) {
    return true;
}

std::int32_t CInputOutputHandler::Write(const std::vector<std::uint8_t>&) {
    return 1;
}

bool CInputOutputHandler::SetReadSize(std::int32_t readSize) {
    m_readSize = readSize;
    return true;
}

void CInputOutputHandler::SendBreak(double) {
}

bool CInputOutputHandler::SetBaudRate(std::int32_t) {
    return true;
}

std::string CInputOutputHandler::TakeFailure() {
    return std::exchange(m_untoldFailure, std::string());
}

void CInputOutputHandler::ReportFailure(const std::string& reason) {
    if (reason != m_lastFailure) {
        m_lastFailure = reason;
        m_untoldFailure = reason;
    }
}

void CInputOutputHandler::ReportSuccess() {
    m_lastFailure.clear();
}
