#include "hub/recording/Recorder.h"

namespace Hub {

namespace {

constexpr std::size_t kMostBytesQueued = std::size_t{16} * 1024 * 1024;

} // namespace

CRecorder::CRecorder(const std::string& folder, const SRecordingLimits& limits)
    : m_recordings(folder, limits), m_worker(kMostBytesQueued) {
}

void CRecorder::NewMessage(const SCategory& category) {
    if (category.isEnabled) {
        m_names.insert(category.category);
    } else if (m_names.erase(category.category) > 0) {
        m_worker.Post([this, name = category.category] { m_recordings.End(name); });
    }
}

void CRecorder::NewMessage(const SRawBlock& block) {
    if (m_names.count(block.name) == 0 || block.bytes.empty()) {
        return;
    }
    if (!m_worker.Post([this, block] { m_recordings.Add(block); }, block.bytes.size())) {
        ++m_dropped;
        m_complaint.Tell("the disk is too slow; blocks are left out");
    }
}

} // namespace Hub
