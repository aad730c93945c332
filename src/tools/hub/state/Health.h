// Whether what is shown is live, in one word and in a sentence.
#pragma once

#include "hub/state/State.h"

#include <string>

namespace Hub {

struct SHealth {
    enum class EState { live, noPosition, old, silent, gone };
    EState state = EState::gone;
    std::string words;

    /// As the JSON interface names it.
    const char* Name() const;
};

inline constexpr double kOldAfter = 2.0;    ///< seconds without a solution
inline constexpr double kSilentAfter = 3.0; ///< seconds without a byte from any port

SHealth Judge(const CState& state, const SNow& now);

} // namespace Hub
