#include "mux/Numbers.h"
#include "mux/Settings.h"
#include "platform/Config.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace Mux {

namespace {

constexpr std::string_view kOwnSection = "mux";
constexpr std::string_view kPortSection = "port ";

/// A missing file counts as an empty one for the configuration database; not here, where it was
/// named.
std::string WhyUnreadable(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat status {};
    std::string why;
    if (descriptor < 0 || fstat(descriptor, &status) != 0) {
        why = std::strerror(errno);
    } else if (!S_ISREG(status.st_mode)) {
        why = "not a file";
    }
    if (descriptor >= 0) {
        close(descriptor);
    }
    return why;
}

std::string ReadOwnKey(const std::string& key, const std::string& value, SGivenSettings& given) {
    if (key == "socket_dir") {
        given.socketFolder = value;
    } else if (key == "mode") {
        given.mode = value;
    } else if (key == "group") {
        given.group = value;
    } else if (key == "rpc_listen") {
        given.rpcListen = value;
    } else if (key == "rpc_port") {
        given.rpcPort = ReadPositive(value);
        return given.rpcPort ? "" : "'" + value + "' is no TCP port";
    } else {
        return "there is no key '" + key +
               "'; there are socket_dir, mode, group, rpc_listen and rpc_port";
    }
    return {};
}

std::string ReadPortKey(const std::string& key, const std::string& value, SPortSettings& port) {
    if (key == "device") {
        port.device = value;
    } else if (key == "name") {
        port.name = value;
    } else if (key == "baud") {
        port.baud = ReadPositive(value);
        return port.baud ? "" : "'" + value + "' is no baud rate";
    } else {
        return "there is no key '" + key + "'; there are device, baud and name";
    }
    return {};
}

std::string ReadSection(const std::string& section,
                        const std::map<std::string, std::string>& values, SGivenSettings& given) {
    SPortSettings* port = nullptr;
    if (section.starts_with(kPortSection)) {
        const auto number = ReadPositive(std::string_view(section).substr(kPortSection.size()));
        if (!number) {
            return "'" + section.substr(kPortSection.size()) + "' is no number of a port";
        }
        port = &given.ports[*number];
    } else if (section != kOwnSection) {
        return "there is no such section; there are [mux] and [port NUMBER]";
    }
    for (const auto& [key, value] : values) {
        std::string why =
            port == nullptr ? ReadOwnKey(key, value, given) : ReadPortKey(key, value, *port);
        if (!why.empty()) {
            return why;
        }
    }
    return {};
}

} // namespace

std::string ReadConfigurationFile(const std::string& path, SGivenSettings& given) {
    if (std::string why = WhyUnreadable(path); !why.empty()) {
        return path + ": " + why;
    }
    CConfig file(path);
    for (const std::string& section : file.GetSections()) {
        const auto values = file.GetSection(section);
        if (!values) {
            continue;
        }
        if (std::string why = ReadSection(section, *values, given); !why.empty()) {
            return (path + ": [").append(section).append("]: ").append(why);
        }
    }
    return {};
}

} // namespace Mux
