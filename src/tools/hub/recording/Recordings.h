// The folder of recordings: a series of files for each name, of bounded size together.
#pragma once

#include "hub/Complaint.h"
#include "hub/Messages.h"
#include "platform/RecordingWriter.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace Hub {

struct SRecordingLimits {
    std::uint64_t fileBytes = 0;   ///< a file ends before it is larger; at half of the folder's
    double fileSeconds = 0.0;      ///< or when it is this old
    std::uint64_t folderBytes = 0; ///< the oldest files go when all together are larger
};

/// Every file can be replayed at any time, also while it is written and when the program was
/// killed. Whatever goes wrong is told on standard error and tried again with the next block. To be
/// used by one thread.
class CRecordings {
public:
    CRecordings(const std::string& folder, const SRecordingLimits& limits);
    /// Ends all files.
    ~CRecordings();
    CRecordings(const CRecordings&) = delete;
    CRecordings& operator=(const CRecordings&) = delete;

    /// Adds a block to the present file of its name, or to a new one.
    void Add(const SRawBlock& block);
    /// Ends the present file of a name.
    void End(const std::string& name);

private:
    struct SFile {
        CRecordingWriter writer;
        std::filesystem::path path;
        double start = 0.0; ///< of its first block
    };
    struct SFound {
        std::filesystem::path path;
        std::filesystem::file_time_type written;
        std::uint64_t bytes = 0;
    };
    using TFiles = std::map<std::string, SFile>; ///< by name, those that are written

    bool HasEnded(const SFile& file, const SRawBlock& block) const;
    TFiles::iterator Begin(const SRawBlock& block);
    std::filesystem::path NewPath(const SRawBlock& block) const;
    void Finish(TFiles::iterator file);
    void MakeRoom(std::uint64_t bytes);
    std::vector<SFound> OldestFirst() const;
    void Remove(const SFound& found);

    const std::filesystem::path m_folder;
    SRecordingLimits m_limits;
    TFiles m_files;
    std::uint64_t m_bytes = 0; ///< of all files; more than there are when somebody removes some
    CComplaint m_complaint{"The recordings"};
    CComplaint m_removal{"The recordings"}; ///< about the oldest ones
};

} // namespace Hub
