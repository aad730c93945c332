#include "platform/MPISocketClient.h"

#include "JSONText.h"
#include "JSONValue.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <limits>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <utility>

namespace {

bool ToAddress(const std::string& host, std::uint16_t port, sockaddr_in& address) {
    address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    const std::string numbers = host == "localhost" ? "127.0.0.1" : host;
    return inet_pton(AF_INET, numbers.c_str(), &address.sin_addr) == 1;
}

/// What has become of an attempt to connect, as an errno value.
int ConnectOutcome(int descriptor) {
    int outcome = 0;
    socklen_t length = sizeof outcome;
    return getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &outcome, &length) == 0 ? outcome : errno;
}

/// Connects within the time-out; returns 0, or the errno value that says why not.
int ConnectWithin(Core::Time timeout, const MPISocketConnectionC& connection,
                  const sockaddr_in& address) {
    const Core::MonotonicTime deadline = Core::MonotonicTime::Now() + timeout;
    const auto* generic = reinterpret_cast<const sockaddr*>(&address);
    if (connect(connection.Descriptor(), generic, sizeof address) == 0) {
        return 0;
    }
    if (errno != EINPROGRESS) {
        return errno;
    }
    return connection.Wait(POLLOUT, deadline) ? ConnectOutcome(connection.Descriptor()) : ETIMEDOUT;
}

std::string RequestText(std::int32_t id, const std::string& method, const BListC& params) {
    std::string text = R"({"jsonrpc":"2.0","id":)";
    JSONText::AppendInteger(text, id);
    text += R"(,"method":)";
    JSONText::AppendString(text, method);
    text += R"(,"params":)";
    JSONValue::Append(text, params);
    text += '}';
    return text;
}

std::string DescribeError(const BAtomC& failure) {
    const BDictionaryC* members = failure.AsDictionary();
    const BAtomC* code = members == nullptr ? nullptr : members->Find("code");
    const BAtomC* message = members == nullptr ? nullptr : members->Find("message");
    std::string text = "error";
    if (code != nullptr && code->AsInteger()) {
        text += " " + std::to_string(*code->AsInteger());
    }
    if (message != nullptr && message->AsText() != nullptr) {
        text += ": " + *message->AsText();
    }
    return text;
}

} // namespace

bool MPISocketClientC::Connect(const std::string& host, std::uint16_t port, std::string& error) {
    Close();
    sockaddr_in address;
    if (!ToAddress(host, port, address)) {
        error = host + ": not an IPv4 address in numbers";
        return false;
    }
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    int failure = errno;
    if (descriptor >= 0) {
        m_connection.emplace(descriptor);
        failure = ConnectWithin(m_timeout, *m_connection, address);
        if (failure == 0) {
            return true;
        }
        Close();
    }
    error = host + ":" + std::to_string(port) + ": " + std::strerror(failure);
    return false;
}

bool MPISocketClientC::Call(const std::string& method, const BListC& params, BAtomC& result,
                            std::string& error) {
    if (!m_connection) {
        error = "not connected";
        return false;
    }
    m_lastId = m_lastId == std::numeric_limits<std::int32_t>::max() ? 1 : m_lastId + 1;
    m_connection->Queue(RequestText(m_lastId, method, params));
    const EOutcome outcome = Exchange(result, error);
    if (outcome == EOutcome::broken) {
        Close();
    }
    return outcome == EOutcome::result;
}

MPISocketClientC::EOutcome MPISocketClientC::Exchange(BAtomC& result, std::string& error) {
    const Core::MonotonicTime deadline = Core::MonotonicTime::Now() + m_timeout;
    while (true) {
        const EOutcome outcome = TakeAnswer(result, error);
        if (outcome != EOutcome::other) {
            return outcome;
        }
        if (!Transfer(deadline, error)) {
            error = error.empty() ? "no answer within the time-out" : error;
            return EOutcome::broken;
        }
    }
}

/// Sends and receives what can be now. False, with an empty `error`, when the time has run out.
bool MPISocketClientC::Transfer(Core::MonotonicTime deadline, std::string& error) {
    error.clear();
    const int events = m_connection->HasWaitingBytes() ? POLLIN | POLLOUT : POLLIN;
    if (!m_connection->Wait(static_cast<short>(events), deadline)) {
        return false;
    }
    if (!m_connection->Receive() || !m_connection->Send()) {
        error = errno == 0 ? "the peer has closed the connection" : std::strerror(errno);
        return false;
    }
    return true;
}

std::optional<MPISocketClientC::SCallback> MPISocketClientC::NextCallback(Core::Time timeout,
                                                                          std::string& error) {
    error = m_connection ? "" : "not connected";
    const Core::MonotonicTime deadline = Core::MonotonicTime::Now() + timeout;
    while (m_connection) {
        BAtomC ignored;
        if (TakeAnswer(ignored, error) == EOutcome::broken) {
            Close();
            break;
        }
        if (!m_callbacks.empty()) {
            SCallback callback = std::move(m_callbacks.front());
            m_callbacks.pop_front();
            return callback;
        }
        if (!Transfer(deadline, error)) {
            if (!error.empty()) {
                Close();
            }
            break;
        }
    }
    return std::nullopt;
}

bool MPISocketClientC::KeepCallback(const BDictionaryC& members) {
    const BAtomC* const method = members.Find("method");
    if (method == nullptr || method->AsText() == nullptr) {
        return false;
    }
    const BAtomC* const params = members.Find("params");
    m_callbacks.push_back({*method->AsText(), params == nullptr ? BAtomC() : *params});
    if (m_callbacks.size() > kMaxCallbacks) {
        m_callbacks.pop_front();
    }
    return true;
}

MPISocketClientC::EOutcome MPISocketClientC::TakeAnswer(BAtomC& result, std::string& error) {
    EOutcome outcome = EOutcome::other;
    std::string line;
    while (outcome == EOutcome::other) {
        switch (m_connection->TakeLine(line)) {
        case MPISocketConnectionC::ELine::partial:
            return EOutcome::other;
        case MPISocketConnectionC::ELine::tooLong:
            error = "the answer is longer than 1 MiB";
            return EOutcome::broken;
        case MPISocketConnectionC::ELine::whole:
            outcome = Judge(line, result, error);
        }
    }
    return outcome;
}

MPISocketClientC::EOutcome MPISocketClientC::Judge(const std::string& line, BAtomC& result,
                                                   std::string& error) {
    const std::optional<BAtomC> message = JSONValue::Read(line);
    const BDictionaryC* members = message ? message->AsDictionary() : nullptr;
    if (members == nullptr) {
        error = "the answer is not a JSON object";
        return EOutcome::broken;
    }
    if (KeepCallback(*members)) {
        return EOutcome::other;
    }
    const BAtomC* id = members->Find("id");
    const BAtomC* failure = members->Find("error");
    // A peer that could not tell which request was wrong answers for none; there is only this one.
    const bool isError = failure != nullptr && !failure->IsNull();
    if (id == nullptr || (id->AsInteger() != m_lastId && !(isError && id->IsNull()))) {
        return EOutcome::other;
    }
    if (isError) {
        error = DescribeError(*failure);
        return EOutcome::error;
    }
    const BAtomC* answered = members->Find("result");
    if (answered == nullptr) {
        error = "the answer has neither result nor error";
        return EOutcome::broken;
    }
    result = *answered;
    return EOutcome::result;
}
