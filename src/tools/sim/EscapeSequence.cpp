#include "EscapeSequence.h"

#include "platform/Text.h"

namespace Sim {

namespace {

constexpr std::string_view kEscape = "+++";
/// Above this it is no escape, whatever follows.
constexpr std::size_t kLongestBurst = 16;

} // namespace

bool CEscapeSequence::Hear(std::string_view bytes, Milliseconds now) {
    if (now - m_lastHeard >= kSilence) {
        m_hasOne = IsWhole();
        m_burst.clear();
    }
    m_lastHeard = now;
    if (m_burst.size() <= kLongestBurst) {
        m_burst += bytes.substr(0, kLongestBurst + 1);
    }
    if (!m_hasOne || !IsWhole()) {
        return false;
    }
    m_hasOne = false;
    m_burst.clear();
    return true;
}

bool CEscapeSequence::IsWhole() const {
    return Core::Utilities::Trim(m_burst) == kEscape;
}

} // namespace Sim
