// The status logger: how every object of a program tells the logging service what it knows.
#pragma once

#include "platform/Time.h"

#include <cstdarg>
#include <string>

/// What can be published; where it goes is the derived class's business. Formats are printf's, and
/// no call ever waits for a peer (except in an offline run, see ServiceLink.h).
class CLogger {
public:
    virtual ~CLogger() = default;

    /// A value that matters to the user; only the last one of a key counts.
    void SetEssentialStatus(const std::string& key, const char* format, ...)
        __attribute__((format(printf, 3, 4)));
    /// A counter or a rate; only the last one of a key counts.
    void SetInfoStatus(const std::string& key, const char* format, ...)
        __attribute__((format(printf, 3, 4)));
    /// One line of a series; `time` in seconds since the Unix epoch.
    void LogData(const std::string& key, double time, const char* format, ...)
        __attribute__((format(printf, 4, 5)));
    void Warn(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void Error(const char* format, ...) __attribute__((format(printf, 2, 3)));
    /// A block of raw bytes, kept by the service under `name`.
    virtual void LogRaw(const std::string& name, std::string bytes) = 0;

    /// Idle supervision: above 0, a warning with the measured seconds is published when more than
    /// `threshold` seconds pass between two checks; 0 and below turn it off.
    void SetIdleParameters(double threshold);
    /// When the supervision last looked; zero while it is off.
    Core::MonotonicTime IdleTimeStamp() const { return m_lastIdleCheck; }
    /// Looks now.
    void ReallyCheckIdle();

protected:
    enum class ELevel { essential, info };
    enum class ESeverity { warning, error };

    virtual void PublishStatus(ELevel level, const std::string& key, std::string value) = 0;
    virtual void PublishData(const std::string& key, double time, std::string value) = 0;
    virtual void PublishEvent(ESeverity severity, std::string text) = 0;

private:
    double m_idleThreshold = 0.0;
    Core::MonotonicTime m_lastIdleCheck;
};
