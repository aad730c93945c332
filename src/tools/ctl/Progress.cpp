#include "Progress.h"

#include <algorithm>
#include <unistd.h>

namespace Ctl {

namespace {

constexpr std::int32_t kWidth = 50;

} // namespace

std::string ProgressBar(std::int32_t percent) {
    const std::int32_t shown = std::clamp(percent, 0, 100);
    const auto done = static_cast<std::size_t>(shown * kWidth / 100);
    std::string number = std::to_string(shown);
    number.insert(0, 3 - number.size(), ' ');
    return "[" + std::string(done, '#') + std::string(kWidth - done, '.') + "] " + number + " %";
}

CProgress::CProgress(std::FILE* stream)
    : m_stream(stream), m_isTerminal(isatty(fileno(stream)) == 1) {
}

CProgress::~CProgress() {
    if (m_isTerminal && m_shown >= 0) {
        std::fputc('\n', m_stream);
        std::fflush(m_stream);
    }
}

void CProgress::Show(std::int32_t percent) {
    if (percent == m_shown) {
        return;
    }
    m_shown = percent;
    if (m_isTerminal) {
        std::fprintf(m_stream, "\r%s", ProgressBar(percent).c_str());
    } else {
        std::fprintf(m_stream, "%d %%\n", static_cast<int>(percent));
    }
    std::fflush(m_stream);
}

} // namespace Ctl
