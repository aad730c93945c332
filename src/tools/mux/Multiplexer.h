// The whole multiplexer: its ports, its remote procedures, and the loop that serves them.
#pragma once

#include "mux/PortServer.h"
#include "mux/Settings.h"
#include "platform/SocketCollection.h"

#include <csignal>

namespace Mux {

class CMultiplexer {
public:
    /// The settings outlive it.
    explicit CMultiplexer(const SSettings& settings);

    /// False when not one port can be served; the others are tried again while it runs.
    bool Start();
    /// Serves until the program is asked to end; only while it waits are signals let through that
    /// are not in `blocked`.
    void Run(const sigset_t& blocked);

private:
    void Pass(const sigset_t& blocked);

    const SSettings& m_settings;
    SocketCollectionC m_sockets;
    CPortServer::TPorts m_ports;
    CPortServer m_server;
};

} // namespace Mux
