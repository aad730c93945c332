// What the multiplexer is told to do, put together from its configuration file and command line.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace Mux {

/// The daemon's own unless set, so that the two agree without a word.
inline constexpr std::int32_t kDefaultBaud = 460800;

/// What was said of a port; the rest has defaults.
struct SPortSettings {
    std::optional<std::string> device;
    std::optional<std::int32_t> baud;
    std::optional<std::string> name;
};

/// What was said by the file or by the command line; what was not said has no value.
struct SGivenSettings {
    std::optional<std::string> socketFolder;
    std::optional<std::string> mode;
    std::optional<std::string> group;
    std::optional<std::string> rpcListen;
    std::optional<std::int32_t> rpcPort;
    std::map<std::int32_t, SPortSettings> ports;
};

struct SPort {
    std::int32_t number;
    std::string name;
    std::string device;
    std::int32_t baud;
};

/// What holds in the end.
struct SSettings {
    std::string socketFolder = "/tmp";
    mode_t mode = 0660;
    std::optional<gid_t> group; ///< the process's own unless set
    std::string rpcListen = "127.0.0.1";
    std::uint16_t rpcPort = 5309;
    bool isVerbose = false;
    std::vector<SPort> ports; ///< by rising number
};

/// Each of these returns what is wrong, the empty text when nothing is.

/// Reads "NUMBER=DEVICE" or "NUMBER=DEVICE@BAUD".
std::string ReadPortOption(const std::string& text, SGivenSettings& given);

/// Reads a configuration file.
std::string ReadConfigurationFile(const std::string& path, SGivenSettings& given);

/// Puts the two together; what the command line says of something wins.
std::string Combine(const SGivenSettings& file, const SGivenSettings& commandLine,
                    SSettings& settings);

} // namespace Mux
