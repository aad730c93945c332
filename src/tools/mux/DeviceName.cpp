#include "mux/DeviceName.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <string_view>

namespace Mux {

namespace {

constexpr std::string_view kTCP = "tcp:";

bool IsPort(std::string_view text) {
    unsigned int port = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), port);
    return read.ec == std::errc() && read.ptr == text.data() + text.size() && port >= 1 &&
           port <= 65535;
}

bool IsUnprintable(char c) {
    return static_cast<unsigned char>(c) < ' ' || c == '\x7F';
}

} // namespace

std::optional<STCPAddress> ReadTCPAddress(const std::string& device) {
    std::string_view text = device;
    if (!text.starts_with(kTCP)) {
        return std::nullopt;
    }
    text.remove_prefix(kTCP.size());
    const std::size_t colon = text.rfind(':');
    if (colon == std::string_view::npos || !IsPort(text.substr(colon + 1))) {
        return std::nullopt;
    }
    std::string_view host = text.substr(0, colon);
    if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
        host = host.substr(1, host.size() - 2);
    } else if (host.find_first_of(":[] ") != std::string_view::npos) {
        return std::nullopt;
    }
    if (host.empty()) {
        return std::nullopt;
    }
    return STCPAddress{std::string(host), std::string(text.substr(colon + 1))};
}

std::string WhyNoDevice(const std::string& device) {
    if (device.empty()) {
        return "no device is named";
    }
    if (std::any_of(device.begin(), device.end(), IsUnprintable)) {
        return "the device has an unprintable character";
    }
    if (device.starts_with(kTCP)) {
        return ReadTCPAddress(device) ? "" : "'" + device + "' is not of the form tcp:HOST:PORT";
    }
    if (device.front() != '/') {
        return "'" + device + "' is neither an absolute path nor tcp:HOST:PORT";
    }
    return device.size() < PATH_MAX ? "" : "the device's path is too long";
}

} // namespace Mux
