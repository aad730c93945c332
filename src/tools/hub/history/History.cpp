#include "hub/history/History.h"

#include "hub/state/Navigation.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>
#include <utility>

namespace Hub {

namespace {

constexpr Core::Time kBetweenHandOvers = Core::Time::FromMilliseconds(1000);
constexpr std::size_t kMostBytesGathered = std::size_t{2} * 1024 * 1024;
constexpr std::size_t kMostBytesQueued = std::size_t{8} * 1024 * 1024;
constexpr std::size_t kMostDiagnostics = 1000;

/// A sky view that is further from the solution says nothing about it, seconds.
constexpr double kLongestSkyAge = 10.0;

/// In the far future: a second of it still is a row's number.
constexpr double kLastTime = 1e11;

std::optional<double> MeanCN0(const SSky& sky) {
    double sum = 0.0;
    int count = 0;
    for (const SSky::SChannel& channel : sky.channels) {
        if (channel.cn0.value_or(0.0) > 0.0) {
            sum += *channel.cn0;
            ++count;
        }
    }
    return count == 0 ? std::nullopt : std::optional(sum / count);
}

SPositionRow RowOf(const SSolution& solution) {
    const auto& data = solution.data;
    SPositionRow row;
    row.time = solution.time;
    row.satellites =
        std::accumulate(data.satellites.begin(), data.satellites.end(), std::int64_t{0});
    if (const auto navigation = Navigate(solution, std::nullopt)) {
        row.quality = data.positionQuality;
        row.latitude = navigation->latitude;
        row.longitude = navigation->longitude;
        row.height = navigation->height;
        row.sigmaHorizontal = navigation->sigmaHorizontal;
        row.sigmaUp = navigation->sigmaUp;
        row.differentialAge = data.differentialAge;
    }
    return row;
}

} // namespace

CHistory::CHistory(const std::string& path, int days, int megabytes)
    : m_store(path, days, megabytes), m_worker(kMostBytesQueued) {
}

CHistory::~CHistory() {
    for (const SStatus& status : m_statuses.TakeAll()) {
        Add(status);
    }
    HandOver();
    m_store.Hurry();
}

template <class TRow>
void CHistory::Add(const TRow& row) {
    if (std::abs(row.time) > kLastTime) {
        return;
    }
    if (m_rows.bytes > kMostBytesGathered) {
        ++m_dropped;
        m_complaint.Tell("more is told in a second than it takes; some of it is left out");
        return;
    }
    m_rows.Add(row);
}

void CHistory::NewMessage(const SStatus& status) {
    m_statuses.Add(status);
}

void CHistory::NewMessage(const SEvent& event) {
    Add(event);
}

void CHistory::NewMessage(const SSolution& solution) {
    SPositionRow row = RowOf(solution);
    const bool hasPosition = row.latitude.has_value();
    const auto second =
        static_cast<std::int64_t>(std::floor(std::clamp(solution.time, -kLastTime, kLastTime)));
    if (second == m_second && (m_hasPosition || !hasPosition)) {
        return;
    }
    m_second = second;
    m_hasPosition = hasPosition;
    if (m_tracked && std::abs(m_tracked->time - solution.time) <= kLongestSkyAge) {
        row.cn0 = m_tracked->cn0;
    }
    Add(row);
}

void CHistory::NewMessage(const SSky& sky) {
    m_tracked = STracked{sky.time, MeanCN0(sky)};
}

void CHistory::NewMessage(const SDiagnostic& diagnostic) {
    const auto key = std::tuple(diagnostic.name, diagnostic.code, diagnostic.sub);
    const auto known = m_isRaised.find(key);
    if (known != m_isRaised.end() && known->second == diagnostic.isRaised) {
        return;
    }
    if (m_isRaised.size() < kMostDiagnostics || known != m_isRaised.end()) {
        m_isRaised[key] = diagnostic.isRaised;
    }
    Add(diagnostic);
}

void CHistory::EndPass() {
    if (!m_nextHandOver.HasExpired()) {
        return;
    }
    m_nextHandOver = Core::MonotonicTime::Now() + kBetweenHandOvers;
    for (const SStatus& status : m_statuses.TakeDue()) {
        Add(status);
    }
    HandOver();
}

void CHistory::HandOver() {
    if (m_rows.IsEmpty() && !m_store.HasWaiting()) {
        return;
    }
    // std::function wants what can be copied.
    const auto rows = std::make_shared<SHistoryRows>(std::exchange(m_rows, {}));
    const std::size_t count = rows->positions.size() + rows->events.size() +
                              rows->diagnostics.size() + rows->statuses.size();
    if (!m_worker.Post([this, rows] { m_store.Write(std::move(*rows)); }, rows->bytes + 1)) {
        m_dropped += count;
        m_complaint.Tell("the disk is too slow; some of it is left out");
    }
}

} // namespace Hub
