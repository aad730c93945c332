// A serial line on termios: exclusive, raw, at any speed the kernel takes.
#pragma once

#include "platform/Time.h"
#include "platform/WriteTail.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Core::IO {

/// One serial device. Nothing here waits longer than the read time-out, whatever the line does,
/// but a break, which lasts as long as it was ordered to, and the draining of what was written.
class Serial {
public:
    static constexpr Time kDrainLimit = Time::FromMilliseconds(1000);

    /// Does not open the device. `baud` in bits per second.
    Serial(std::string device, std::int32_t baud, Time readTimeout);
    ~Serial();
    Serial(const Serial&) = delete;
    Serial& operator=(const Serial&) = delete;

    /// Opens and configures: 8 data bits, no parity, 1 stop bit, no flow control, no controlling
    /// terminal, locked against other openers; what came in before is thrown away. False, with the
    /// reason in LastError(), otherwise. True when it is open already.
    bool Open();
    void Close();
    bool IsOpen() const { return m_descriptor >= 0; }

    /// What is there at once, up to `count` bytes; waits, at most the time-out, only while nothing
    /// is. Empty on a time-out, and when the line is lost: then IsOpen() is false.
    std::string Read(std::int32_t count);

    /// Writes in order; what cannot go at once waits in the tail. False when the line is closed or
    /// lost, or when the tail has no room (then nothing of `bytes` is taken).
    bool Write(const std::string& bytes);
    bool Write(const std::vector<std::uint8_t>& bytes);

    /// Goes on with what waits; closes the line when it is lost or stalled. True while it is open.
    bool ContinueWriting();
    bool HasWaitingBytes() const { return !m_tail.IsEmpty(); }
    /// How many bytes wait in the tail.
    std::size_t WaitingBytes() const { return m_tail.Size(); }
    /// The speed that the line has, or is given with the next Open().
    std::int32_t BaudRate() const { return m_baud; }

    /// A time-out of zero or less waits for nothing.
    void SetTimeout(Time readTimeout) { m_readTimeout = readTimeout; }

    /// Waits, at most kDrainLimit, until all that was written has left. False when the line is
    /// closed or lost, or when something is still there.
    bool Drain();

    /// Changes the speed at once when open, else with the next Open(). What was written leaves at
    /// the old speed; what does not leave in time is dropped, and the result is false although the
    /// speed has changed. False also when the speed is refused: then the line keeps the one it has.
    bool SetBaudRate(std::int32_t baud);

    /// Holds the line in the break state for `seconds`. Bytes that have not left yet are dropped.
    /// False when the line is closed or has no breaks.
    bool SendBreak(float seconds);

    int Descriptor() const { return m_descriptor; }

    /// Why the last operation failed, "<device>: <reason>"; empty after a success.
    const std::string& LastError() const { return m_lastError; }

private:
    std::string Claim() const;
    void Release();
    bool Succeed();
    bool Fail(const std::string& reason);
    bool Lose(const std::string& reason);
    bool WriteBytes(const std::uint8_t* bytes, std::size_t count);
    bool HasLeftOrWaits(WriteTail::EResult result);
    bool HasUnsentBytes() const;

    std::string m_device;
    std::int32_t m_baud;
    Time m_readTimeout;
    int m_descriptor = -1;
    WriteTail m_tail;
    std::string m_lastError;
};

} // namespace Core::IO
