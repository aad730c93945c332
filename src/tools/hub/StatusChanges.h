// The changes of the essential statuses, thinned out: some of them change with every log.
#pragma once

#include "hub/Messages.h"
#include "platform/Time.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Hub {

/// Hands out each value that differs from the one before, of one status at most one in an
/// interval. What changes within it waits until it is over; of several such values the last one
/// does.
class CStatusChanges {
public:
    static constexpr std::size_t kMostStatuses = 5000;

    explicit CStatusChanges(Core::Time interval) : m_interval(interval) {}

    /// A status too many is counted and left out.
    void Add(const SStatus& status);
    /// What has waited long enough.
    std::vector<SStatus> TakeDue();
    /// All that waits.
    std::vector<SStatus> TakeAll();

    std::uint64_t Refused() const { return m_refused; }

private:
    using TKey = std::pair<std::string, std::string>; ///< name, key

    struct STaken {
        std::string value;
        Core::MonotonicTime next; ///< when another one may be taken
        bool isTaken = false;
    };

    std::vector<SStatus> Take(bool isAll);

    const Core::Time m_interval;
    std::map<TKey, STaken> m_taken;
    std::map<TKey, SStatus> m_waiting;
    std::uint64_t m_refused = 0;
};

} // namespace Hub
