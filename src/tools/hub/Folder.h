// The folders that the hub makes for what it keeps.
#pragma once

#include <string>

namespace Hub {

/// Makes a folder and those above it that are missing, readable for everybody. Returns why it
/// cannot be made, the empty text when it is there.
std::string MakeFolder(const std::string& path);

} // namespace Hub
