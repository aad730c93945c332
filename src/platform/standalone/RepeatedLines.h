// The memory of recently printed lines that lets the trace count repetitions instead of printing.
#pragma once

#include "platform/Time.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Folds per text, also when other lines stand between the repetitions. It remembers the
/// kRemembered lines printed last; the memory it takes is bounded.
class CRepeatedLines {
public:
    static constexpr std::size_t kRemembered = 32;
    static constexpr std::size_t kLongestFolded = 1024;
    static constexpr Core::Time kWindow = Core::Time::FromMilliseconds(10'000);

    /// What to write now that `line` is to be printed: nothing when it was printed less than
    /// kWindow ago (it is counted); else the line, with " (repeated N times)" at its end if
    /// repetitions were counted since. Before that, the count of a line that is forgotten for this
    /// one. Lines that begin with a digit, empty lines and lines longer than
    /// kLongestFolded always come back as they are.
    std::string Fold(std::string_view line, Core::MonotonicTime now);

    /// The counts that were not told yet, each as "<line> (repeated N times)"; they are told once.
    std::string TakeUntold();

private:
    struct SLine {
        std::string text;
        Core::MonotonicTime printed;
        std::uint64_t repetitions = 0;
    };

    SLine* Find(std::string_view line);
    std::string Remember(std::string_view line, Core::MonotonicTime now);

    std::vector<SLine> m_lines;
};
