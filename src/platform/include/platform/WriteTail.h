// The bytes that a descriptor would not take at once, kept in order until it does.
#pragma once

#include "platform/Time.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace Core::IO {

/// Writes to a non-blocking descriptor without ever waiting. Used by every live byte source.
/// SIGPIPE must be ignored when the descriptor is a socket.
class WriteTail {
public:
    /// At most this many bytes wait; a write that would leave more, had none of it gone at once,
    /// is refused whole. So a single write of more than this is always refused.
    static constexpr std::size_t kCapacity = std::size_t{256} * 1024;
    /// A tail of which nothing leaves for so long is a failed write.
    static constexpr Time kStallLimit = Time::FromMilliseconds(10'000);

    enum class EResult {
        ok,      ///< written, or taken into the tail
        refused, ///< no room in the tail: nothing of this write was taken
        lost,    ///< the descriptor failed (errno says how) or stalled (errno ETIMEDOUT)
    };

    /// Writes `count` bytes to the descriptor behind whatever waits already.
    EResult Write(int descriptor, const std::uint8_t* bytes, std::size_t count);

    /// Goes on with what waits.
    EResult Continue(int descriptor);

    bool IsEmpty() const { return m_waiting.empty(); }
    /// How many bytes wait.
    std::size_t Size() const { return m_waiting.size(); }
    /// To be called when the descriptor is closed: what waited for it is not for the next one.
    void Clear() { m_waiting.clear(); }

private:
    std::string m_waiting;
    MonotonicTime m_lastProgress;
};

} // namespace Core::IO
