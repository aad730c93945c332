// One logical port of the port multiplexer: a Unix stream socket named after its number.
#pragma once

#include "platform/WriteTail.h"

#include <cstddef>
#include <cstdint>
#include <string>

/// The connection to a port. Nothing here waits for the multiplexer but the timed read. Port 0 is
/// no port: it is always connected, takes every write and gives no bytes.
class QuentaPort {
public:
    /// The multiplexer's sockets have this path, followed by the port's number.
    static constexpr const char* kSocketPrefix = "/tmp/tty_socket_";

    static constexpr Core::Time kDrainLimit = Core::Time::FromMilliseconds(1000);

    explicit QuentaPort(std::int32_t portNumber, std::string socketPrefix = kSocketPrefix);
    ~QuentaPort() { Close(); }
    QuentaPort(const QuentaPort&) = delete;
    QuentaPort& operator=(const QuentaPort&) = delete;

    bool IsConnected() const { return m_portNumber == 0 || m_descriptor >= 0; }

    /// True at once when connected already; false, told on standard error, when it cannot be done
    /// now: there is no such socket, nobody listens, or too many wait to be let in.
    bool Connect();
    bool EnsureConnected() { return IsConnected() || Connect(); }
    void Close();

    /// Writes in order; what cannot go at once waits. False when not connected, when the connection
    /// is lost by it, or when too much waits already (then nothing of these bytes is taken).
    bool Write(const std::uint8_t* bytes, std::size_t count);
    /// Goes on with what waits; the connection is lost when that fails or stalls.
    void ContinueWriting();
    bool HasWaitingBytes() const { return !m_tail.IsEmpty(); }
    /// Waits, at most kDrainLimit, until the multiplexer has taken all that was written; false when
    /// it has not by then, or when the connection is gone.
    bool Drain();

    /// Reads what is there, up to `length` bytes; `count` says how many that were, perhaps none.
    /// False when not connected or on an error; the end of the stream reads as no bytes. Both the
    /// end and an error close the connection.
    bool Read(std::uint8_t* buffer, std::size_t length, std::size_t& count);
    /// The same, but waits, at most for the time-out, while nothing is there.
    bool Read(std::uint8_t* buffer, std::size_t length, int timeoutMilliseconds,
              std::size_t& count);

    /// -1 when not connected.
    int Descriptor() const { return m_descriptor; }

    /// Why the connection was lost, when it was.
    const std::string& LossReason() const { return m_lossReason; }

private:
    bool FailToConnect(const char* what);
    void Lose(const std::string& reason);
    bool Took(Core::IO::WriteTail::EResult result);
    bool HasUntakenBytes() const;
    void NoticeEnd();

    std::int32_t m_portNumber;
    std::string m_socketPrefix;
    int m_descriptor = -1;
    Core::IO::WriteTail m_tail;
    std::string m_lossReason;
};
