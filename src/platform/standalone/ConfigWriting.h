// Replacing a configuration file as a whole, with other writers locked out.
#pragma once

#include <string>

/// All of these return why something could not be done, and the empty text when it was.
namespace ConfigWriting {

/// The advisory lock (flock) on "<path>.lock", given up at the end of the scope. The lock file
/// stays: who removed it could take it from under another program.
class CLock {
public:
    CLock() = default;
    ~CLock();
    CLock(const CLock&) = delete;
    CLock& operator=(const CLock&) = delete;

    /// Waits at most one second.
    std::string Take(const std::string& path);

private:
    int m_descriptor = -1;
};

/// Creates the folder that the file is to be in, and those above it, where there are none.
std::string MakeFolderOf(const std::string& path);

/// Replaces the file, the lock held, so that after a crash at any moment there is either the old
/// text or the new one. Keeps its mode and owner; a new file gets 0644. What is there must be a
/// regular file.
std::string Replace(const std::string& path, const std::string& text);

} // namespace ConfigWriting
