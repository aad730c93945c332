// Keeps what is told, for as long as there is room: positions, events, diagnostics and statuses.
#pragma once

#include "hub/Complaint.h"
#include "hub/Observer.h"
#include "hub/StatusChanges.h"
#include "hub/Worker.h"
#include "hub/history/Rows.h"
#include "hub/history/Store.h"
#include "platform/Time.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>

namespace Hub {

/// Gathers what is new and hands it to a thread of its own, which writes it once a second.
/// Positions: one a second. Diagnostics: when they change between raised and cleared. Statuses:
/// the essential ones when their value changes, one in ten seconds.
class CHistory : public CHubObserver {
public:
    static constexpr Core::Time kStatusInterval = Core::Time::FromMilliseconds(10'000);

    /// Neither number is zero: who wants no history makes none.
    CHistory(const std::string& path, int days, int megabytes);
    /// Writes what is left.
    ~CHistory() override;
    CHistory(const CHistory&) = delete;
    CHistory& operator=(const CHistory&) = delete;

    using CHubObserver::NewMessage;
    void NewMessage(const SStatus& status) override;
    void NewMessage(const SEvent& event) override;
    void NewMessage(const SSolution& solution) override;
    void NewMessage(const SSky& sky) override;
    void NewMessage(const SDiagnostic& diagnostic) override;
    void EndPass() override;

    /// How many rows found no room to wait in.
    std::uint64_t Dropped() const { return m_dropped + m_statuses.Refused(); }

private:
    struct STracked {
        double time;
        std::optional<double> cn0;
    };

    template <class TRow>
    void Add(const TRow& row);
    void HandOver();

    CStatusChanges m_statuses{kStatusInterval};
    std::map<std::tuple<std::string, std::int32_t, std::int32_t>, bool> m_isRaised;
    std::optional<STracked> m_tracked;
    std::optional<std::int64_t> m_second; ///< of the last position's row
    bool m_hasPosition = false;
    SHistoryRows m_rows;
    Core::MonotonicTime m_nextHandOver;
    std::uint64_t m_dropped = 0;
    CComplaint m_complaint{"The history"};
    CHistoryStore m_store; ///< the worker's alone
    CWorker m_worker;
};

} // namespace Hub
