#include "IO/ReplayHandler.h"

#include "platform/DebugPrint.h"

bool CReplayHandler::Open() {
    if (m_path.empty()) {
        return false;
    }
    m_reader = std::make_unique<CLogFileReader>(m_path);
    if (!m_reader->IsOpen()) {
        m_reader.reset();
        return false;
    }
    m_due = Core::MonotonicTime();
    m_isAtEnd = false;
    return true;
}

bool CReplayHandler::Close() {
    m_reader.reset();
    return true;
}

std::string CReplayHandler::Read(std::int32_t) {
    std::string data;
    double timestamp = 0.0;
    if (!m_reader) {
        return data;
    }
    if (!m_reader->GetNextBinary(timestamp, data)) {
        m_isAtEnd = true;
        return data;
    }
    const double dt = timestamp - m_lastTimestamp;
    if (dt > 0.0 && dt < kLongGap) {
        WaitUntilDue(Core::Time::FromSeconds(dt));
        dprintf("Timestamp=%.3f,  dt=%.3f\n", timestamp, dt);
    } else if (dt != 0.0) {
        m_due = Core::MonotonicTime::Now();
    }
    m_lastTimestamp = timestamp;
    return data;
}

/// The due times add up, not the pauses: what one pause is late by, the next is shorter.
void CReplayHandler::WaitUntilDue(Core::Time span) {
    const Core::MonotonicTime now = Core::MonotonicTime::Now();
    m_due = (m_due.IsZero() ? now : m_due) + span;
    if (m_due > now) {
        Core::Sleep(m_due - now);
    } else if (now - m_due > kMostLateness) {
        m_due = now;
    }
}

bool CReplayHandler::SetDevice(const std::string& path) {
    m_path = path;
    return true;
}

bool CReplayHandler::SetReadTimeout(Core::Time) {
    return true;
}

int CReplayHandler::FileDescriptor() const {
    return m_reader ? m_reader->Descriptor() : -1;
}
