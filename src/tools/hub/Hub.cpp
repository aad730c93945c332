#include "hub/Hub.h"

#include "hub/Folder.h"
#include "platform/DebugPrint.h"
#include "platform/EndSignals.h"

#include <string_view>

namespace Hub {

namespace {

/// The longest pass: timers are looked at so often.
constexpr timespec kPass = {0, 100'000'000};
constexpr int kBacklog = 64;

bool IsOwnMachineOnly(std::string_view address) {
    return address.starts_with("127.") || address == "localhost" || address == "::1";
}

std::string HistoryPath(const SSettings& settings) {
    return settings.stateFolder + "/history.db";
}

std::unique_ptr<CHistory> MakeHistory(const SSettings& settings) {
    return settings.historyDays == 0
               ? nullptr
               : std::make_unique<CHistory>(HistoryPath(settings), settings.historyDays,
                                            settings.historyMegabytes);
}

SRecordingLimits LimitsOf(const SSettings& settings) {
    constexpr std::uint64_t kMegabyte = 1'000'000;
    constexpr double kMinute = 60.0;
    return {static_cast<std::uint64_t>(settings.recordingFileMegabytes) * kMegabyte,
            settings.recordingFileMinutes * kMinute,
            static_cast<std::uint64_t>(settings.recordingMegabytes) * kMegabyte};
}

/// In the order in which they hear of a message: who shows something comes after who keeps it.
std::vector<CHubObserver*> Present(std::vector<CHubObserver*> observers) {
    std::erase(observers, nullptr);
    return observers;
}

} // namespace

CHub::CHub(const SSettings& settings)
    : m_settings(settings),
      m_categories(settings.stateFolder + "/categories.conf"),
      m_frameMaker(m_state, m_frames),
      m_gpsd(m_sockets),
      m_history(MakeHistory(m_settings)),
      m_historyReader(HistoryPath(m_settings)),
      m_recorder(m_settings.stateFolder + "/recordings", LimitsOf(m_settings)),
      m_mqtt(m_state),
      m_observers(
          Present({&m_state, &m_frameMaker, &m_gpsd, m_history.get(), &m_recorder, &m_mqtt})),
      m_services(m_sockets, m_categories, m_observers),
      m_webServer(m_settings, m_frames,
                  [this](const std::string& what, const CWebServer::TParameters& parameters) {
                      return AnswerHistory(what, parameters);
                  }) {
    m_sockets.Add(&m_services);
    m_sockets.Add(&m_gpsd);
}

SReply CHub::AnswerHistory(const std::string& what, const CWebServer::TParameters& parameters) {
    return m_history == nullptr ? SReply{404, "The history is turned off.\n"}
                                : m_historyReader.Answer(what, parameters);
}

std::string CHub::Start() {
    if (std::string why = m_mqtt.Start(m_settings); !why.empty()) {
        return why;
    }
    TellOpenDoors();
    if (const std::string why = MakeFolder(m_settings.stateFolder); !why.empty()) {
        deprintf("%s: %s; nothing is kept until it is there (--state-dir names another one)\n",
                 m_settings.stateFolder.c_str(), why.c_str());
    }
    for (const SCategory& category : m_categories.All()) {
        for (CHubObserver* const observer : m_observers) {
            observer->NewMessage(category);
        }
    }
    const auto port = static_cast<std::uint16_t>(m_settings.servicesPort);
    const bool isListening = m_services.StartServer(
        m_settings.servicesListen, port, kBacklog,
        [](const std::string& why) { deprintf("services: %s\n", why.c_str()); });
    if (isListening) {
        deprintf("services: taking messages on %s:%d\n", m_settings.servicesListen.c_str(),
                 static_cast<int>(m_services.Port()));
    }
    m_frameMaker.EndPass(); // a page that is asked for now shall not be empty
    m_gpsd.Start(m_settings.gpsdListen, static_cast<std::uint16_t>(m_settings.gpsdPort));
    m_webServer.Start([](const std::string& what) { deprintf("web: %s\n", what.c_str()); });
    return {};
}

/// Whoever opens the hub to a network shall know what that means.
void CHub::TellOpenDoors() const {
    if (!IsOwnMachineOnly(m_settings.servicesListen)) {
        deprintf("services: whoever reaches %s:%d can publish as if they were the daemon\n",
                 m_settings.servicesListen.c_str(), static_cast<int>(m_settings.servicesPort));
    }
    if (!IsOwnMachineOnly(m_settings.httpListen) && m_settings.httpToken.empty()) {
        deprintf("web: whoever reaches %s:%d can read everything; set a token (--http-token) to "
                 "keep it to those who know it\n",
                 m_settings.httpListen.c_str(), static_cast<int>(m_settings.httpPort));
    }
    if (!IsOwnMachineOnly(m_settings.gpsdListen)) {
        deprintf("gpsd: whoever reaches %s:%d can read positions; its protocol knows no tokens\n",
                 m_settings.gpsdListen.c_str(), static_cast<int>(m_settings.gpsdPort));
    }
}

void CHub::Run(const sigset_t& blocked) {
    while (!Core::Utilities::IsAskedToEnd()) {
        Pass(blocked);
    }
}

void CHub::Pass(const sigset_t& blocked) {
    const int ready = m_sockets.WaitAndService(kPass, blocked);
    if (ready < 0) {
        return;
    }
    if (ready == 0) {
        m_services.Idle();
    }
    for (CHubObserver* const observer : m_observers) {
        observer->EndPass();
    }
    m_sockets.EndPass();
}

} // namespace Hub
