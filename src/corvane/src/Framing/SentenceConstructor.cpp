#include "Framing/SentenceConstructor.h"

#include <cstring>

void CSentenceConstructor::AddBytes(const std::vector<std::uint8_t>& chunk) {
    // Moving what is unread only once at least as much lies read before it keeps the work per byte
    // constant however small the chunks are, and the buffer within twice what is unread.
    if (m_begin >= m_input.size() - m_begin) {
        m_input.erase(m_input.begin(), m_input.begin() + static_cast<std::ptrdiff_t>(m_begin));
        m_begin = 0;
    }
    m_input.insert(m_input.end(), chunk.begin(), chunk.end());
}

int CSentenceConstructor::GetSentence(std::vector<std::uint8_t>& out) {
    const int result = ConstructSentence();
    if (result == kCompleted) {
        out.assign(m_completed.begin(), m_completed.end());
        m_completed = {};
    } else if (result == kRejected) {
        out.clear();
    }
    return result;
}

bool CSentenceConstructor::SearchFor(std::uint8_t start) {
    const std::span<const std::uint8_t> unread = Unread();
    const void* found = std::memchr(unread.data(), start, unread.size());
    if (found == nullptr) {
        Drop(unread.size());
        return false;
    }
    Drop(static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - unread.data()));
    return true;
}

int CSentenceConstructor::Complete(std::size_t length, std::size_t count) {
    m_completed = Unread().first(length);
    Drop(count);
    return kCompleted;
}

int CSentenceConstructor::Reject(std::size_t count) {
    Drop(count);
    return kRejected;
}
