// Brings a port back that does not speak the receiver's protocol at the expected speed.
#pragma once

#include <cstdint>

class CInputOutputHandler;

/// Four procedures, chosen by the start-up settings. The main port handler has one performed each
/// time it starts; its pauses, up to six seconds, are part of the procedures and hold up the
/// program.
class BreakoutController {
public:
    enum EMode : std::int32_t { none = 0, zq2 = 1, lineBreak = 2, softBreak = 3 };

    /// The byte source is not owned.
    BreakoutController(CInputOutputHandler& source, std::int32_t mode)
        : m_source(source), m_mode(mode) {}

    /// Bits per second: the speed that the port is left at.
    void SetBaudRate(std::int32_t baudRate) { m_baudRate = baudRate; }

    /// False for a mode that does not exist, and when the line break has left the port closed. Any
    /// other failure shows in the port alone.
    bool PerformBreakout();

private:
    bool PerformZQ2();
    bool PerformBreak();
    bool PerformSoftBreak();
    void EnsureOpen();
    void WritePlusses(const char* end);
    void WriteSpeedCommand();

    CInputOutputHandler& m_source;
    std::int32_t m_mode;
    std::int32_t m_baudRate = 0;
};
