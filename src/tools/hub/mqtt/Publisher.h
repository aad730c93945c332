// Publishes to an MQTT broker what docs/mqtt.md says.
#pragma once

#include "hub/Observer.h"
#include "hub/Settings.h"
#include "hub/StatusChanges.h"
#include "hub/mqtt/Connection.h"
#include "hub/state/State.h"
#include "platform/Time.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>

namespace Hub {

/// Nothing but an outbox stands between the main loop and the connection, so that no broker is ever
/// waited for. It hears of a message after the state.
class CMQTTPublisher : public CHubObserver {
public:
    static constexpr Core::Time kStatusInterval = Core::Time::FromMilliseconds(10'000);
    static constexpr Core::Time kInterval = Core::Time::FromMilliseconds(1000);

    explicit CMQTTPublisher(const CState& state) : m_state(state) {}

    /// Begins to connect, where a broker is named. Returns what is wrong with the settings, the
    /// empty text when nothing is.
    std::string Start(const SSettings& settings);
    /// Begins to fill an outbox, whoever empties it.
    void Fill(std::shared_ptr<COutbox> outbox) { m_outbox = std::move(outbox); }

    using CHubObserver::NewMessage;
    void NewMessage(const SSolution&) override { m_position.isNew = true; }
    void NewMessage(const SSentence& sentence) override;
    void NewMessage(const SBase&) override { m_base.isNew = true; }
    void NewMessage(const SStatus& status) override;
    void NewMessage(const SEvent& event) override;
    void NewMessage(const SDiagnostic& diagnostic) override;
    void EndPass() override;

private:
    /// A topic that is published once in a while.
    struct STimed {
        bool isNew = false;
        Core::MonotonicTime next;

        bool TakeDue();
    };
    using TDiagnosticKey = std::tuple<std::string, std::int32_t, std::int32_t>;

    using TRaised = std::pair<bool, std::optional<double>>; ///< and with which value

    void PublishHealth();

    const CState& m_state;
    STimed m_position;
    STimed m_sky;
    STimed m_base;
    STimed m_health;
    std::string m_toldHealth;
    CStatusChanges m_statuses{kStatusInterval};
    std::map<TDiagnosticKey, TRaised> m_toldDiagnostics;
    std::shared_ptr<COutbox> m_outbox; ///< null when nothing is published
    std::optional<CMQTTConnection> m_connection;
};

} // namespace Hub
