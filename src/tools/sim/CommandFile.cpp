#include "CommandFile.h"

#include "platform/Text.h"

#include <fstream>

namespace Sim {

std::optional<std::vector<std::string>> ReadCommands(const std::string& path) {
    std::ifstream file(path);
    std::vector<std::string> commands;
    std::string line;
    while (std::getline(file, line)) {
        const std::string_view command = Core::Utilities::Trim(line);
        if (!command.empty()) {
            commands.emplace_back(command);
        }
    }
    if (!file.eof()) {
        return std::nullopt;
    }
    return commands;
}

std::vector<std::string> UsualCommands() {
    return {
        "log versionb once",       "log rxstatusb once",        "log psrdopb ontime 10",
        "log rxstatusb onchanged", "log comconfigb ontime 10",  "pdpfilter enable",
        "pdpmode relative auto",   "log pdpxyzb ontime 0.05",   "log pdpstatb ontime 0.05",
        "log rtkxyzb ontime 0.05", "log bestposb ontime 1",     "log rangeb ontime 0.5",
        "log trackstatb ontime 1", "log refstationb ontime 10", "log rtksatsb ontime 0.5",
        "log pdpsatsb ontime 0.5", "log psrsatsb ontime 0.5",   "log psrposb ontime 0.5",
        "log rtkposb ontime 0.5",  "log versiona once",         "log rxconfiga once",
        "log timeb ontime 0.05",   "log gpgsv ontime 1",        "log gpgsa ontime 1",
        "log gpzda ontime 1",      "log gpgst ontime 1",        "log chanconfiglistb once",
        "log loglistb once",       "log rxconfigb once",
    };
}

} // namespace Sim
