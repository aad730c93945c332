#include "mux/LateBytes.h"

#include <utility>

namespace Mux {

bool CLateBytes::Add(const std::string& piece) {
    if (piece.empty() || piece.size() > kCapacity - m_size) {
        return piece.empty();
    }
    m_pieces.push_back({Core::MonotonicTime::Now(), piece});
    m_size += piece.size();
    return true;
}

std::string CLateBytes::Take() {
    if (m_pieces.empty()) {
        return {};
    }
    std::string bytes = std::move(m_pieces.front().bytes);
    m_pieces.pop_front();
    m_size -= bytes.size();
    return bytes;
}

std::size_t CLateBytes::DropOld() {
    const std::size_t before = m_size;
    const Core::MonotonicTime now = Core::MonotonicTime::Now();
    while (!m_pieces.empty() && now - m_pieces.front().moment > kLifetime) {
        Take();
    }
    return before - m_size;
}

std::size_t CLateBytes::Clear() {
    m_pieces.clear();
    return std::exchange(m_size, 0);
}

} // namespace Mux
