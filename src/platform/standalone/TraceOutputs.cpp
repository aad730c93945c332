#include "TraceOutputs.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace {

/// Never destroyed: what runs at exit, in whatever order, may still print.
CTraceOutputs*& TheOutputs() {
    static CTraceOutputs* outputs = [] {
        std::atexit([] {
            TheOutputs()->Errors().StopFolding();
            if (CTraceSink* const trace = TheOutputs()->Trace()) {
                trace->StopFolding();
            }
        });
        return new CTraceOutputs(std::getenv("CORVANE_TRACE"));
    }();
    return outputs;
}

int OpenToAppend(const char* path) {
    const int flags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    const int opened = open(path, flags, 0644);
    if (opened < 0 || opened > STDERR_FILENO) {
        return opened;
    }
    // A standard descriptor was closed: the file must not take its place.
    const int moved = fcntl(opened, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    close(opened);
    return moved;
}

} // namespace

CTraceOutputs& CTraceOutputs::Get() {
    return *TheOutputs();
}

void CTraceOutputs::Restart() {
    delete TheOutputs();
    TheOutputs() = new CTraceOutputs(std::getenv("CORVANE_TRACE"));
}

CTraceOutputs::CTraceOutputs(const char* wanted) : m_errors(STDERR_FILENO) {
    if (wanted == nullptr || *wanted == '\0') {
        m_trace = &m_errors;
    } else if (std::strcmp(wanted, "off") != 0) {
        OpenFile(wanted);
    }
}

CTraceOutputs::~CTraceOutputs() {
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
}

void CTraceOutputs::OpenFile(const char* path) {
    m_descriptor = OpenToAppend(path);
    if (m_descriptor < 0) {
        m_errors.Write("Cannot open the trace file " + std::string(path) + " (" +
                       std::strerror(errno) + "): tracing to standard error\n");
        m_trace = &m_errors;
        return;
    }
    m_file = std::make_unique<CTraceSink>(m_descriptor);
    m_trace = m_file.get();
}
