#include "Daemon.h"

#include "Values.h"
#include "WaitingNotice.h"

#include <arpa/inet.h>
#include <array>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace Ctl {

namespace {

constexpr char kAdviceToStart[] =
    "Is it running? \"systemctl status corvane\" tells; --host and --port name another one.";
constexpr char kAdviceToListen[] =
    "It listens on 127.0.0.1 of its machine, unless key rpc_listen of section platform in its "
    "configuration says otherwise.";
constexpr char kAdviceToWait[] =
    "It pauses for up to 10 s while it brings its port to talk: ask for more time with --timeout, "
    "or see \"systemctl status corvane\".";
constexpr char kAdviceToLook[] = "Is it the daemon that listens there?";

} // namespace

std::string CDaemon::Address() const {
    return m_options.host + ":" + std::to_string(m_options.port);
}

bool CDaemon::Resolve() {
    if (!m_addresses.empty()) {
        return true;
    }
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int failure = getaddrinfo(m_options.host.c_str(), nullptr, &hints, &found);
    if (failure != 0) {
        m_output.Fail(EStatus::unreachable,
                      "cannot find the host " + m_options.host + ": " + gai_strerror(failure),
                      "--host takes a name or an IPv4 address.");
        return false;
    }
    for (const addrinfo* each = found; each != nullptr; each = each->ai_next) {
        std::array<char, INET_ADDRSTRLEN> text{};
        const auto* const address = reinterpret_cast<const sockaddr_in*>(each->ai_addr);
        inet_ntop(AF_INET, &address->sin_addr, text.data(), text.size());
        m_addresses.emplace_back(text.data());
    }
    freeaddrinfo(found);
    return true;
}

bool CDaemon::IsLocalAddress() const {
    return m_addresses.front().starts_with("127.");
}

std::optional<bool> CDaemon::IsLocal() {
    return Resolve() ? std::optional(IsLocalAddress()) : std::nullopt;
}

bool CDaemon::Connect() {
    if (m_client.IsConnected()) {
        return true;
    }
    if (!Resolve()) {
        return false;
    }
    m_client.SetTimeout(Core::Time::FromSeconds(m_options.timeout));
    std::string error;
    for (const std::string& address : m_addresses) {
        if (m_client.Connect(address, m_options.port, error)) {
            return true;
        }
    }
    FailToConnect(error);
    return false;
}

void CDaemon::FailToConnect(const std::string& error) {
    m_output.Fail(EStatus::unreachable, "cannot reach the daemon at " + error,
                  IsLocalAddress() ? kAdviceToStart : kAdviceToListen);
}

std::optional<BAtomC> CDaemon::Call(const std::string& method, const BListC& arguments) {
    const CWaitingNotice notice([this] {
        if (!m_hasToldOfWaiting) {
            m_hasToldOfWaiting = true;
            m_output.Note("waiting for the daemon at " + Address() + " ...");
        }
    });
    if (!Connect()) {
        return std::nullopt;
    }
    const Core::MonotonicTime start = Core::MonotonicTime::Now();
    BAtomC result;
    std::string error;
    if (m_client.Call(method, arguments, result, error)) {
        return result;
    }
    if (m_client.IsConnected()) {
        m_output.Fail(EStatus::refused, "the daemon refused " + method + ": " + error);
    } else {
        FailToAnswer(method, error, Core::MonotonicTime::Now() - start);
    }
    return std::nullopt;
}

void CDaemon::FailToAnswer(const std::string& method, const std::string& error, Core::Time waited) {
    if (waited >= Core::Time::FromSeconds(m_options.timeout)) {
        m_output.Fail(EStatus::unreachable,
                      "the daemon at " + Address() + " has not answered " + method + " within " +
                          NumberText(m_options.timeout) + " s",
                      kAdviceToWait);
    } else {
        FailForNonsense(method, error);
    }
}

void CDaemon::FailForNonsense(const std::string& method, const std::string& what) {
    m_output.Fail(EStatus::unreachable,
                  "no sensible answer to " + method + " from " + Address() + ": " + what,
                  kAdviceToLook);
}

std::optional<BListC> CDaemon::CallForList(const std::string& method, const BListC& arguments,
                                           std::size_t count) {
    const std::optional<BAtomC> answer = Call(method, arguments);
    if (!answer) {
        return std::nullopt;
    }
    if (answer->IsNull()) {
        m_output.Fail(EStatus::refused, "the daemon refused " + method + " without a reason");
        return std::nullopt;
    }
    const BListC* const list = answer->AsList();
    if (list == nullptr || list->Size() < count) {
        FailForNonsense(method, "not a list of " + std::to_string(count) + " values or more");
        return std::nullopt;
    }
    return *list;
}

std::optional<std::int32_t> CDaemon::CallForInteger(const std::string& method,
                                                    const BListC& arguments) {
    const std::optional<BListC> answer = CallForList(method, arguments, 1);
    if (answer && !answer->At(0).AsInteger()) {
        FailForNonsense(method, "not a whole number");
    }
    return answer ? answer->At(0).AsInteger() : std::nullopt;
}

std::optional<std::string> CDaemon::CallForText(const std::string& method,
                                                const BListC& arguments) {
    const std::optional<BListC> answer = CallForList(method, arguments, 1);
    if (!answer) {
        return std::nullopt;
    }
    if (answer->At(0).AsText() == nullptr) {
        FailForNonsense(method, "not a text");
        return std::nullopt;
    }
    return answer->GetString(0);
}

bool CDaemon::CallForSuccess(const std::string& method, const BListC& arguments) {
    const std::optional<std::int32_t> answer = CallForInteger(method, arguments);
    if (answer && *answer != 1) {
        m_output.Fail(EStatus::refused, "the daemon could not do it: " + method + " answered " +
                                            std::to_string(*answer));
    }
    return answer == 1;
}

bool CDaemon::NextCallback(Core::Time timeout,
                           std::optional<MPISocketClientC::SCallback>& callback) {
    std::string error;
    callback = m_client.NextCallback(timeout, error);
    if (!m_client.IsConnected()) {
        m_output.Fail(EStatus::unreachable, "the daemon at " + Address() + " is gone: " + error,
                      kAdviceToStart);
    }
    return m_client.IsConnected();
}

} // namespace Ctl
