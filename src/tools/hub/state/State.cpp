#include "hub/state/State.h"

#include <algorithm>

namespace Hub {

namespace {

std::size_t SizeOf(const SStatus& status) {
    return status.name.size() + status.key.size() + status.value.size();
}

std::size_t SizeOf(const SEvent& event) {
    return event.name.size() + event.text.size();
}

} // namespace

template <class T>
SKept<T> CState::Keep(const T& message) {
    ++m_messages;
    return {message, Core::MonotonicTime::Now()};
}

/// Counts what there is no room for.
template <class TMap>
bool CState::HasRoom(const TMap& map, const typename TMap::key_type& key, std::size_t most) {
    if (map.size() < most || map.contains(key)) {
        return true;
    }
    ++m_refused;
    return false;
}

void CState::NewMessage(const SRegistration& registration) {
    ++m_messages;
    ForgetPredecessor(registration);
    MakeRoomForProcess();
    if (!HasRoom(m_processes, registration.sender, kMostProcesses)) {
        return;
    }
    SProcess& process = m_processes[registration.sender];
    if (process.names.empty()) {
        process.since = registration.time;
    }
    process.process = registration.process;
    process.pid = registration.pid;
    process.version = registration.version;
    if (process.names.size() < kMostPorts && std::find(process.names.begin(), process.names.end(),
                                                       registration.name) == process.names.end()) {
        process.names.push_back(registration.name);
    }
}

/// A program that comes back tells its whole state anew; what an earlier run of it told, but this
/// one does not, is no longer so.
void CState::ForgetPredecessor(const SRegistration& registration) {
    std::vector<TProcess> gone;
    for (const auto& [sender, process] : m_processes) {
        if (!process.isConnected && process.process == registration.process) {
            gone.push_back(sender);
        }
    }
    for (const TProcess sender : gone) {
        Forget(sender);
    }
}

/// Whatever came and went before, the program that is there now is seen.
void CState::MakeRoomForProcess() {
    if (m_processes.size() < kMostProcesses) {
        return;
    }
    const auto gone = std::find_if(m_processes.begin(), m_processes.end(),
                                   [](const auto& entry) { return !entry.second.isConnected; });
    if (gone != m_processes.end()) {
        Forget(gone->first);
    }
}

void CState::Forget(TProcess process) {
    m_processes.erase(process);
    std::erase_if(m_statuses, [&](const auto& entry) {
        const SStatus& status = entry.second.message;
        const bool isOfProcess = status.sender == process;
        m_statusBytes -= isOfProcess ? SizeOf(status) : 0;
        return isOfProcess;
    });
    std::erase_if(m_diagnostics,
                  [&](const auto& entry) { return entry.second.diagnostic.sender == process; });
}

void CState::NewMessage(const SStatus& status) {
    const TStatusKey key(status.name, status.key);
    const SKept<SStatus>* const before = FindStatus(status.name, status.key);
    const std::size_t bytes =
        m_statusBytes + SizeOf(status) - (before == nullptr ? 0 : SizeOf(before->message));
    if (bytes > kMostStatusBytes) {
        ++m_refused;
    } else if (HasRoom(m_statuses, key, kMostStatuses)) {
        m_statusBytes = bytes;
        m_statuses.insert_or_assign(key, Keep(status));
    }
}

void CState::NewMessage(const SDataLine& line) {
    const SKept<SDataLine> kept = Keep(line);
    if (!m_logs.Add(line, kept.arrived)) {
        ++m_refused;
    }
}

void CState::NewMessage(const SEvent& event) {
    ++m_messages;
    const std::uint64_t number = m_events.empty() ? 1 : m_events.back().number + 1;
    m_events.push_back({number, event});
    m_eventBytes += SizeOf(event);
    while (m_events.size() > kMostEvents || m_eventBytes > kMostEventBytes) {
        m_eventBytes -= SizeOf(m_events.front().event);
        m_events.pop_front();
    }
    ++m_eventCounts[event.level == EEventLevel::error ? 1 : 0];
}

void CState::NewMessage(const SRawBlock& block) {
    ++m_messages;
    m_rawBytes += block.bytes.size();
}

void CState::NewMessage(const SSolution& solution) {
    m_solution = Keep(solution);
    m_isPublisherConnected = true;
    ++m_solutions;
}

void CState::NewMessage(const SSky& sky) {
    m_sky = Keep(sky);
}

void CState::NewMessage(const SBase& base) {
    m_base = Keep(base);
}

void CState::NewMessage(const SReference&) {
    ++m_messages;
}

void CState::NewMessage(const SSentence& sentence) {
    const SKept<SMessage> moment = Keep(SMessage(sentence));
    const std::optional<double> before = m_view.Time();
    m_view.Add(sentence);
    if (m_view.Time() != before) {
        m_viewMoment = moment;
    }
}

void CState::NewMessage(const SGeoid& geoid) {
    m_geoid = Keep(geoid);
}

void CState::NewMessage(const SDiagnostic& diagnostic) {
    ++m_messages;
    const TDiagnosticKey key(diagnostic.name, diagnostic.code, diagnostic.sub);
    if (!diagnostic.isRaised) {
        m_diagnostics.erase(key);
    } else if (HasRoom(m_diagnostics, key, kMostDiagnostics)) {
        const auto [entry, isNew] = m_diagnostics.try_emplace(key);
        if (isNew) {
            entry->second.since = diagnostic.time;
        }
        entry->second.diagnostic = diagnostic;
    }
}

void CState::NewMessage(const SActivity& activity) {
    const SKept<SActivity> kept = Keep(activity);
    if (!HasRoom(m_ports, activity.name, kMostPorts)) {
        return;
    }
    SPort& port = m_ports[activity.name];
    port.last = kept;
    port.received += activity.received;
    port.sentences += activity.sentences;
    if (activity.received > 0) {
        port.lastBytes = kept.arrived;
    }
}

void CState::ProcessGone(TProcess process) {
    const auto found = m_processes.find(process);
    if (found != m_processes.end()) {
        found->second.isConnected = false;
    }
    if (m_solution && m_solution->message.sender == process) {
        m_isPublisherConnected = false;
    }
}

const SKept<SStatus>* CState::FindStatus(const std::string& name, const std::string& key) const {
    const auto found = m_statuses.find({name, key});
    return found == m_statuses.end() ? nullptr : &found->second;
}

std::optional<double> CState::Geoid() const {
    return m_geoid ? std::optional(m_geoid->message.separation) : std::nullopt;
}

} // namespace Hub
