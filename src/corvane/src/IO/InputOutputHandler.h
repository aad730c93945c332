// A byte source: how the receiver's bytes come and go, whatever carries them.
#pragma once

#include "platform/Time.h"

#include <cstdint>
#include <string>
#include <vector>

/// The interface of the four byte sources; the defaults here are those of a source that cannot be
/// written to. The main loop opens it and watches its descriptor, the port handler reads and
/// writes. Nothing here waits for a peer.
class CInputOutputHandler {
public:
    /// However large the read size, one read asks for no more (1 MiB).
    static constexpr std::int32_t kMaxReadSize = 1024 * 1024;

    virtual ~CInputOutputHandler() = default;

    virtual bool Open() = 0;
    virtual bool Close() = 0;
    virtual bool IsOpen() const = 0;

    /// What is there at once, up to `count` bytes; empty when there is nothing or the source
    /// failed.
    virtual std::string Read(std::int32_t count) = 0;
    /// The same with the read size, which is at most kMaxReadSize; 0 and below read nothing.
    virtual std::string Read();

    /// True when the text was written or waits in order to be.
    virtual bool Write(const std::string& text);
    /// 1, not the byte count, on success and 0 otherwise; kept: callers rely on it.
    virtual std::int32_t Write(const std::vector<std::uint8_t>& bytes);

    virtual bool SetDevice(const std::string& device) = 0;
    virtual bool SetReadTimeout(Core::Time timeout) = 0;
    virtual bool SetReadSize(std::int32_t readSize);
    /// Holds a serial line in the break state.
    virtual void SendBreak(double seconds);
    virtual bool SetBaudRate(std::int32_t baud);

    /// -1 while closed.
    virtual int FileDescriptor() const = 0;

    /// True once a source that has an end, a file or a recording, has been read to it.
    virtual bool IsAtEnd() const { return false; }

    /// Whether earlier bytes still wait to be written; no command is taken meanwhile.
    virtual bool HasWaitingBytes() const { return false; }
    /// Goes on with what waits; called once a pass.
    virtual void ContinueWriting() {}

    /// Waits, at most about a second, until what was written has left.
    virtual void Drain() {}

    /// Why the source was lost or cannot be opened, once for each new reason and again after it
    /// was open in between; empty when there is nothing to tell.
    std::string TakeFailure();

protected:
    /// Keeps a reason for TakeFailure() unless it is the one told last.
    void ReportFailure(const std::string& reason);
    /// To be called when the source is open and well: the next failure is news again.
    void ReportSuccess();

private:
    std::int32_t m_readSize = 1;
    std::string m_untoldFailure;
    std::string m_lastFailure;
};
