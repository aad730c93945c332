// A command that knows how to write itself in the receiver's binary form.
#pragma once

#include <cstdint>
#include <vector>

/// Handed to the port handler's SendCommand(), which passes the four header fields through.
class CReceiverCommand {
public:
    virtual ~CReceiverCommand() = default;

    /// Appends the whole binary message to `bytes`; false when the command cannot be encoded.
    /// `week` and `milliseconds` of week are GPS time.
    virtual bool Encode(std::vector<std::uint8_t>& bytes, std::uint8_t portAddress,
                        std::uint16_t sequence, std::uint16_t week,
                        std::uint32_t milliseconds) const = 0;
};
