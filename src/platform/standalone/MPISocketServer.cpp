#include "platform/MPISocketServer.h"

#include "RPCMessage.h"
#include "ServedClient.h"
#include "platform/Descriptor.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace {

/// So many connections are accepted in one pass.
constexpr int kMaxAccepts = 32;

/// A listening socket; -1, and why in `reason`, when there is none.
int Listen(const std::string& address, std::uint16_t port, int backlog, std::string& reason) {
    sockaddr_in name{};
    name.sin_family = AF_INET;
    name.sin_port = htons(port);
    if (inet_pton(AF_INET, address.c_str(), &name.sin_addr) != 1) {
        reason = "not an IPv4 address in numbers";
        return -1;
    }
    const int descriptor =
        Core::IO::KeepSelectable(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    const int on = 1;
    if (descriptor >= 0 &&
        ::setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == 0 &&
        ::bind(descriptor, reinterpret_cast<const sockaddr*>(&name), sizeof name) == 0 &&
        ::listen(descriptor, backlog) == 0) {
        return descriptor;
    }
    reason = std::strerror(errno);
    if (descriptor >= 0) {
        ::close(descriptor);
    }
    return -1;
}

/// Answers leave at once; a client that vanished without a word is found out after some 90 s, or
/// enough of them would leave no place for others.
void SetUpClient(int descriptor) {
    const auto set = [&](int level, int name, int value) {
        ::setsockopt(descriptor, level, name, &value, sizeof value);
    };
    set(IPPROTO_TCP, TCP_NODELAY, 1);
    set(SOL_SOCKET, SO_KEEPALIVE, 1);
    set(IPPROTO_TCP, TCP_KEEPIDLE, 60);
    set(IPPROTO_TCP, TCP_KEEPINTVL, 10);
    set(IPPROTO_TCP, TCP_KEEPCNT, 3);
}

} // namespace

MPISocketServerC::MPISocketServerC(SocketCollectionC& sockets) : m_sockets(sockets) {
}

MPISocketServerC::~MPISocketServerC() {
    for (const auto& client : m_clients) {
        m_sockets.Remove(client.get());
    }
    if (m_listener >= 0) {
        ::close(m_listener);
    }
}

void MPISocketServerC::Register(std::unique_ptr<MPICallbackBase> callback) {
    const std::string name = callback->Name();
    m_callbacks[name] = std::move(callback);
}

bool MPISocketServerC::StartServer(const std::string& address, std::uint16_t port, int backlog,
                                   std::function<void(const std::string&)> report) {
    m_address = address;
    m_port = port;
    m_backlog = backlog;
    m_report = std::move(report);
    m_hasStarted = true;
    return TryToListen();
}

bool MPISocketServerC::TryToListen() {
    m_nextAttempt = Core::MonotonicTime::Now() + kListenRetry;
    std::string reason;
    m_listener = Listen(m_address, m_port, m_backlog, reason);
    if (m_listener < 0 && reason != m_toldReason) {
        m_report("cannot listen on " + m_address + ":" + std::to_string(m_port) + ": " + reason +
                 "; trying again every 10 s");
    }
    m_toldReason = reason;
    return m_listener >= 0;
}

std::uint16_t MPISocketServerC::Port() const {
    sockaddr_in name{};
    socklen_t length = sizeof name;
    if (::getsockname(m_listener, reinterpret_cast<sockaddr*>(&name), &length) != 0) {
        return 0;
    }
    return ntohs(name.sin_port);
}

/// None while it rests, or the loop would spin on connections that cannot be accepted.
int MPISocketServerC::Descriptor() const {
    return m_acceptAgain.HasExpired() ? m_listener : -1;
}

void MPISocketServerC::Service(bool readable, bool) {
    if (m_hasStarted && m_listener < 0 && m_nextAttempt.HasExpired()) {
        TryToListen();
    }
    if (readable) {
        Accept();
    }
}

void MPISocketServerC::Accept() {
    for (int i = 0; i < kMaxAccepts && AcceptOne(); ++i) {
    }
}

bool MPISocketServerC::AcceptOne() {
    const int descriptor = ::accept4(m_listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (descriptor < 0) {
        if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
            m_acceptAgain = Core::MonotonicTime::Now() + kAcceptRest;
        }
        return errno == ECONNABORTED || errno == EINTR;
    }
    if (m_clients.size() >= MaxClients()) {
        ::close(descriptor);
        return true;
    }
    if (Core::IO::KeepSelectable(descriptor) < 0) {
        return true;
    }
    SetUpClient(descriptor);
    m_clients.push_back(std::make_unique<CServedClient>(descriptor, *this));
    m_sockets.Add(m_clients.back().get());
    return true;
}

std::size_t MPISocketServerC::MaxClients() const {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) {
        return kMaxClients;
    }
    const auto descriptors = static_cast<std::size_t>(
        std::min<rlim_t>(limit.rlim_cur, kMaxClients + kReservedDescriptors));
    return std::max(descriptors, kReservedDescriptors + 1) - kReservedDescriptors;
}

void MPISocketServerC::AfterService() {
    m_pauses.isSpent = false;
    m_writes.isSpent = false;
    ShareOutWork();
    for (const auto& client : m_clients) {
        if (!client->HasEnded()) {
            client->Flush();
        }
    }
    RemoveEnded();
}

/// One request for each client in turn, until nothing is left to do or the time is up.
void MPISocketServerC::ShareOutWork() {
    const Core::MonotonicTime end = Core::MonotonicTime::Now() + kBudget;
    std::size_t withoutWork = 0;
    while (withoutWork < m_clients.size()) {
        m_nextClient = (m_nextClient + 1) % m_clients.size();
        CServedClient& client = *m_clients[m_nextClient];
        const std::size_t heldBefore = client.HeldBytes();
        const bool hasWorked = client.HasWork() && client.Step();
        if (client.HeldBytes() > heldBefore) {
            LimitMemory();
        }
        withoutWork = hasWorked ? 0 : withoutWork + 1;
        if (hasWorked && (Core::MonotonicTime::Now() >= end)) {
            return;
        }
    }
}

/// Who had to wait comes first, or one client's many calls would keep another's single one waiting.
bool MPISocketServerC::MayCall(MPICallbackBase::ECost cost, const MPISocketConnectionC& caller) {
    if (cost == MPICallbackBase::ECost::light) {
        return true;
    }
    STurns& turns = cost == MPICallbackBase::ECost::pause ? m_pauses : m_writes;
    auto& waiting = turns.waiting;
    const bool isNext = waiting.empty() || waiting.front() == &caller;
    if (isNext && !turns.isSpent) {
        turns.isSpent = true;
        return true;
    }
    if (std::find(waiting.begin(), waiting.end(), &caller) == waiting.end()) {
        waiting.push_back(&caller);
    }
    return false;
}

void MPISocketServerC::ForgetTurns(const MPISocketConnectionC& caller) {
    std::erase(m_writes.waiting, &caller);
    std::erase(m_pauses.waiting, &caller);
}

bool MPISocketServerC::Answer(MPISocketConnectionC& caller, std::string_view text,
                              std::string& answer) {
    using namespace RPCMessage;
    const auto parsed = ReadRequest(text);
    if (const auto* const error = std::get_if<SError>(&parsed)) {
        RequestRefused();
        answer = RPCMessage::Answer(BAtomC(), *error);
        return true;
    }
    const SRequest& request = std::get<SRequest>(parsed);
    const auto refuse = [&](int code, const std::string& why) {
        ForgetTurns(caller);
        RequestRefused();
        if (request.id) {
            answer = RPCMessage::Answer(*request.id, SError{code, why});
        }
        return true;
    };
    const auto found = m_callbacks.find(request.method);
    if (found == m_callbacks.end()) {
        return refuse(kUnknownMethod, "unknown method: " + request.method);
    }
    MPICallbackBase& callback = *found->second;
    if (request.hasNamedParams != callback.TakesNamedArguments()) {
        return refuse(kInvalidParams, request.hasNamedParams
                                          ? "the arguments of this method are an array"
                                          : "the arguments of this method are an object");
    }
    if (const std::string why = callback.WhyWrong(request.params); !why.empty()) {
        return refuse(kInvalidParams, why);
    }
    if (const std::string why = callback.WhyNotNow(); !why.empty()) {
        return refuse(kInternalError, why);
    }
    if (!MayCall(callback.Cost(), caller)) {
        return false;
    }
    ForgetTurns(caller);
    m_caller = &caller;
    const BAtomC result = callback.Call(request.params);
    m_caller = nullptr;
    if (request.id) {
        answer = RPCMessage::Answer(*request.id, result);
    }
    return true;
}

std::size_t MPISocketServerC::HeldBytes() const {
    std::size_t held = 0;
    for (const auto& client : m_clients) {
        held += client->HasEnded() ? 0 : client->HeldBytes();
    }
    return held;
}

void MPISocketServerC::LimitMemory() {
    if (HeldBytes() > kMaxHeld) {
        for (const auto& client : m_clients) {
            client->Connection().ReleaseEmptyBuffers();
        }
    }
    while (HeldBytes() > kMaxHeld) {
        const auto held = [](const auto& client) {
            return client->HasEnded() ? 0 : client->HeldBytes();
        };
        const auto largest =
            std::max_element(m_clients.begin(), m_clients.end(),
                             [&](const auto& a, const auto& b) { return held(a) < held(b); });
        (*largest)->GiveUp();
    }
}

void MPISocketServerC::RemoveEnded() {
    for (const auto& client : m_clients) {
        if (client->HasEnded()) {
            ConnectionClosed(client->Connection());
            ForgetTurns(client->Connection());
            m_sockets.Remove(client.get());
        }
    }
    std::erase_if(m_clients, [](const auto& client) { return client->HasEnded(); });
}

/// Callbacks that the rest of the pass has posted leave now.
void MPISocketServerC::EndPass() {
    for (const auto& client : m_clients) {
        if (!client->HasEnded() && client->Connection().HasWaitingBytes()) {
            client->Flush();
        }
    }
}

void MPISocketServerC::Idle() {
    for (const auto& client : m_clients) {
        client->ReleaseMemory();
    }
}
