#include "mux/Multiplexer.h"

#include "platform/DebugPrint.h"
#include "platform/EndSignals.h"

namespace Mux {

namespace {

/// The longest pass: timers are looked at so often.
constexpr timespec kPass = {0, 100'000'000};
constexpr int kBacklog = 16;

} // namespace

CMultiplexer::CMultiplexer(const SSettings& settings)
    : m_settings(settings), m_server(m_sockets, m_ports) {
    for (const SPort& port : m_settings.ports) {
        m_ports.push_back(std::make_unique<CPort>(port, m_settings, m_sockets));
    }
    m_sockets.Add(&m_server);
}

bool CMultiplexer::Start() {
    bool isServing = false;
    for (const auto& port : m_ports) {
        isServing = port->Listen() || isServing;
    }
    if (!isServing) {
        return false;
    }
    const bool isListening = m_server.StartServer(
        m_settings.rpcListen, m_settings.rpcPort, kBacklog,
        [](const std::string& why) { deprintf("remote procedures: %s\n", why.c_str()); });
    if (isListening) {
        deprintf("remote procedures: served on %s:%d\n", m_settings.rpcListen.c_str(),
                 static_cast<int>(m_settings.rpcPort));
    }
    return true;
}

void CMultiplexer::Run(const sigset_t& blocked) {
    while (!Core::Utilities::IsAskedToEnd()) {
        Pass(blocked);
    }
    for (const auto& port : m_ports) {
        port->TellSum();
    }
}

void CMultiplexer::Pass(const sigset_t& blocked) {
    const int ready = m_sockets.WaitAndService(kPass, blocked);
    if (ready < 0) {
        return;
    }
    if (ready == 0) {
        m_server.Idle();
    }
    m_sockets.EndPass();
}

} // namespace Mux
