// The statements that add to the history.
#pragma once

#include "hub/history/Database.h"
#include "hub/history/Rows.h"

#include <array>
#include <vector>

namespace Hub {

/// Each adds one row, unless it tells nothing new. False when it fails.
class CHistoryInserts {
public:
    explicit CHistoryInserts(const CDatabase& database);

    /// False when there is something wrong with the database; then whether that is its form.
    bool IsValid() const;
    bool IsOfOtherForm() const;

    bool Add(const SHistoryRows& rows);

private:
    auto All() const {
        return std::array{&m_position, &m_minute, &m_event, &m_diagnostic, &m_series, &m_status};
    }
    bool AddMinutes(const std::vector<SPositionRow>& rows);
    bool Add(const SPositionRow& row);
    bool Add(const SEvent& event);
    bool Add(const SDiagnostic& diagnostic);
    bool Add(const SStatus& status);

    CStatement m_position;
    CStatement m_minute;
    CStatement m_event;
    CStatement m_diagnostic;
    CStatement m_series;
    CStatement m_status;
};

} // namespace Hub
