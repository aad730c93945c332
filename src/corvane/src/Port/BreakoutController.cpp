#include "Port/BreakoutController.h"

#include "IO/InputOutputHandler.h"
#include "platform/DebugPrint.h"
#include "platform/Time.h"

#include <array>
#include <string>

namespace {

constexpr std::int32_t kZQ2Baud = 115200;
/// The speed that a receiver's port falls back to.
constexpr std::int32_t kFallbackBaud = 9600;
constexpr double kBreakSeconds = 0.3;

/// A message of the controller's own protocol that switches the receiver's second port.
constexpr std::array<unsigned char, 16> kZQ2Frame = {
    0x9C, 0xAE, 0x0E, 0x00, 0x80, 0x03, 0x0A, 0x00, 0x02, 0x02, 0x0A, 0x00, 0x02, 0x02, 0x53, 0xFF};

void PauseMicroseconds(std::int64_t microseconds) {
    Core::Sleep(Core::Time::FromNanoseconds(microseconds * 1000));
}

} // namespace

bool BreakoutController::PerformBreakout() {
    switch (m_mode) {
    case none:
        return true;
    case zq2:
        return PerformZQ2();
    case lineBreak:
        return PerformBreak();
    case softBreak:
        return PerformSoftBreak();
    default:
        return false;
    }
}

void BreakoutController::EnsureOpen() {
    if (!m_source.IsOpen()) {
        m_source.Open();
    }
}

bool BreakoutController::PerformZQ2() {
    if (m_source.IsOpen()) {
        m_source.Close();
    }
    m_source.SetBaudRate(kZQ2Baud);
    m_source.Open();
    m_source.Write(std::string(kZQ2Frame.begin(), kZQ2Frame.end()));
    PauseMicroseconds(250'000);
    return true;
}

bool BreakoutController::PerformBreak() {
    EnsureOpen();
    m_source.SendBreak(kBreakSeconds);
    PauseMicroseconds(1'500'000);
    m_source.SendBreak(kBreakSeconds);
    PauseMicroseconds(250'000);
    m_source.SetBaudRate(kFallbackBaud);
    WriteSpeedCommand();
    PauseMicroseconds(1'000'000);
    m_source.Drain(); // closing drops what has not left
    m_source.Close();
    m_source.SetBaudRate(m_baudRate);
    m_source.Open();
    PauseMicroseconds(100'000);
    return m_source.IsOpen();
}

/// The receiver takes "+++" as a request to leave its mode only between silences.
bool BreakoutController::PerformSoftBreak() {
    dprintf("Performing character-based breakout\n");
    EnsureOpen();
    m_source.SetBaudRate(kFallbackBaud);
    PauseMicroseconds(1'500'000);
    WritePlusses("");
    PauseMicroseconds(1'500'000);
    WritePlusses("\r\n");
    PauseMicroseconds(1'500'000);
    m_source.Write("log version\r\n");
    PauseMicroseconds(1'000'000);
    WriteSpeedCommand();
    PauseMicroseconds(100'000);
    m_source.SetBaudRate(m_baudRate);
    PauseMicroseconds(1'000'000);
    m_source.Write("log comconfig\r\n");
    PauseMicroseconds(250'000);
    dprintf("Done\n");
    return true;
}

void BreakoutController::WritePlusses(const char* end) {
    dprintf("Sending +++\n");
    m_source.Write(std::string("+++") + end);
}

void BreakoutController::WriteSpeedCommand() {
    m_source.Write("com thisport " + std::to_string(m_baudRate) + "\r\n");
}
