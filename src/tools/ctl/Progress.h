// How far something is, on a terminal as a bar, elsewhere as lines.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace Ctl {

/// "[#####.....]  50 %"; percents outside 0 to 100 count as these.
std::string ProgressBar(std::int32_t percent);

/// Shows each percentage once.
class CProgress {
public:
    /// `stream` outlives it.
    explicit CProgress(std::FILE* stream);
    /// A bar is left as it stands, on a line of its own.
    ~CProgress();
    CProgress(const CProgress&) = delete;
    CProgress& operator=(const CProgress&) = delete;

    void Show(std::int32_t percent);

private:
    std::FILE* m_stream;
    bool m_isTerminal;
    std::int32_t m_shown = -1;
};

} // namespace Ctl
