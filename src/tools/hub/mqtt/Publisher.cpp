#include "hub/mqtt/Publisher.h"

#include "hub/mqtt/Payloads.h"
#include "hub/state/Health.h"

#include <cmath>

namespace Hub {

namespace {

constexpr std::size_t kMostDiagnostics = 1000;

} // namespace

std::string CMQTTPublisher::Start(const SSettings& settings) {
    if (settings.mqttHost.empty()) {
        return "";
    }
    SMQTTAccess access;
    if (std::string why = ReadAccess(settings, access); !why.empty()) {
        return "mqtt: " + why;
    }
    Fill(std::make_shared<COutbox>());
    m_connection.emplace(access, m_outbox);
    return "";
}

void CMQTTPublisher::NewMessage(const SSentence& sentence) {
    m_sky.isNew = m_sky.isNew || sentence.id == "GPGSV" || sentence.id == "GPGSA";
}

void CMQTTPublisher::NewMessage(const SStatus& status) {
    if (m_outbox) {
        m_statuses.Add(status);
    }
}

void CMQTTPublisher::NewMessage(const SEvent& event) {
    if (m_outbox) {
        m_outbox->QueueEvent("event", EventPayload(event));
    }
}

/// The daemon tells many of them again and again.
void CMQTTPublisher::NewMessage(const SDiagnostic& diagnostic) {
    const TDiagnosticKey key(diagnostic.name, diagnostic.code, diagnostic.sub);
    TRaised present(diagnostic.isRaised, std::nullopt);
    if (diagnostic.isRaised && std::isfinite(diagnostic.value)) {
        present.second = diagnostic.value;
    }
    const auto told = m_toldDiagnostics.find(key);
    if (!m_outbox || (told != m_toldDiagnostics.end() && told->second == present) ||
        (told == m_toldDiagnostics.end() && m_toldDiagnostics.size() >= kMostDiagnostics)) {
        return;
    }
    m_toldDiagnostics[key] = present;
    m_outbox->QueueState(DiagnosticTopic(diagnostic), DiagnosticPayload(diagnostic));
}

void CMQTTPublisher::EndPass() {
    if (!m_outbox) {
        return;
    }
    if (m_state.Solution() && m_position.TakeDue()) {
        m_outbox->SetState("position",
                           PositionPayload(m_state.Solution()->message, m_state.Geoid()));
    }
    if (m_state.View().Time() && m_sky.TakeDue()) {
        m_outbox->SetState("sky", SkyPayload(m_state.View()));
    }
    if (m_state.Base() && m_base.TakeDue()) {
        m_outbox->SetState("base", BasePayload(m_state.Base()->message));
    }
    for (const SStatus& status : m_statuses.TakeDue()) {
        m_outbox->SetState(StatusTopic(status), StatusPayload(status));
    }
    PublishHealth();
}

/// When it is another one; its words alone may count seconds.
void CMQTTPublisher::PublishHealth() {
    m_health.isNew = true;
    if (!m_health.TakeDue()) {
        return;
    }
    const SNow now = SNow::Get();
    const SHealth health = Judge(m_state, now);
    if (m_toldHealth != health.Name()) {
        m_toldHealth = health.Name();
        m_outbox->SetState("health", HealthPayload(health, now.wall));
    }
}

bool CMQTTPublisher::STimed::TakeDue() {
    if (!isNew || !next.HasExpired()) {
        return false;
    }
    isNew = false;
    next = Core::MonotonicTime::Now() + kInterval;
    return true;
}

} // namespace Hub
