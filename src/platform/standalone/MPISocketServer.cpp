#include "platform/MPISocketServer.h"

#include "RPCMessage.h"
#include "ServedClient.h"

#include <algorithm>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>

namespace {

/// So many connections are accepted in one pass.
constexpr int kMaxAccepts = 32;

} // namespace

MPISocketServerC::MPISocketServerC(SocketCollectionC& sockets) : m_sockets(sockets) {
}

MPISocketServerC::~MPISocketServerC() {
    for (const auto& client : m_clients) {
        m_sockets.Remove(client.get());
    }
}

void MPISocketServerC::Register(std::unique_ptr<MPICallbackBase> callback) {
    const std::string name = callback->Name();
    m_callbacks[name] = std::move(callback);
}

void MPISocketServerC::Service(bool readable, bool) {
    m_listener.TryAgain();
    if (readable) {
        Accept();
    }
}

void MPISocketServerC::Accept() {
    for (int i = 0; i < kMaxAccepts; ++i) {
        const int descriptor = m_listener.Accept();
        if (descriptor < 0) {
            return;
        }
        if (m_clients.size() >= MaxClients()) {
            ::close(descriptor);
            continue;
        }
        m_clients.push_back(std::make_unique<CServedClient>(descriptor, *this));
        m_sockets.Add(m_clients.back().get());
    }
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
