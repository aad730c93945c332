// The logs that have been asked for, and when each is due.
#pragma once

#include "LogRequest.h"

#include <limits>
#include <string>
#include <vector>

namespace Sim {

inline constexpr Milliseconds kNever = std::numeric_limits<Milliseconds>::max();

/// One that has been asked for. Of a kind that follows no clock, `due` is kNever.
struct SScheduledLog {
    SLogRequest request;
    Milliseconds due = kNever;
    std::string content; ///< as it was last seen, for one that is sent when it changes

    /// Whether a change of its content is what sends it.
    bool IsWatched() const;
};

class CLogSchedule {
public:
    /// In all, whatever the port.
    static constexpr std::size_t kMost = 64;

    /// Takes the place of a request for the same log on the same port. The first one is due after
    /// `now`. One for ONCE leaves nothing behind; what is to be sent at once is the caller's part.
    SResponse Add(const SLogRequest& request, Milliseconds now);
    void Remove(const SLogRequest& request);
    void RemoveAll(EPort port, bool withHeldOnes);
    void Clear() { m_logs.clear(); }

    /// The earliest time at which one is due; kNever without any.
    Milliseconds NextDue() const;
    /// Those that are due by `moment`, in the order in which they were asked for; their next time
    /// comes after it.
    std::vector<SLogRequest> TakeDue(Milliseconds moment);

    /// Passes over what was due before `now`.
    void SkipTo(Milliseconds now);

    std::vector<SScheduledLog>& Logs() { return m_logs; }
    const std::vector<SScheduledLog>& Logs() const { return m_logs; }

private:
    std::vector<SScheduledLog> m_logs;
};

} // namespace Sim
