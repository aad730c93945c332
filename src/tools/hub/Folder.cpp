#include "hub/Folder.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>

namespace Hub {

std::string MakeFolder(const std::string& path) {
    constexpr mode_t kMode = 0755;
    const std::filesystem::path folder(path);
    if (path.empty() || std::filesystem::is_directory(folder)) {
        return "";
    }
    if (folder.has_relative_path() && folder.parent_path() != folder) {
        if (std::string why = MakeFolder(folder.parent_path()); !why.empty()) {
            return why;
        }
    }
    if (::mkdir(path.c_str(), kMode) != 0 && errno != EEXIST) {
        return "cannot make the folder " + path + ": " + std::strerror(errno);
    }
    return std::filesystem::is_directory(folder) ? "" : path + " is no folder";
}

} // namespace Hub
