// Chooses among the solutions that a receiver computes side by side.
#pragma once

#include "hub/Messages.h"

#include <optional>

namespace Hub {

/// A receiver may send a single-point and an RTK solution for every moment, and the daemon hands on
/// both. Whoever shows a position wants the better one, and no jumping between the two: so a
/// solution is passed over that is poorer than another one less than kHold older by GPS time.
class CSolutionChoice {
public:
    static constexpr double kHold = 1.0; ///< seconds

    /// Whether the solution is the one to go by.
    bool Takes(const SSolution& solution);

private:
    std::optional<SSolution> m_last; ///< that was taken
};

} // namespace Hub
