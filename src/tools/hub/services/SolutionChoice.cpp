#include "hub/services/SolutionChoice.h"

#include "hub/state/Navigation.h"

#include <cmath>
#include <utility>

namespace Hub {

namespace {

/// Fixes by what they are worth: none, single, differential, float, integer.
int Worth(const SSolution& solution) {
    switch (FixIndicator(solution)) {
    case 4:
        return 4;
    case 5:
        return 3;
    default:
        return FixIndicator(solution);
    }
}

bool IsPoorer(const SSolution& a, const SSolution& b) {
    return std::pair(a.data.positionQuality, Worth(a)) <
           std::pair(b.data.positionQuality, Worth(b));
}

/// How much later by GPS time; not a number when one of them tells none.
double SecondsBetween(const SSolution& earlier, const SSolution& later) {
    constexpr double kSecondsPerWeek = 604'800.0;
    return (static_cast<double>(later.data.week) - earlier.data.week) * kSecondsPerWeek +
           (later.data.seconds - earlier.data.seconds);
}

} // namespace

bool CSolutionChoice::Takes(const SSolution& solution) {
    // Another publisher, or a receiver whose time has jumped, starts anew.
    if (m_last && m_last->sender == solution.sender && IsPoorer(solution, *m_last) &&
        std::fabs(SecondsBetween(*m_last, solution)) < kHold) {
        return false;
    }
    m_last = solution;
    return true;
}

} // namespace Hub
