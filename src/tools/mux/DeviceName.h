// What the text of a port's device names: a serial line by its path, or a TCP peer.
#pragma once

#include <optional>
#include <string>

namespace Mux {

struct STCPAddress {
    std::string host;
    std::string port; ///< in digits
};

/// Of "tcp:host:port"; an IPv6 address stands in square brackets. Nothing for any other text.
std::optional<STCPAddress> ReadTCPAddress(const std::string& device);

/// Why the text names no device; empty when it does. A path must be absolute, and nothing has to be
/// there yet.
std::string WhyNoDevice(const std::string& device);

} // namespace Mux
