#include "hub/mqtt/Connection.h"

#include "hub/Complaint.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mosquitto.h>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>

namespace Hub {

namespace {

using std::chrono::seconds;
using TClock = std::chrono::steady_clock;

constexpr int kKeepAlive = 20; // seconds
constexpr int kPass = 100;     // milliseconds
constexpr int kUnused = 1;     // the library's own advice
constexpr seconds kFirstDelay{1};
constexpr seconds kLongestDelay{60};
/// For what waits, and then for the goodbye itself.
constexpr seconds kToEmpty{1};
constexpr seconds kToSayGoodbye{1};
/// Above these two. Only the resolving of a name, which nothing ends, takes longer.
constexpr seconds kToEnd{3};
/// More are not handed to the library, whose own queue has no bound.
constexpr std::size_t kMostInFlight = 20;

constexpr char kOnline[] = "online";

} // namespace

/// All but construction and End() belongs to the thread.
class CMQTTConnection::CSession {
public:
    CSession(const SMQTTAccess& access, std::shared_ptr<COutbox> outbox);

    /// Tells the thread to end, and waits for that. False when it takes too long.
    bool End();
    void Run();

private:
    struct SCloser {
        void operator()(mosquitto* client) const { mosquitto_destroy(client); }
    };

    void SetUp();
    void Connected(int code);
    void Serve();
    void HandOver();
    void SayGoodbye();
    void Publish(const SPublication& publication);
    std::string WhyLost(int result) const;
    bool IsEnding();
    void WaitFor(seconds delay);

    const SMQTTAccess m_access;
    const std::shared_ptr<COutbox> m_outbox;
    const std::string m_root; ///< of the topics
    CComplaint m_complaint;
    std::unique_ptr<mosquitto, SCloser> m_client;
    bool m_isConnected = false;
    int m_refusal = 0;             ///< of the last connect, the broker's code
    std::string m_tlsError;        ///< the last one that the library has told
    std::set<int> m_inFlight;      ///< what the broker has not confirmed
    seconds m_delay = kFirstDelay; ///< before the next attempt

    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isEnding = false;
    bool m_hasEnded = false;
};

CMQTTConnection::CSession::CSession(const SMQTTAccess& access, std::shared_ptr<COutbox> outbox)
    : m_access(access),
      m_outbox(std::move(outbox)),
      m_root("corvane/" + access.device + "/"),
      m_complaint("The MQTT broker " + access.host + ":" + std::to_string(access.port)) {
}

void CMQTTConnection::CSession::SetUp() {
    const std::string identity = "corvane-hub-" + m_access.device;
    m_client.reset(mosquitto_new(identity.c_str(), true, this));
    mosquitto* const client = m_client.get();
    mosquitto_connect_callback_set(client, [](mosquitto*, void* session, int code) {
        static_cast<CSession*>(session)->Connected(code);
    });
    mosquitto_publish_callback_set(client, [](mosquitto*, void* session, int message) {
        static_cast<CSession*>(session)->m_inFlight.erase(message);
    });
    mosquitto_log_callback_set(client, [](mosquitto*, void* session, int level, const char* text) {
        if (level == MOSQ_LOG_ERR) {
            static_cast<CSession*>(session)->m_tlsError = text;
        }
    });
    mosquitto_will_set(client, (m_root + kOnline).c_str(), 1, "0", 1, true);
    if (!m_access.user.empty()) {
        mosquitto_username_pw_set(client, m_access.user.c_str(),
                                  m_access.password.empty() ? nullptr : m_access.password.c_str());
    }
    if (!m_access.caFile.empty()) {
        const auto orNull = [](const std::string& path) {
            return path.empty() ? nullptr : path.c_str();
        };
        mosquitto_tls_set(client, m_access.caFile.c_str(), nullptr, orNull(m_access.certificate),
                          orNull(m_access.key), nullptr);
    }
}

void CMQTTConnection::CSession::Run() {
    mosquitto_lib_init();
    SetUp();
    while (!IsEnding()) {
        m_refusal = 0;
        m_tlsError.clear();
        const int result = mosquitto_connect_async(m_client.get(), m_access.host.c_str(),
                                                   m_access.port, kKeepAlive);
        if (result == MOSQ_ERR_SUCCESS) {
            Serve();
        } else if (!IsEnding()) {
            m_complaint.Tell(WhyLost(result));
        }
        m_isConnected = false;
        WaitFor(m_delay);
        m_delay = std::min(2 * m_delay, kLongestDelay);
    }
    m_client.reset();
    const std::lock_guard lock(m_mutex);
    m_hasEnded = true;
    m_changed.notify_all();
}

/// Until the connection is lost or to end.
void CMQTTConnection::CSession::Serve() {
    while (!IsEnding()) {
        const int result = mosquitto_loop(m_client.get(), kPass, kUnused);
        if (result != MOSQ_ERR_SUCCESS) {
            m_complaint.Tell(WhyLost(result));
            return;
        }
        HandOver();
    }
    if (m_isConnected) {
        SayGoodbye();
    }
}

void CMQTTConnection::CSession::Connected(int code) {
    m_refusal = code;
    if (code != 0) {
        return;
    }
    m_isConnected = true;
    m_delay = kFirstDelay;
    if (const std::uint64_t lost = m_outbox->TakeLost(); lost > 0) {
        m_complaint.Tell(std::to_string(lost) + " events were lost while it was away");
    }
    m_complaint.TellOver("connected");
    m_outbox->RepeatStates();
    Publish({kOnline, "1", 1, true});
}

/// As much as goes out at once.
void CMQTTConnection::CSession::HandOver() {
    while (m_isConnected && m_inFlight.size() < kMostInFlight &&
           !mosquitto_want_write(m_client.get())) {
        const std::optional<SPublication> next = m_outbox->Take();
        if (!next) {
            return;
        }
        Publish(*next);
    }
}

void CMQTTConnection::CSession::Publish(const SPublication& publication) {
    int message = 0;
    const int result =
        mosquitto_publish(m_client.get(), &message, (m_root + publication.topic).c_str(),
                          static_cast<int>(publication.payload.size()), publication.payload.data(),
                          publication.qos, publication.isRetained);
    if (result == MOSQ_ERR_SUCCESS && publication.qos > 0) {
        m_inFlight.insert(message);
    }
}

/// A regular end lets the broker forget the last will; it is left to it when the broker does not
/// take what it is told.
void CMQTTConnection::CSession::SayGoodbye() {
    const auto serve = [this](seconds limit, const auto& isDone) {
        const auto end = TClock::now() + limit;
        int result = MOSQ_ERR_SUCCESS;
        while (result == MOSQ_ERR_SUCCESS && !isDone() && TClock::now() < end) {
            HandOver();
            result = mosquitto_loop(m_client.get(), kPass, kUnused);
        }
        return result == MOSQ_ERR_SUCCESS && isDone();
    };
    if (!serve(kToEmpty, [this] { return m_outbox->IsEmpty() && m_inFlight.empty(); })) {
        return;
    }
    Publish({kOnline, "0", 1, true});
    if (serve(kToSayGoodbye, [this] { return m_inFlight.empty(); })) {
        mosquitto_disconnect(m_client.get());
    }
}

std::string CMQTTConnection::CSession::WhyLost(int result) const {
    std::string why = m_refusal != 0                 ? mosquitto_connack_string(m_refusal)
                      : result == MOSQ_ERR_ERRNO     ? std::strerror(errno)
                      : result == MOSQ_ERR_KEEPALIVE ? "it does not answer"
                                                     : mosquitto_strerror(result);
    if (why.ends_with('.')) {
        why.pop_back();
    }
    why += m_tlsError.empty() ? "" : " (" + m_tlsError + ")";
    return why + "; tried again until it is there";
}

bool CMQTTConnection::CSession::IsEnding() {
    const std::lock_guard lock(m_mutex);
    return m_isEnding;
}

void CMQTTConnection::CSession::WaitFor(seconds delay) {
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, delay, [this] { return m_isEnding; });
}

bool CMQTTConnection::CSession::End() {
    std::unique_lock lock(m_mutex);
    m_isEnding = true;
    m_changed.notify_all();
    return m_changed.wait_for(lock, kToEnd, [this] { return m_hasEnded; });
}

CMQTTConnection::CMQTTConnection(const SMQTTAccess& access, std::shared_ptr<COutbox> outbox)
    : m_session(std::make_shared<CSession>(access, std::move(outbox))) {
    // Detached, since the resolving of the broker's name, which cannot be ended, may outlast us.
    std::thread([session = m_session] { session->Run(); }).detach();
}

CMQTTConnection::~CMQTTConnection() {
    m_session->End();
}

} // namespace Hub
