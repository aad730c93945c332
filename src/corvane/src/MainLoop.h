// The daemon's only scheduler: one select over the receiver's ports and the sockets, pass by pass.
#pragma once

#include "platform/Logger.h"
#include "platform/MPISocketServer.h"
#include "platform/SocketCollection.h"
#include "platform/Time.h"

#include <vector>

#include <sys/select.h>

namespace Novatel {
class CPortHandler;
}

/// Runs until a source that has an end, a raw file or a recording, has been read to it.
class CMainLoop {
public:
    /// The handlers are served in this order in every pass. Nothing is owned.
    CMainLoop(const std::vector<Novatel::CPortHandler*>& portHandlers, SocketCollectionC& sockets,
              MPISocketServerC& rpcServer, CLogger& logger)
        : m_portHandlers(portHandlers),
          m_sockets(sockets),
          m_rpcServer(rpcServer),
          m_logger(logger) {}

    void Run();

private:
    void RunPass();
    int PrepareSets(fd_set& readSet, fd_set& writeSet);
    void HandlePorts(const fd_set& readSet, Core::MonotonicTime passTime);
    void HandleFailure(const Novatel::CPortHandler& portHandler, Core::MonotonicTime passTime);

    const std::vector<Novatel::CPortHandler*>& m_portHandlers;
    SocketCollectionC& m_sockets;
    MPISocketServerC& m_rpcServer;
    CLogger& m_logger;
    bool m_stop = false;
    Core::UnixTime m_lastFailure;
};
