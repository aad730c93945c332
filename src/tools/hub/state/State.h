// The latest of everything that programs have told, with its age.
#pragma once

#include "hub/Observer.h"
#include "hub/state/LogRates.h"
#include "hub/state/SkyView.h"
#include "platform/Time.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace Hub {

/// The present moment by both clocks.
struct SNow {
    double wall = 0.0; ///< seconds since the Unix epoch
    Core::MonotonicTime monotonic;

    static SNow Get() { return {Core::UnixTime::Now().AsSeconds(), Core::MonotonicTime::Now()}; }
};

/// A message and when it arrived.
template <class T>
struct SKept {
    T message;
    Core::MonotonicTime arrived;

    /// How many seconds ago it was published. It is at least as old as its arrival, also when the
    /// wall clock has been set back since.
    double Age(const SNow& now) const {
        return std::max({now.wall - message.time, (now.monotonic - arrived).AsSeconds(), 0.0});
    }
};

/// Holds a bounded number of each kind of thing, whatever programs tell; more are counted and
/// dropped.
class CState : public CHubObserver {
public:
    static constexpr std::size_t kMostStatuses = 5000;
    /// Of their names, keys and values together: all of them are shown once a second.
    static constexpr std::size_t kMostStatusBytes = std::size_t{1024} * 1024;
    static constexpr std::size_t kMostDiagnostics = 1000;
    static constexpr std::size_t kMostEvents = 100;
    static constexpr std::size_t kMostEventBytes = std::size_t{256} * 1024;
    static constexpr std::size_t kMostPorts = 100;
    static constexpr std::size_t kMostProcesses = 300;

    struct SProcess {
        std::string process;
        std::int32_t pid = 0;
        std::string version;
        std::vector<std::string> names;
        double since = 0.0; ///< its first registration, seconds since the Unix epoch
        bool isConnected = true;
    };
    struct SRaised {
        SDiagnostic diagnostic;
        double since = 0.0; ///< the first raise that no clear has followed
    };
    struct SNumberedEvent {
        std::uint64_t number; ///< from 1, over the life of the hub
        SEvent event;
    };
    /// Of a port, since the hub runs.
    struct SPort {
        SKept<SActivity> last;
        std::int64_t received = 0;
        std::int64_t sentences = 0;
        Core::MonotonicTime lastBytes; ///< when it has last told of any; zero before
    };
    using TStatusKey = std::pair<std::string, std::string>; ///< name, key
    using TDiagnosticKey = std::tuple<std::string, std::int32_t, std::int32_t>;

    using CHubObserver::NewMessage;
    void NewMessage(const SRegistration& registration) override;
    void NewMessage(const SStatus& status) override;
    void NewMessage(const SDataLine& line) override;
    void NewMessage(const SEvent& event) override;
    void NewMessage(const SRawBlock& block) override;
    void NewMessage(const SSolution& solution) override;
    void SolutionPassedOver(const SSolution&) override {
        ++m_messages;
        ++m_solutions;
    }
    void NewMessage(const SSky& sky) override;
    void NewMessage(const SBase& base) override;
    void NewMessage(const SReference& reference) override;
    void NewMessage(const SSentence& sentence) override;
    void NewMessage(const SGeoid& geoid) override;
    void NewMessage(const SDiagnostic& diagnostic) override;
    void NewMessage(const SActivity& activity) override;
    void ProcessGone(TProcess process) override;
    void MessageRefused() override { ++m_refused; }

    const std::map<TProcess, SProcess>& Processes() const { return m_processes; }
    const std::map<TStatusKey, SKept<SStatus>>& Statuses() const { return m_statuses; }
    /// Null when there is none.
    const SKept<SStatus>* FindStatus(const std::string& name, const std::string& key) const;
    const std::map<TDiagnosticKey, SRaised>& Diagnostics() const { return m_diagnostics; }
    /// Oldest first.
    const std::deque<SNumberedEvent>& Events() const { return m_events; }
    const std::map<std::string, SPort>& Ports() const { return m_ports; }
    const CLogRates& Logs() const { return m_logs; }
    const std::optional<SKept<SSolution>>& Solution() const { return m_solution; }
    const std::optional<SKept<SSky>>& Sky() const { return m_sky; }
    const std::optional<SKept<SBase>>& Base() const { return m_base; }
    std::optional<double> Geoid() const;
    const CSkyView& View() const { return m_view; }
    /// Of the last whole view, once there has been one.
    double ViewAge(const SNow& now) const { return m_viewMoment.Age(now); }

    std::uint64_t MessageCount() const { return m_messages; }
    std::uint64_t RefusedCount() const { return m_refused; }
    /// Those that were passed over as well.
    std::uint64_t SolutionCount() const { return m_solutions; }
    std::uint64_t RawByteCount() const { return m_rawBytes; }
    std::uint64_t EventCount(EEventLevel level) const {
        return m_eventCounts[level == EEventLevel::error ? 1 : 0];
    }

    /// Whether the program that has told the last solution is connected.
    bool IsPublisherConnected() const { return m_isPublisherConnected; }

private:
    template <class T>
    SKept<T> Keep(const T& message);
    template <class TMap>
    bool HasRoom(const TMap& map, const typename TMap::key_type& key, std::size_t most);
    void ForgetPredecessor(const SRegistration& registration);
    void MakeRoomForProcess();
    void Forget(TProcess process);

    std::map<TProcess, SProcess> m_processes;
    std::map<TStatusKey, SKept<SStatus>> m_statuses;
    std::map<TDiagnosticKey, SRaised> m_diagnostics;
    std::deque<SNumberedEvent> m_events;
    std::map<std::string, SPort> m_ports;
    CLogRates m_logs;
    std::optional<SKept<SSolution>> m_solution;
    std::optional<SKept<SSky>> m_sky;
    std::optional<SKept<SBase>> m_base;
    std::optional<SKept<SGeoid>> m_geoid;
    bool m_isPublisherConnected = false;
    CSkyView m_view;
    SKept<SMessage> m_viewMoment;
    std::size_t m_statusBytes = 0;
    std::size_t m_eventBytes = 0;
    std::uint64_t m_messages = 0;
    std::uint64_t m_refused = 0;
    std::uint64_t m_solutions = 0;
    std::uint64_t m_rawBytes = 0;
    std::array<std::uint64_t, 2> m_eventCounts{};
};

} // namespace Hub
