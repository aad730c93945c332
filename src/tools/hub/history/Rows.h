// What is to be added to the history.
#pragma once

#include "hub/Messages.h"

#include <optional>
#include <vector>

namespace Hub {

/// What stands for a second. One without a position has quality 0 and no coordinates.
struct SPositionRow {
    double time = 0.0; ///< seconds since the Unix epoch
    std::int32_t quality = 0;
    std::optional<double> latitude; ///< degrees
    std::optional<double> longitude;
    std::optional<double> height; ///< metres, above the ellipsoid
    std::int64_t satellites = 0;  ///< used
    std::optional<double> sigmaHorizontal;
    std::optional<double> sigmaUp;
    std::optional<double> differentialAge;
    std::optional<double> cn0; ///< dB-Hz, the mean of what was tracked
};

struct SHistoryRows {
    std::vector<SPositionRow> positions;
    std::vector<SEvent> events;
    std::vector<SDiagnostic> diagnostics;
    std::vector<SStatus> statuses;
    std::size_t bytes = 0; ///< that all of them take, about

    bool IsEmpty() const { return bytes == 0; }

    void Add(const SPositionRow& row) { Append(positions, row, 0); }
    void Add(const SEvent& event) { Append(events, event, event.name.size() + event.text.size()); }
    void Add(const SDiagnostic& diagnostic) {
        Append(diagnostics, diagnostic, diagnostic.name.size());
    }
    void Add(const SStatus& status) {
        Append(statuses, status, status.name.size() + status.key.size() + status.value.size());
    }

private:
    template <class TRow>
    void Append(std::vector<TRow>& rows, const TRow& row, std::size_t textBytes) {
        rows.push_back(row);
        bytes += sizeof row + textBytes;
    }
};

} // namespace Hub
