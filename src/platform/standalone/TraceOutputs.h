// The two outputs of the process's debug prints, as the environment asks for them.
#pragma once

#include "TraceSink.h"

#include <memory>

/// Standard error for the errors; for the trace, standard error, a file or nothing.
class CTraceOutputs {
public:
    /// The outputs of this process; the environment is read when they are first asked for.
    static CTraceOutputs& Get();

    /// Lets Get() read the environment anew. For tests, in a process with one thread.
    static void Restart();

    /// `wanted` is the environment's CORVANE_TRACE: null or empty for standard error, "off" for
    /// nothing, else the path of a file to append to. If that cannot be opened, standard error says
    /// so and takes the trace.
    explicit CTraceOutputs(const char* wanted);
    ~CTraceOutputs();

    CTraceSink& Errors() { return m_errors; }
    /// Null when the trace is silenced.
    CTraceSink* Trace() { return m_trace; }

private:
    void OpenFile(const char* path);

    CTraceSink m_errors;
    int m_descriptor = -1;
    std::unique_ptr<CTraceSink> m_file;
    CTraceSink* m_trace = nullptr;
};
