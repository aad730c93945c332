// The logger that publishes to the logging service over the process's one link.
#pragma once

#include "platform/Logger.h"

#include <memory>

/// One registered name of this process. Two loggers may share a name.
class CRemoteLogger : public CLogger {
public:
    explicit CRemoteLogger(const std::string& name);
    ~CRemoteLogger() override;
    CRemoteLogger(const CRemoteLogger&) = delete;
    CRemoteLogger& operator=(const CRemoteLogger&) = delete;

    /// Whether anybody is there to see each value. While nobody is, a status that is about to be
    /// replaced need not be set.
    bool IsHeard() const;

    void LogRaw(const std::string& name, std::string bytes) override;

protected:
    void PublishStatus(ELevel level, const std::string& key, std::string value) override;
    void PublishData(const std::string& key, double time, std::string value) override;
    void PublishEvent(ESeverity severity, std::string text) override;

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};
