#include "FirmwareFile.h"

#include "platform/Text.h"

#include <filesystem>
#include <fstream>

namespace Ctl {

namespace {

bool IsSRecord(std::string_view line) {
    return line.size() >= 2 && line[0] == 'S' && line[1] >= '0' && line[1] <= '9';
}

} // namespace

std::string WhyNoFirmware(const std::string& path) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (status.type() == std::filesystem::file_type::not_found) {
        return path + ": there is no such file";
    }
    if (error) {
        return "";
    }
    if (!std::filesystem::is_regular_file(status)) {
        return path + ": not a file";
    }
    std::ifstream file(path);
    std::string line;
    while (file && Core::Utilities::Trim(line).empty()) {
        std::getline(file, line);
    }
    if (!file.is_open() || IsSRecord(Core::Utilities::Trim(line))) {
        return "";
    }
    return path + ": not a firmware file, which is text made of S-records (S0..., S3...)";
}

} // namespace Ctl
