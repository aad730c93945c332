#include "hub/gpsd/GPSDServer.h"

#include "platform/DebugPrint.h"

#include <algorithm>
#include <unistd.h>

namespace Hub {

using namespace GPSD;

namespace {

/// So many connections are accepted in one pass.
constexpr int kMaxAccepts = 32;
constexpr int kBacklog = 64;
/// So much of what a client has sent is told back to it.
constexpr std::size_t kMaxQuoted = 80;

} // namespace

CGPSDServer::~CGPSDServer() {
    for (const auto& client : m_clients) {
        m_sockets.Remove(client.get());
    }
}

void CGPSDServer::Start(const std::string& address, std::uint16_t port) {
    m_listener.Start(address, port, kBacklog, [](const std::string& why) {
        deprintf("gpsd: %s. A gpsd that runs here itself must be stopped, or another port chosen "
                 "(--gpsd-port).\n",
                 why.c_str());
    });
}

// --- the main loop

void CGPSDServer::Service(bool readable, bool) {
    m_listener.TryAgain();
    if (readable) {
        Accept();
    }
    TellSilence();
}

void CGPSDServer::Accept() {
    for (int i = 0; i < kMaxAccepts; ++i) {
        const int descriptor = m_listener.Accept();
        if (descriptor < 0) {
            return;
        }
        if (m_clients.size() >= kMaxClients) {
            ::close(descriptor);
            continue;
        }
        m_clients.push_back(std::make_unique<CClient>(descriptor, *this));
        m_clients.back()->Tell(LineOf(VersionReport()));
        m_sockets.Add(m_clients.back().get());
    }
}

void CGPSDServer::AfterService() {
    ShareOutWork();
    EndPass();
    LimitMemory();
    RemoveEnded();
}

/// One request for each client in turn, until nothing is left to do or the time is up.
void CGPSDServer::ShareOutWork() {
    const Core::MonotonicTime end = Core::MonotonicTime::Now() + kBudget;
    std::size_t withoutWork = 0;
    while (withoutWork < m_clients.size()) {
        m_nextClient = (m_nextClient + 1) % m_clients.size();
        CClient& client = *m_clients[m_nextClient];
        const bool hasWorked = client.HasWork() && client.Step();
        withoutWork = hasWorked ? 0 : withoutWork + 1;
        if (hasWorked && Core::MonotonicTime::Now() >= end) {
            return;
        }
    }
}

void CGPSDServer::EndPass() {
    for (const auto& client : m_clients) {
        if (!client->HasEnded()) {
            client->Flush();
        }
    }
}

void CGPSDServer::LimitMemory() {
    const auto held = [](const auto& client) {
        return client->HasEnded() ? 0 : client->HeldBytes();
    };
    std::size_t sum = 0;
    for (const auto& client : m_clients) {
        sum += held(client);
    }
    while (sum > kMaxHeld) {
        const auto largest =
            std::max_element(m_clients.begin(), m_clients.end(),
                             [&](const auto& a, const auto& b) { return held(a) < held(b); });
        sum -= held(*largest);
        (*largest)->GiveUp();
    }
}

void CGPSDServer::RemoveEnded() {
    for (const auto& client : m_clients) {
        if (client->HasEnded()) {
            m_sockets.Remove(client.get());
        }
    }
    std::erase_if(m_clients, [](const auto& client) { return client->HasEnded(); });
}

// --- requests

std::string CGPSDServer::Answer(const SRequest& request, SPolicy& policy) const {
    const auto activated = m_device.Activated();
    const auto error = [](const std::string& message) { return LineOf(ErrorReport(message)); };
    switch (request.kind) {
    case ERequest::version:
        return LineOf(VersionReport());
    case ERequest::devices:
        return LineOf(DevicesReport(activated));
    case ERequest::device:
        if (request.argument) {
            return error("The receiver is set up by its daemon alone");
        }
        return activated ? LineOf(DeviceReport(activated)) : error("There is no device now");
    case ERequest::watch:
        if (request.argument) {
            if (const std::string why = Change(policy, *request.argument); !why.empty()) {
                return error("Invalid WATCH: " + why);
            }
        }
        return LineOf(DevicesReport(activated)) + LineOf(WatchReport(policy));
    case ERequest::poll:
        return LineOf(m_device.Poll());
    case ERequest::unknown:
    case ERequest::fromBrowser:
        break;
    }
    return error("Unrecognized request '" + std::string(request.text.substr(0, kMaxQuoted)) + "'");
}

// --- reports

template <class TCondition>
bool CGPSDServer::AnyPolicy(const TCondition& condition) const {
    return std::any_of(m_clients.begin(), m_clients.end(),
                       [&](const auto& client) { return condition(client->Policy()); });
}

bool CGPSDServer::AnyWatchesJSON() const {
    return AnyPolicy([](const SPolicy& policy) { return policy.WatchesJSON(); });
}

void CGPSDServer::TellReport(const std::optional<TReport>& report) {
    if (!report || !AnyWatchesJSON()) {
        return;
    }
    const std::string line = LineOf(*report);
    for (const auto& client : m_clients) {
        if (client->Policy().WatchesJSON()) {
            client->Tell(line);
        }
    }
}

void CGPSDServer::TellSentences() {
    if (!AnyPolicy([](const SPolicy& policy) { return policy.WatchesNMEA(); })) {
        return;
    }
    const std::string sentences = m_device.Sentences();
    for (const auto& client : m_clients) {
        if (client->Policy().WatchesNMEA()) {
            client->Tell(sentences);
        }
    }
}

/// Clients keep showing the last position for as long as nothing is said.
void CGPSDServer::TellSilence() {
    if (m_device.IsLive() || !m_nextSilence.HasExpired()) {
        return;
    }
    m_nextSilence = Core::MonotonicTime::Now() + kSilencePeriod;
    TellReport(NoPositionReport());
    TellSentences();
}

void CGPSDServer::NewMessage(const SSolution& solution) {
    if (m_device.Take(solution)) {
        TellReport(DeviceReport(m_device.Activated()));
    }
    if (!m_device.IsLive()) {
        return;
    }
    if (AnyWatchesJSON()) {
        TellReport(m_device.Position());
        TellReport(m_device.NoiseOfSolution());
    }
    TellSentences();
}

void CGPSDServer::NewMessage(const SSky& sky) {
    TellReport(m_device.Take(sky));
}

void CGPSDServer::NewMessage(const SSentence& sentence) {
    for (const auto& client : m_clients) {
        // Who watches raw bytes gets it among them.
        if (client->Policy().WatchesNMEA() && client->Policy().WatchesRaw() == 0) {
            client->Tell(sentence.sentence + "\r\n");
        }
    }
    TellReport(m_device.Take(sentence));
}

void CGPSDServer::NewMessage(const SRawBlock& block) {
    std::string text;
    if (!AnyPolicy([](const SPolicy& policy) { return policy.WatchesRaw() == 1; })) {
        m_rawTexts.clear(); // what was held back would not go with what comes later
    } else if (m_rawTexts.contains(block.name) || m_rawTexts.size() < kMaxPorts) {
        text = m_rawTexts[block.name].Add(block.bytes);
    }
    for (const auto& client : m_clients) {
        const int raw = client->Policy().WatchesRaw();
        if (raw > 0) {
            client->Tell(raw == 1 ? text : block.bytes);
        }
    }
}

void CGPSDServer::ProcessGone(TProcess process) {
    if (m_device.TakeEnd(process)) {
        TellReport(DeviceReport(std::nullopt));
        m_nextSilence = Core::MonotonicTime();
    }
}

} // namespace Hub
