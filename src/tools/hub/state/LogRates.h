// How often each log of the receiver comes, from the data lines that tell of every record.
#pragma once

#include "hub/Messages.h"
#include "platform/Time.h"

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace Hub {

/// Takes the lines with key "QRS_<identifier>"; others say nothing of logs.
class CLogRates {
public:
    static constexpr Core::Time kWindow = Core::Time::FromMilliseconds(5000);
    static constexpr std::size_t kMostLogs = 1000;

    using TKey = std::pair<std::string, std::int32_t>; ///< the port's name, the log's identifier

    struct SLog {
        std::uint64_t count = 0;
        Core::MonotonicTime first;
        Core::MonotonicTime last;
        std::deque<Core::MonotonicTime> recent; ///< arrivals within the window

        /// Logs a second over the window, or over the log's own time when that is shorter.
        double Rate(Core::MonotonicTime now) const;
    };

    /// False when it is the line of a new log for which there is no room.
    bool Add(const SDataLine& line, Core::MonotonicTime now);

    const std::map<TKey, SLog>& Logs() const { return m_logs; }

private:
    std::map<TKey, SLog> m_logs;
};

/// The receiver's name of a log (the receiver's manual), "NMEA" for sentences; empty for one that
/// is not known.
std::string_view LogName(std::int32_t identifier);

} // namespace Hub
