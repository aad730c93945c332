// Fuzzes the framers against their literal model: the same answers to any stream, cut in any way.
#include "ChecksumRepair.h"
#include "support/FramingComparison.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

/// The input's last bytes say how the stream before them is cut, so that a stream as the receiver
/// sends it needs only a few bytes behind it to be a corpus file.
constexpr std::size_t kLengths = 8;
constexpr std::size_t kControlSize = kLengths + 1;
constexpr std::uint8_t kDrains = 1;
constexpr std::uint8_t kRepairs = 2;

/// 0 to 191 as they are, then in steps of 64 up to the longest text sentence.
std::size_t ChunkLength(std::uint8_t byte) {
    return byte < 192 ? byte : std::size_t{64} * (byte - 191U);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < kControlSize) {
        return 0;
    }
    const std::uint8_t* const control = data + size - kControlSize;
    const std::uint8_t flags = control[kLengths];
    std::vector<std::uint8_t> stream(data, control);
    if ((flags & kRepairs) != 0) {
        RepairStream(stream);
    }
    std::size_t chunks = 0;
    const CChunkLengths nextLength = [&] {
        const std::size_t length = ChunkLength(control[chunks++ % kLengths]);
        // One chunk of each round has a byte at least: the stream must come to its end.
        return chunks % kLengths == 0 ? std::max<std::size_t>(length, 1) : length;
    };
    const CDifference difference = CompareFramers(stream, nextLength, (flags & kDrains) != 0);
    if (!difference.empty()) {
        std::fprintf(stderr, "The framers differ: %s\n", difference.c_str());
        std::abort();
    }
    return 0;
}
