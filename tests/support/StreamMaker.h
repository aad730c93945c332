// Byte streams for comparing and measuring framers: hostile, random and receiver-like.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace StreamMaker {

using ByteVector = std::vector<std::uint8_t>;

/// A stream that asks for the most work: one pattern over and over.
struct SHostileStream {
    const char* name;
    std::string pattern;
};

const std::vector<SHostileStream>& HostileStreams();

/// `pattern` over and over, cut at `size`.
ByteVector Repeated(const std::string& pattern, std::size_t size);

/// Random pieces one after another: good and damaged sentences of each kind, single bytes that mean
/// something to a framer, stretches of any byte, stretches of hostile patterns.
ByteVector RandomStream(std::mt19937& random, std::size_t pieces);

/// What a receiver sends in a quiet hour: binary logs of common sizes, some ASCII and NMEA between
/// them, all good; at least `size` bytes.
ByteVector ReceiverStream(std::size_t size);

/// The whole file, empty when it cannot be read.
ByteVector ReadFile(const std::string& path);

/// A real receiver's capture, empty where there are none. They are not the project's to publish:
/// they lie beside the checkout, or where the environment variable CORVANE_CAPTURES says.
ByteVector ReadCapture(const std::string& name);

} // namespace StreamMaker
