#include "RepeatedLines.h"

#include <algorithm>
#include <utility>

namespace {

std::string Count(std::uint64_t repetitions) {
    return "(repeated " + std::to_string(repetitions) + (repetitions == 1 ? " time)" : " times)");
}

/// Empty when there is nothing to tell.
std::string UntoldLine(const std::string& line, std::uint64_t repetitions) {
    if (repetitions == 0) {
        return {};
    }
    return line.substr(0, line.size() - 1) + ' ' + Count(repetitions) + '\n';
}

bool IsFoldable(std::string_view line) {
    return line.size() > 1 && line.size() <= CRepeatedLines::kLongestFolded &&
           !(line.front() >= '0' && line.front() <= '9');
}

} // namespace

std::string CRepeatedLines::Fold(std::string_view line, Core::MonotonicTime now) {
    if (!IsFoldable(line)) {
        return std::string(line);
    }
    SLine* const known = Find(line);
    if (known == nullptr) {
        return Remember(line, now).append(line);
    }
    if (now - known->printed < kWindow) {
        ++known->repetitions;
        return {};
    }
    known->printed = now;
    const std::uint64_t repetitions = std::exchange(known->repetitions, 0);
    return repetitions == 0 ? std::string(line) : UntoldLine(known->text, repetitions);
}

std::string CRepeatedLines::TakeUntold() {
    std::string output;
    for (SLine& line : m_lines) {
        output += UntoldLine(line.text, std::exchange(line.repetitions, 0));
    }
    return output;
}

CRepeatedLines::SLine* CRepeatedLines::Find(std::string_view line) {
    const auto found = std::find_if(m_lines.begin(), m_lines.end(),
                                    [line](const SLine& known) { return known.text == line; });
    return found == m_lines.end() ? nullptr : &*found;
}

std::string CRepeatedLines::Remember(std::string_view line, Core::MonotonicTime now) {
    if (m_lines.size() < kRemembered) {
        m_lines.push_back({std::string(line), now});
        return {};
    }
    SLine& oldest =
        *std::min_element(m_lines.begin(), m_lines.end(),
                          [](const SLine& a, const SLine& b) { return a.printed < b.printed; });
    std::string untold = UntoldLine(oldest.text, oldest.repetitions);
    oldest = {std::string(line), now};
    return untold;
}
