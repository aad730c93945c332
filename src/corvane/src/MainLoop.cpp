#include "MainLoop.h"

#include "IO/InputOutputHandler.h"
#include "Port/PortHandler.h"
#include "platform/DebugPrint.h"

#include <algorithm>
#include <cstdio>

namespace {

/// Bounds how late timers run when nothing arrives.
constexpr suseconds_t kSelectTimeoutMicroseconds = 100'000;
/// Two failures closer than this cost a pause each. Kept on the wall clock.
constexpr Core::Time kFailureInterval = Core::Time::FromMilliseconds(500);
constexpr Core::Time kFailurePause = Core::Time::FromMilliseconds(10);

bool IsReadable(int descriptor, const fd_set& readSet) {
    return descriptor >= 0 && descriptor < FD_SETSIZE && FD_ISSET(descriptor, &readSet);
}

} // namespace

void CMainLoop::Run() {
    while (!m_stop) {
        RunPass();
    }
}

void CMainLoop::RunPass() {
    fd_set readSet;
    fd_set writeSet;
    const int highest = PrepareSets(readSet, writeSet);
    timeval timeout{};
    timeout.tv_usec = kSelectTimeoutMicroseconds;
    const int ready = select(highest + 1, &readSet, &writeSet, nullptr, &timeout);
    if (ready < 0) {
        return;
    }
    if (!m_logger.IdleTimeStamp().IsZero()) {
        m_logger.ReallyCheckIdle();
    }
    if (ready == 0) {
        m_rpcServer.Idle();
    }
    const Core::MonotonicTime beforeSockets = Core::MonotonicTime::Now();
    m_sockets.Service(readSet, writeSet);
    const Core::MonotonicTime afterSockets = Core::MonotonicTime::Now();
    HandlePorts(readSet, beforeSockets);
    const Core::MonotonicTime afterPorts = Core::MonotonicTime::Now();
    dprintf("%.3f,novatel_main_loop,%.3f,%.3f\n", beforeSockets.AsSeconds(),
            (afterSockets - beforeSockets).AsSeconds(), (afterPorts - afterSockets).AsSeconds());
    std::fflush(stdout);
    m_sockets.EndPass();
}

/// Opens what is closed, and returns the highest descriptor of both sets, -1 without any.
int CMainLoop::PrepareSets(fd_set& readSet, fd_set& writeSet) {
    FD_ZERO(&readSet);
    FD_ZERO(&writeSet);
    int highest = -1;
    for (const Novatel::CPortHandler* portHandler : m_portHandlers) {
        CInputOutputHandler* const source = portHandler->ByteSource();
        if (source != nullptr && !source->IsOpen()) {
            source->Open();
        }
        const int descriptor = portHandler->FileDescriptor();
        if (descriptor > 0 && descriptor < FD_SETSIZE) {
            FD_SET(descriptor, &readSet);
            highest = std::max(highest, descriptor);
        }
    }
    return std::max(highest, m_sockets.AddToSets(readSet, writeSet));
}

void CMainLoop::HandlePorts(const fd_set& readSet, Core::MonotonicTime passTime) {
    for (Novatel::CPortHandler* portHandler : m_portHandlers) {
        if (!portHandler->HandlePort(IsReadable(portHandler->FileDescriptor(), readSet))) {
            HandleFailure(*portHandler, passTime);
        }
    }
}

void CMainLoop::HandleFailure(const Novatel::CPortHandler& portHandler,
                              Core::MonotonicTime passTime) {
    dprintf("%.3f,portHandler.HandlePort failed\n", passTime.AsSeconds());
    // Only the regular end of a file or a recording ends the program, never a lost source.
    if (portHandler.ByteSource()->IsAtEnd()) {
        m_stop = true;
    }
    const Core::UnixTime now = Core::UnixTime::Now();
    const Core::Time sinceLast = now - m_lastFailure;
    m_lastFailure = now;
    if (sinceLast < kFailureInterval) {
        Core::Sleep(kFailurePause);
    }
}
