// Remote procedure calls over TCP: JSON-RPC 2.0, one JSON object a line.
#pragma once

#include "platform/BAtom.h"
#include "platform/Time.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

/// One connection: whole lines in, whole lines out, never waiting for the peer but in Wait().
class MPISocketConnectionC {
public:
    /// A line, without its end, is at most 1 MiB long.
    static constexpr std::size_t kMaxLine = std::size_t{1024} * 1024;

    enum class ELine {
        whole,   ///< taken
        partial, ///< its end has not come yet
        tooLong, ///< the connection is of no further use
    };

    /// Takes over a non-blocking stream socket, which it closes in the end.
    explicit MPISocketConnectionC(int descriptor) : m_descriptor(descriptor) {}
    ~MPISocketConnectionC();
    MPISocketConnectionC(const MPISocketConnectionC&) = delete;
    MPISocketConnectionC& operator=(const MPISocketConnectionC&) = delete;

    int Descriptor() const { return m_descriptor; }

    /// Reads some of what is there. False when the peer has closed (errno 0) or on a failure.
    bool Receive();
    /// Takes the next line that has come whole, without its end.
    ELine TakeLine(std::string& line);

    /// Adds a line, given without its end, to what is to be sent.
    void Queue(const std::string& line);
    /// Sends as much as the peer takes now. False on a failure, told by errno.
    bool Send();
    bool HasWaitingBytes() const { return m_sent < m_output.size(); }

    /// Waits for the `events` of poll(), or for the connection to fail. False when the deadline
    /// has passed instead.
    bool Wait(short events, Core::MonotonicTime deadline) const;

private:
    int m_descriptor;
    std::string m_input;
    std::size_t m_taken = 0;    ///< bytes of the input that were given out as lines
    std::size_t m_searched = 0; ///< bytes of the input before which no untaken line ends
    std::string m_output;
    std::size_t m_sent = 0; ///< bytes of the output that have left
};

/// A client that makes one call at a time and waits for its answer, at most for the time-out. After
/// an answer that never came or made no sense it is no longer connected.
class MPISocketClientC {
public:
    /// Of connecting, and of a call from its first byte to the last of its answer.
    static constexpr Core::Time kTimeout = Core::Time::FromMilliseconds(1000);

    /// `host` is an IPv4 address in numbers, or "localhost", which is 127.0.0.1: no name service is
    /// asked, since that could wait. False, and the reason in `error`, otherwise.
    bool Connect(const std::string& host, std::uint16_t port, std::string& error);
    void Close() { m_connection.reset(); }
    bool IsConnected() const { return m_connection.has_value(); }

    /// False, and the reason in `error`, when no result came; `result` is unchanged then. An error
    /// that the server answered is told with its code and message.
    bool Call(const std::string& method, const BListC& params, BAtomC& result, std::string& error);

private:
    enum class EOutcome {
        other,  ///< not the answer: wait on
        result, ///< the answer
        error,  ///< an answer that is an error
        broken, ///< no answer will come on this connection
    };

    EOutcome Exchange(BAtomC& result, std::string& error);
    EOutcome TakeAnswer(BAtomC& result, std::string& error);
    EOutcome Judge(const std::string& line, BAtomC& result, std::string& error) const;

    std::optional<MPISocketConnectionC> m_connection;
    std::int32_t m_lastId = 0;
};
