// What clients write while their device is away: kept for a while, for when it comes back.
#pragma once

#include "platform/Time.h"
#include "platform/WriteTail.h"

#include <cstddef>
#include <deque>
#include <string>

namespace Mux {

class CLateBytes {
public:
    static constexpr std::size_t kCapacity = Core::IO::WriteTail::kCapacity;
    /// A command that is older belongs to a conversation that nobody remembers.
    static constexpr Core::Time kLifetime = Core::IO::WriteTail::kStallLimit;

    /// Keeps a piece whole; false when it does not fit beside the others.
    bool Add(const std::string& piece);
    /// The oldest piece, and forgets it; empty when there is none.
    std::string Take();
    /// Forgets what is too old; returns how many bytes that were.
    std::size_t DropOld();
    /// Forgets everything; returns how many bytes that were.
    std::size_t Clear();
    std::size_t Size() const { return m_size; }

private:
    struct SPiece {
        Core::MonotonicTime moment;
        std::string bytes;
    };

    std::deque<SPiece> m_pieces;
    std::size_t m_size = 0;
};

} // namespace Mux
