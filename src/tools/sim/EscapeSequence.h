// Recognises the escape by which a port that understands no commands is brought back.
#pragma once

#include "Moment.h"

#include <string>
#include <string_view>

namespace Sim {

/// "+++" alone, silence, "+++" again; with a line end or without. Silence stands before each.
class CEscapeSequence {
public:
    static constexpr Milliseconds kSilence = 1000;

    /// True when these bytes complete it.
    bool Hear(std::string_view bytes, Milliseconds now);

private:
    bool IsWhole() const;

    std::string m_burst; ///< what has come since the last silence
    bool m_hasOne = false;
    Milliseconds m_lastHeard = 0;
};

} // namespace Sim
