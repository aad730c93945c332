// Appends the receiver's little-endian values, on any machine.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace Sim {

class CByteWriter {
public:
    CByteWriter& U8(std::uint8_t value) { return Put(value, 1); }
    CByteWriter& U16(std::uint16_t value) { return Put(value, 2); }
    CByteWriter& U32(std::uint32_t value) { return Put(value, 4); }
    /// How many follow.
    CByteWriter& Count(std::size_t value) { return U32(static_cast<std::uint32_t>(value)); }
    CByteWriter& Float(float value) { return U32(std::bit_cast<std::uint32_t>(value)); }
    CByteWriter& Double(double value) { return Put(std::bit_cast<std::uint64_t>(value), 8); }
    /// Cut or filled up with zero bytes to `width`.
    CByteWriter& Text(std::string_view text, std::size_t width) {
        for (std::size_t i = 0; i < width; ++i) {
            U8(i < text.size() ? static_cast<std::uint8_t>(text[i]) : std::uint8_t{0});
        }
        return *this;
    }
    CByteWriter& Append(const std::vector<std::uint8_t>& bytes) {
        m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
        return *this;
    }

    const std::vector<std::uint8_t>& Written() const { return m_bytes; }

private:
    CByteWriter& Put(std::uint64_t value, std::size_t width) {
        for (std::size_t i = 0; i < width; ++i) {
            m_bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        }
        return *this;
    }

    std::vector<std::uint8_t> m_bytes;
};

} // namespace Sim
