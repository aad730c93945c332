// Calls of remote procedures over TCP: JSON-RPC 2.0, one JSON object a line.
#pragma once

#include "platform/BAtom.h"
#include "platform/MPISocketConnection.h"
#include "platform/Time.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>

/// A client that makes one call at a time and waits for its answer, at most for the time-out. After
/// an answer that never came or made no sense it is no longer connected.
class MPISocketClientC {
public:
    /// Unless told otherwise, of connecting, and of a call from its first byte to the last of its
    /// answer.
    static constexpr Core::Time kTimeout = Core::Time::FromMilliseconds(1000);

    void SetTimeout(Core::Time timeout) { m_timeout = timeout; }

    /// `host` is an IPv4 address in numbers, or "localhost", which is 127.0.0.1: no name service is
    /// asked, since that could wait. False, and the reason in `error`, otherwise.
    bool Connect(const std::string& host, std::uint16_t port, std::string& error);
    void Close() { m_connection.reset(); }
    bool IsConnected() const { return m_connection.has_value(); }

    /// False, and the reason in `error`, when no result came; `result` is unchanged then. An error
    /// that the server answered is told with its code and message.
    bool Call(const std::string& method, const BListC& params, BAtomC& result, std::string& error);

    /// A call that the server made of itself, which wants no answer.
    struct SCallback {
        std::string method;
        BAtomC params;
    };

    /// The next callback, waited for at most the time-out; none, with an empty `error`, when it did
    /// not come in time. Callbacks that came with an answer are kept, the last kMaxCallbacks.
    std::optional<SCallback> NextCallback(Core::Time timeout, std::string& error);
    static constexpr std::size_t kMaxCallbacks = 1000;

private:
    enum class EOutcome {
        other,  ///< not the answer: wait on
        result, ///< the answer
        error,  ///< an answer that is an error
        broken, ///< no answer will come on this connection
    };

    EOutcome Exchange(BAtomC& result, std::string& error);
    EOutcome TakeAnswer(BAtomC& result, std::string& error);
    EOutcome Judge(const std::string& line, BAtomC& result, std::string& error);
    bool KeepCallback(const BDictionaryC& members);
    bool Transfer(Core::MonotonicTime deadline, std::string& error);

    std::optional<MPISocketConnectionC> m_connection;
    Core::Time m_timeout = kTimeout;
    std::int32_t m_lastId = 0;
    std::deque<SCallback> m_callbacks;
};
