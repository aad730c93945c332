#include "hub/StatusChanges.h"

namespace Hub {

void CStatusChanges::Add(const SStatus& status) {
    if (status.level != EStatusLevel::essential) {
        return;
    }
    const TKey key(status.name, status.key);
    auto taken = m_taken.find(key);
    if (taken == m_taken.end()) {
        if (m_taken.size() >= kMostStatuses) {
            ++m_refused;
            return;
        }
        taken = m_taken.try_emplace(key).first;
    }
    if (taken->second.isTaken && taken->second.value == status.value) {
        m_waiting.erase(key);
    } else {
        m_waiting.insert_or_assign(key, status);
    }
}

std::vector<SStatus> CStatusChanges::TakeDue() {
    return Take(false);
}

std::vector<SStatus> CStatusChanges::TakeAll() {
    return Take(true);
}

std::vector<SStatus> CStatusChanges::Take(bool isAll) {
    const Core::MonotonicTime now = Core::MonotonicTime::Now();
    std::vector<SStatus> due;
    for (auto waiting = m_waiting.begin(); waiting != m_waiting.end();) {
        STaken& taken = m_taken.at(waiting->first);
        if (!isAll && now < taken.next) {
            ++waiting;
            continue;
        }
        taken = {.value = waiting->second.value, .next = now + m_interval, .isTaken = true};
        due.push_back(std::move(waiting->second));
        waiting = m_waiting.erase(waiting);
    }
    return due;
}

} // namespace Hub
