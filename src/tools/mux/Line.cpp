#include "mux/Line.h"

#include "platform/DebugPrint.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace Mux {

namespace {

/// So many reads in one pass: a device that never falls silent leaves room for the others.
constexpr int kMaxReads = 16;

} // namespace

CLine::CLine(std::string label, const std::string& device, std::int32_t baud, TDeliver deliver)
    : m_label(std::move(label)),
      m_deviceName(device),
      m_baud(baud),
      m_deliver(std::move(deliver)),
      m_device(device.empty() ? nullptr : MakeDevice(device, baud)) {
}

int CLine::Descriptor() const {
    return m_device == nullptr ? -1 : m_device->Descriptor();
}

bool CLine::WantsToWrite() const {
    return m_device != nullptr && m_device->WantsToWrite();
}

bool CLine::IsCongested() const {
    return IsOpen() && m_device->WaitingBytes() >= kCongestion;
}

std::uint64_t CLine::BytesOut() const {
    return m_bytesTaken - (IsOpen() ? m_device->WaitingBytes() : 0);
}

std::size_t CLine::WaitingBytes() const {
    return m_late.Size() + (IsOpen() ? m_device->WaitingBytes() : 0);
}

void CLine::Service(bool readable, bool writable) {
    if (IsOpen()) {
        if (readable) {
            Read();
        }
        if (writable && IsOpen()) {
            m_device->ContinueWriting();
        }
        NoticeLoss();
    } else if (m_device != nullptr && m_nextAttempt.HasExpired()) {
        TryToOpen();
    }
    if (!IsOpen()) {
        Drop(m_late.DropOld(), "the device was away for too long");
    }
    TellDrops();
}

void CLine::TryToOpen() {
    switch (m_device->Open()) {
    case CDevice::EOpening::open:
        BecomeOpen();
        return;
    case CDevice::EOpening::pending:
        return;
    case CDevice::EOpening::failed:
        break;
    }
    m_nextAttempt = Core::MonotonicTime::Now() + kRetry;
    if (m_device->LastError() != m_toldReason) {
        m_toldReason = m_device->LastError();
        deprintf("%s: no device: %s; trying again every 0.5 s\n", m_label.c_str(),
                 m_toldReason.c_str());
    }
}

void CLine::BecomeOpen() {
    deprintf("%s: device %s is open\n", m_label.c_str(), m_deviceName.c_str());
    m_wasOpen = true;
    m_toldReason.clear();
    m_waitingBefore = 0;
    while (m_late.Size() > 0 && IsOpen()) {
        Write(m_late.Take());
    }
}

void CLine::Read() {
    for (int i = 0; i < kMaxReads && IsOpen(); ++i) {
        const std::string bytes = m_device->Read();
        if (bytes.empty()) {
            return;
        }
        m_bytesIn += bytes.size();
        m_deliver(bytes);
    }
}

void CLine::Write(const std::string& piece) {
    if (!IsOpen()) {
        if (!m_late.Add(piece)) {
            Drop(piece.size(), "too much waits for the device, which is away");
        }
        return;
    }
    if (m_device->Write(piece)) {
        m_bytesTaken += piece.size();
    } else {
        Drop(piece.size(), m_device->LastError());
    }
    NoticeLoss();
}

/// To be called whenever the device may have been lost.
void CLine::NoticeLoss() {
    if (IsOpen() || !m_wasOpen) {
        m_waitingBefore = IsOpen() ? m_device->WaitingBytes() : 0;
        return;
    }
    m_wasOpen = false;
    const std::string reason = m_device->LastError();
    deprintf("%s: device lost: %s; trying again every 0.5 s\n", m_label.c_str(), reason.c_str());
    m_bytesTaken -= m_waitingBefore;
    Drop(std::exchange(m_waitingBefore, 0), reason);
    // That its name is gone as well is no news.
    m_toldReason = m_deviceName + ": " + std::strerror(ENOENT);
    m_nextAttempt = Core::MonotonicTime::Now() + kRetry;
}

void CLine::SetDevice(const std::string& device) {
    deprintf("%s: device changed from %s to %s\n", m_label.c_str(),
             m_deviceName.empty() ? "none" : m_deviceName.c_str(),
             device.empty() ? "none" : device.c_str());
    const std::size_t waiting = (IsOpen() ? m_device->WaitingBytes() : 0);
    m_bytesTaken -= waiting;
    Drop(waiting + m_late.Clear(), "the device was changed");
    m_deviceName = device;
    m_device.reset(); // before it is opened again, perhaps by another name
    m_device = device.empty() ? nullptr : MakeDevice(device, m_baud);
    m_wasOpen = false;
    m_toldReason.clear();
    m_nextAttempt = Core::MonotonicTime();
}

bool CLine::SetBaudRate(std::int32_t baud) {
    if (baud <= 0) {
        return false;
    }
    Drop(m_late.Clear(), "the speed was changed while the device was away");
    if (m_device == nullptr) {
        m_baud = baud;
        return true;
    }
    const std::size_t waiting = m_device->WaitingBytes();
    const bool isDone = m_device->SetBaudRate(baud);
    const bool isAccepted = m_device->BaudRate() == baud;
    if (!isDone) {
        deprintf("%s: %d baud: %s\n", m_label.c_str(), static_cast<int>(baud),
                 m_device->LastError().c_str());
    }
    if (!isDone && isAccepted && IsOpen()) {
        m_bytesTaken -= waiting;
        Drop(waiting, m_device->LastError());
    }
    m_baud = m_device->BaudRate();
    NoticeLoss();
    return isAccepted;
}

void CLine::Drop(std::size_t count, const std::string& why) {
    if (count > 0) {
        m_droppedBytes += count;
        m_untoldDrops += count;
        m_whyDropped = why;
    }
}

void CLine::TellDrops() {
    if (m_untoldDrops == 0 || !m_nextDropsTold.HasExpired()) {
        return;
    }
    deprintf("%s: %llu bytes of clients dropped, %llu in all: %s\n", m_label.c_str(),
             static_cast<unsigned long long>(std::exchange(m_untoldDrops, 0)),
             static_cast<unsigned long long>(m_droppedBytes), m_whyDropped.c_str());
    m_nextDropsTold = Core::MonotonicTime::Now() + kDropsTold;
}

} // namespace Mux
