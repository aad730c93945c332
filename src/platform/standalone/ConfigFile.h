// A configuration file on disk: read again whenever it has changed, written whole and durably.
#pragma once

#include "ConfigText.h"

#include <cstdint>
#include <functional>
#include <string>
#include <sys/stat.h>

/// Several programs may read and write the file at once. What is wrong with reading it is told on
/// standard error, once per content.
class CConfigFile {
public:
    explicit CConfigFile(std::string path);

    const std::string& Path() const { return m_path; }

    /// What the file says now; a missing file is empty. While it cannot be read, what it said last.
    const CConfigText& Read();

    /// Applies `change` to what the file says now and writes the result, holding the file's lock
    /// meanwhile. A symbolic link stays and its target is written. Nothing is written when nothing
    /// changes. Returns why it is not safely in the file, the empty text when it is.
    std::string Change(const std::function<void(CConfigText&)>& change);

private:
    /// What tells one state of the file from another; all zero when there is no file.
    struct SStamp {
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
        std::int64_t size = 0;
        std::int64_t modified = 0; ///< nanoseconds since the Unix epoch, as the next one
        std::int64_t changed = 0;

        bool operator==(const SStamp&) const = default;
    };

    static SStamp StampOf(const struct stat& status);

    CConfigText Changed(const std::function<void(CConfigText&)>& change) const;
    std::string ChangeUnderLock(const std::string& target,
                                const std::function<void(CConfigText&)>& change);
    bool IsUnchanged() const;
    void Load();
    void Take(const std::string& text);
    void Fail(const std::string& reason);

    const std::string m_path;
    CConfigText m_text;
    SStamp m_stamp;
    bool m_isStampSure = false;
    std::string m_whyUnreadable;
};
