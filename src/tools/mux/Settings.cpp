#include "mux/Settings.h"

#include "mux/DeviceName.h"
#include "mux/Numbers.h"
#include "platform/QuentaNames.h"

#include <arpa/inet.h>
#include <charconv>
#include <grp.h>
#include <sys/un.h>

namespace Mux {

namespace {

constexpr mode_t kMaxMode = 0777;
constexpr std::int32_t kMaxTCPPort = 65535;

template <typename T>
std::optional<T> Winner(const std::optional<T>& commandLine, const std::optional<T>& file) {
    return commandLine ? commandLine : file;
}

std::string ReadMode(const std::string& text, mode_t& mode) {
    unsigned int value = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, value, 8);
    if (read.ec != std::errc() || read.ptr != end || value > kMaxMode) {
        return "'" + text + "' is no mode of a file: three octal digits are, such as 660";
    }
    mode = value;
    return {};
}

std::string ReadGroup(const std::string& text, std::optional<gid_t>& group) {
    if (const struct group* const found = getgrnam(text.c_str())) {
        group = found->gr_gid;
        return {};
    }
    if (const std::optional<std::int32_t> number = ReadPositive(text)) {
        group = static_cast<gid_t>(*number);
        return {};
    }
    return "there is no group '" + text + "'";
}

std::string CombineSockets(const SGivenSettings& file, const SGivenSettings& commandLine,
                           SSettings& settings) {
    settings.socketFolder =
        Winner(commandLine.socketFolder, file.socketFolder).value_or(settings.socketFolder);
    // What follows is "/tty_socket_", at most ten digits and a zero byte.
    if (settings.socketFolder.size() + 23 > sizeof sockaddr_un::sun_path) {
        return "the path of the sockets' folder is too long";
    }
    if (const auto mode = Winner(commandLine.mode, file.mode)) {
        if (std::string why = ReadMode(*mode, settings.mode); !why.empty()) {
            return why;
        }
    }
    if (const auto group = Winner(commandLine.group, file.group)) {
        return ReadGroup(*group, settings.group);
    }
    return {};
}

std::string CombineRPC(const SGivenSettings& file, const SGivenSettings& commandLine,
                       SSettings& settings) {
    settings.rpcListen = Winner(commandLine.rpcListen, file.rpcListen).value_or(settings.rpcListen);
    in_addr ignored{};
    if (inet_pton(AF_INET, settings.rpcListen.c_str(), &ignored) != 1) {
        return "'" + settings.rpcListen + "' is no IPv4 address in numbers";
    }
    const std::int32_t port = Winner(commandLine.rpcPort, file.rpcPort).value_or(settings.rpcPort);
    if (port < 1 || port > kMaxTCPPort) {
        return std::to_string(port) + " is no TCP port";
    }
    settings.rpcPort = static_cast<std::uint16_t>(port);
    return {};
}

std::string CombinePorts(const SGivenSettings& file, const SGivenSettings& commandLine,
                         SSettings& settings) {
    std::map<std::int32_t, SPortSettings> ports = file.ports;
    for (const auto& [number, said] : commandLine.ports) {
        SPortSettings& port = ports[number];
        port.device = Winner(said.device, port.device);
        port.baud = Winner(said.baud, port.baud);
    }
    std::map<std::string, std::int32_t> users;
    for (const auto& [number, said] : ports) {
        const std::string device = said.device.value_or("");
        const std::string where = "port " + std::to_string(number) + ": ";
        if (std::string why = WhyNoDevice(device); !why.empty()) {
            return where + why;
        }
        const auto [user, isFirst] = users.emplace(device, number);
        if (!isFirst) {
            return where + device + " is the device of port " + std::to_string(user->second) +
                   " already";
        }
        settings.ports.push_back({number, said.name.value_or(std::string(QuentaPortName(number))),
                                  device, said.baud.value_or(kDefaultBaud)});
    }
    return {};
}

} // namespace

std::string ReadPortOption(const std::string& text, SGivenSettings& given) {
    const std::size_t equals = text.find('=');
    const std::optional<std::int32_t> number = ReadPositive(text.substr(0, equals));
    if (equals == std::string::npos || !number) {
        return "--port " + text + ": must be NUMBER=DEVICE or NUMBER=DEVICE@BAUD";
    }
    SPortSettings port;
    port.device = text.substr(equals + 1);
    if (const std::size_t at = port.device->rfind('@'); at != std::string::npos) {
        port.baud = ReadPositive(port.device->substr(at + 1));
        if (!port.baud) {
            return "--port " + text + ": '" + port.device->substr(at + 1) + "' is no baud rate";
        }
        port.device->resize(at);
    }
    if (!given.ports.emplace(*number, port).second) {
        return "--port " + text + ": port " + std::to_string(*number) + " is given twice";
    }
    return {};
}

std::string Combine(const SGivenSettings& file, const SGivenSettings& commandLine,
                    SSettings& settings) {
    for (const auto combine : {CombineSockets, CombineRPC, CombinePorts}) {
        if (std::string why = combine(file, commandLine, settings); !why.empty()) {
            return why;
        }
    }
    return settings.ports.empty() ? "no port is named; --port and --config name them" : "";
}

} // namespace Mux
