// Raw blocks, and what is in a folder of recordings.
#pragma once

#include "hub/Messages.h"
#include "platform/LogFileReader.h"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace RecordingTesting {

/// 2023-11-14 22:13:20 UTC.
inline constexpr double kStart = 1700000000.0;

inline Hub::SRawBlock Block(const std::string& name, double time, const std::string& bytes) {
    Hub::SRawBlock block;
    block.name = name;
    block.time = time;
    block.bytes = bytes;
    return block;
}

using TBlocks = std::vector<std::pair<double, std::string>>; ///< seconds since kStart, bytes

inline TBlocks Read(const std::string& path) {
    TBlocks blocks;
    CLogFileReader reader(path);
    double seconds = 0.0;
    std::string data;
    while (reader.IsOpen() && reader.GetNextBinary(seconds, data)) {
        blocks.emplace_back(seconds - kStart, data);
    }
    return blocks;
}

/// Each file of the folder, by name.
inline std::map<std::string, TBlocks> ReadFolder(const std::string& folder) {
    std::map<std::string, TBlocks> files;
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
        files[file.path().filename()] = Read(file.path());
    }
    return files;
}

} // namespace RecordingTesting
