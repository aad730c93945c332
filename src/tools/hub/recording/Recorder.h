// Records the raw blocks of the names whose category is on.
#pragma once

#include "hub/Complaint.h"
#include "hub/Observer.h"
#include "hub/Worker.h"
#include "hub/recording/Recordings.h"

#include <cstdint>
#include <set>
#include <string>

namespace Hub {

/// Hands the blocks to a thread of its own, which writes them.
class CRecorder : public CHubObserver {
public:
    CRecorder(const std::string& folder, const SRecordingLimits& limits);

    using CHubObserver::NewMessage;
    void NewMessage(const SCategory& category) override;
    void NewMessage(const SRawBlock& block) override;

    /// How many blocks found no room to wait in.
    std::uint64_t Dropped() const { return m_dropped; }

private:
    std::set<std::string> m_names; ///< that are recorded
    std::uint64_t m_dropped = 0;
    CComplaint m_complaint{"The recordings"};
    CRecordings m_recordings; ///< the worker's alone
    CWorker m_worker;
};

} // namespace Hub
