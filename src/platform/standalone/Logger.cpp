#include "platform/Logger.h"

#include "FormatText.h"

namespace {

/// The variable arguments of one call, ended with its scope.
#define FORMAT_ARGUMENTS(last)                                                                     \
    va_list arguments;                                                                             \
    va_start(arguments, last);                                                                     \
    std::string text = FormatText(last, arguments);                                                \
    va_end(arguments)

} // namespace

void CLogger::SetEssentialStatus(const std::string& key, const char* format, ...) {
    FORMAT_ARGUMENTS(format);
    PublishStatus(ELevel::essential, key, std::move(text));
}

void CLogger::SetInfoStatus(const std::string& key, const char* format, ...) {
    FORMAT_ARGUMENTS(format);
    PublishStatus(ELevel::info, key, std::move(text));
}

void CLogger::LogData(const std::string& key, double time, const char* format, ...) {
    FORMAT_ARGUMENTS(format);
    PublishData(key, time, std::move(text));
}

void CLogger::Warn(const char* format, ...) {
    FORMAT_ARGUMENTS(format);
    PublishEvent(ESeverity::warning, std::move(text));
}

void CLogger::Error(const char* format, ...) {
    FORMAT_ARGUMENTS(format);
    PublishEvent(ESeverity::error, std::move(text));
}

void CLogger::SetIdleParameters(double threshold) {
    m_idleThreshold = threshold > 0.0 ? threshold : 0.0;
    m_lastIdleCheck = m_idleThreshold > 0.0 ? Core::MonotonicTime::Now() : Core::MonotonicTime();
}

void CLogger::ReallyCheckIdle() {
    if (m_lastIdleCheck.IsZero()) {
        return;
    }
    const Core::MonotonicTime now = Core::MonotonicTime::Now();
    const double seconds = (now - m_lastIdleCheck).AsSeconds();
    m_lastIdleCheck = now;
    if (seconds > m_idleThreshold) {
        Warn("Idle for %.3f s, more than %.3f s", seconds, m_idleThreshold);
    }
}
