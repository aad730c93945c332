#include "ConfigWriting.h"

#include "ScopedDescriptor.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>

namespace ConfigWriting {

namespace {

constexpr std::chrono::seconds kLongestLockWait(1);
/// Short against the time a writer holds the lock, so that even one that writes on and on does not
/// keep it from others.
constexpr int kMillisecondsBetweenTries = 1;

std::string Failure(const std::string& what, const std::string& path) {
    return "cannot " + what + ' ' + path + ": " + std::strerror(errno);
}

std::string FolderOf(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path().string();
    return folder.empty() ? "." : folder;
}

/// A new name is on the disk only when its folder is.
std::string SyncFolder(const std::string& folder) {
    const CScopedDescriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor.IsOpen()) {
        return Failure("open", folder);
    }
    // EINVAL: a file system that knows no such thing for folders.
    if (fsync(descriptor.Get()) != 0 && errno != EINVAL) {
        return Failure("sync", folder);
    }
    return {};
}

std::string MakeFolder(const std::string& folder) {
    struct stat status = {};
    if (stat(folder.c_str(), &status) == 0) {
        return {};
    }
    const std::string parent = FolderOf(folder);
    std::string reason = parent == folder ? std::string() : MakeFolder(parent);
    if (!reason.empty()) {
        return reason;
    }
    if (mkdir(folder.c_str(), 0755) != 0 && errno != EEXIST) {
        return Failure("create", folder);
    }
    return SyncFolder(parent);
}

bool WriteAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t taken = write(descriptor, text.data(), text.size());
        if (taken >= 0) {
            text.remove_prefix(static_cast<std::size_t>(taken));
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

bool SetModeAndOwner(int descriptor, const struct stat* former) {
    if (former == nullptr) {
        return fchmod(descriptor, 0644) == 0;
    }
    struct stat own = {};
    if (fstat(descriptor, &own) != 0) {
        return false;
    }
    const bool isSameOwner = own.st_uid == former->st_uid && own.st_gid == former->st_gid;
    if (!isSameOwner && fchown(descriptor, former->st_uid, former->st_gid) != 0) {
        return false;
    }
    return fchmod(descriptor, former->st_mode & 07777) == 0;
}

/// `former` is the file that the new one is to look like, if there is one.
std::string WriteTemporary(const std::string& path, const std::string& text,
                           const struct stat* former) {
    // The lock is held: what has this name is left from a program that was killed.
    unlink(path.c_str());
    const CScopedDescriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file.IsOpen()) {
        return Failure("create", path);
    }
    if (!WriteAll(file.Get(), text)) {
        return Failure("write", path);
    }
    if (!SetModeAndOwner(file.Get(), former)) {
        return Failure("set the mode and owner of", path);
    }
    return fsync(file.Get()) == 0 ? std::string() : Failure("sync", path);
}

} // namespace

CLock::~CLock() {
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
}

std::string CLock::Take(const std::string& path) {
    const std::string name = path + ".lock";
    m_descriptor = open(name.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0644);
    if (m_descriptor < 0) {
        return Failure("open", name);
    }
    const auto deadline = std::chrono::steady_clock::now() + kLongestLockWait;
    do {
        if (flock(m_descriptor, LOCK_EX | LOCK_NB) == 0) {
            return {};
        }
        if (errno != EWOULDBLOCK && errno != EINTR) {
            return Failure("lock", name);
        }
        poll(nullptr, 0, kMillisecondsBetweenTries);
    } while (std::chrono::steady_clock::now() < deadline);
    return "another program has held " + name + " for a second";
}

std::string MakeFolderOf(const std::string& path) {
    return MakeFolder(FolderOf(path));
}

std::string Replace(const std::string& path, const std::string& text) {
    struct stat former = {};
    const bool isThere = stat(path.c_str(), &former) == 0;
    if (!isThere && errno != ENOENT) {
        return Failure("inspect", path);
    }
    if (isThere && !S_ISREG(former.st_mode)) {
        return path + " is not a regular file";
    }
    const std::string temporary = path + ".new";
    std::string reason = WriteTemporary(temporary, text, isThere ? &former : nullptr);
    if (reason.empty() && std::rename(temporary.c_str(), path.c_str()) != 0) {
        reason = Failure("replace", path);
    }
    if (!reason.empty()) {
        unlink(temporary.c_str());
        return reason;
    }
    return SyncFolder(FolderOf(path));
}

} // namespace ConfigWriting
