// The dashboard's files, built into the program.
#pragma once

#include <span>
#include <string_view>

namespace Hub {

struct SAsset {
    std::string_view path; ///< as a browser asks for it
    std::string_view type; ///< its media type
    std::string_view content;
};

std::span<const SAsset> Assets();

} // namespace Hub
