#include "hub/state/Health.h"

#include <algorithm>
#include <cmath>

namespace Hub {

namespace {

std::string Seconds(double age) {
    return std::to_string(static_cast<long long>(std::floor(std::min(age, 1e15)))) + " s";
}

/// Since a port of any kind has told of bytes; nothing when none ever has.
std::optional<double> SinceBytes(const CState& state, const SNow& now) {
    std::optional<double> shortest;
    for (const auto& [name, port] : state.Ports()) {
        if (!port.lastBytes.IsZero()) {
            const double since = (now.monotonic - port.lastBytes).AsSeconds();
            shortest = std::min(shortest.value_or(since), since);
        }
    }
    return shortest;
}

bool AnyConnected(const CState& state) {
    return std::any_of(state.Processes().begin(), state.Processes().end(),
                       [](const auto& entry) { return entry.second.isConnected; });
}

SHealth WithoutDaemon(const CState& state, const SNow& now) {
    using enum SHealth::EState;
    std::string words = AnyConnected(state) ? "No connected program tells positions"
                        : state.Solution()  ? "The daemon is gone"
                                            : "The daemon is not connected, and has never been";
    if (state.Solution()) {
        words += "; the last solution is " + Seconds(state.Solution()->Age(now)) + " old";
    }
    return {gone, words};
}

} // namespace

const char* SHealth::Name() const {
    switch (state) {
    case EState::live:
        return "live";
    case EState::noPosition:
        return "no position";
    case EState::old:
        return "old";
    case EState::silent:
        return "silent";
    case EState::gone:
        break;
    }
    return "gone";
}

SHealth Judge(const CState& state, const SNow& now) {
    using enum SHealth::EState;
    if (!state.IsPublisherConnected()) {
        return WithoutDaemon(state, now);
    }
    const SKept<SSolution>& solution = *state.Solution();
    const double age = solution.Age(now);
    if (age <= kOldAfter) {
        return solution.message.HasPosition() ? SHealth{live, "Live"}
                                              : SHealth{noPosition, "The receiver has no position"};
    }
    const auto sinceBytes = SinceBytes(state, now);
    if (!state.Ports().empty() && !sinceBytes) {
        return {silent, "The receiver is silent: no port has brought a byte yet"};
    }
    if (sinceBytes && *sinceBytes > kSilentAfter) {
        return {silent, "The receiver is silent: no byte for " + Seconds(*sinceBytes)};
    }
    return {old, "The last solution is " + Seconds(age) + " old"};
}

} // namespace Hub
