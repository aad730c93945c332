#include "ConfigFile.h"

#include "ConfigWriting.h"
#include "ScopedDescriptor.h"
#include "platform/DebugPrint.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <system_error>
#include <utility>

namespace {

/// A sane configuration is a few kilobytes; a path that leads elsewhere must not fill the memory.
constexpr std::int64_t kLargestFile = 4 * 1024 * 1024;

/// How coarse the time stamps of file systems are at most (FAT: 2 s), with some room.
constexpr std::int64_t kCoarsestStamp = 3'000'000'000;

/// A broken file of another kind must not flood the trace.
constexpr std::size_t kMostProblemsTold = 10;

std::int64_t Nanoseconds(const timespec& time) {
    return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

/// The file system's own clock, whatever clock the program runs by.
std::int64_t Now() {
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    return Nanoseconds(now);
}

constexpr std::size_t kMostLinks = 40; // as the kernel follows at most

/// Where the path leads when it is a symbolic link, also to a file that does not exist yet: the
/// link is to stay, so the file that it names is the one to lock and to replace.
std::string FollowLinks(const std::string& path) {
    std::filesystem::path target = path;
    std::error_code error;
    for (std::size_t i = 0; i < kMostLinks && std::filesystem::is_symlink(target, error); ++i) {
        const std::filesystem::path next = std::filesystem::read_symlink(target, error);
        target = target.parent_path() / next; // an absolute one replaces what stands before it
    }
    return target.string();
}

/// Why the file is not one to read; nullptr when it is. A device such as /dev/null reads as it is.
const char* WhyNotReadable(const struct stat& status) {
    if (!S_ISREG(status.st_mode) && !S_ISCHR(status.st_mode)) {
        return "not a regular file";
    }
    return status.st_size > kLargestFile ? "larger than 4 MiB" : nullptr;
}

/// Reads to the end, or to kLargestFile; false with errno set.
bool ReadAll(int descriptor, std::string& text) {
    char buffer[4096];
    while (static_cast<std::int64_t>(text.size()) < kLargestFile) {
        const ssize_t count = read(descriptor, buffer, sizeof buffer);
        if (count == 0) {
            return true;
        }
        if (count > 0) {
            text.append(buffer, static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

bool Holds(const std::vector<CConfigText::SProblem>& problems, const std::string& line) {
    return std::any_of(problems.begin(), problems.end(),
                       [&](const CConfigText::SProblem& problem) { return problem.line == line; });
}

/// A line that was told before, in an earlier content, is not told again.
void TellProblems(const std::string& path, const std::vector<CConfigText::SProblem>& problems,
                  const std::vector<CConfigText::SProblem>& toldBefore) {
    std::size_t count = 0;
    for (const auto& [lineNumber, line] : problems) {
        if (!Holds(toldBefore, line) && ++count <= kMostProblemsTold) {
            deprintf("%s:%zu: neither \"[section]\" nor \"key = value\", ignored\n", path.c_str(),
                     lineNumber);
        }
    }
    if (count > kMostProblemsTold) {
        deprintf("%s: %zu more lines are ignored\n", path.c_str(), count - kMostProblemsTold);
    }
}

} // namespace

CConfigFile::CConfigFile(std::string path) : m_path(std::move(path)) {
}

CConfigFile::SStamp CConfigFile::StampOf(const struct stat& status) {
    return {static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino),
            static_cast<std::int64_t>(status.st_size), Nanoseconds(status.st_mtim),
            Nanoseconds(status.st_ctim)};
}

const CConfigText& CConfigFile::Read() {
    if (!IsUnchanged()) {
        Load();
    }
    return m_text;
}

bool CConfigFile::IsUnchanged() const {
    struct stat status = {};
    if (!m_isStampSure) {
        return false;
    }
    if (stat(m_path.c_str(), &status) != 0) {
        return errno == ENOENT && m_stamp == SStamp();
    }
    return StampOf(status) == m_stamp;
}

void CConfigFile::Load() {
    m_isStampSure = false;
    const CScopedDescriptor file(
        open(m_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.IsOpen() && (errno == ENOENT || errno == ENOTDIR)) {
        m_stamp = SStamp();
        m_isStampSure = true;
        Take("");
        return;
    }
    struct stat status = {};
    if (!file.IsOpen() || fstat(file.Get(), &status) != 0) {
        Fail(std::strerror(errno));
        return;
    }
    if (const char* const reason = WhyNotReadable(status)) {
        Fail(reason);
        return;
    }
    std::string text;
    if (!ReadAll(file.Get(), text)) {
        Fail(std::strerror(errno));
        return;
    }
    m_stamp = StampOf(status);
    // A file changed a moment ago may change again within the same stamp.
    m_isStampSure = Now() - std::max(m_stamp.modified, m_stamp.changed) > kCoarsestStamp;
    Take(text);
}

void CConfigFile::Take(const std::string& text) {
    m_whyUnreadable.clear();
    if (text == m_text.Text()) {
        return;
    }
    const std::vector<CConfigText::SProblem> toldBefore = m_text.Problems();
    m_text = CConfigText(text);
    TellProblems(m_path, m_text.Problems(), toldBefore);
}

void CConfigFile::Fail(const std::string& reason) {
    if (reason != m_whyUnreadable) {
        deprintf("%s cannot be read: %s\n", m_path.c_str(), reason.c_str());
    }
    m_whyUnreadable = reason;
}

std::string CConfigFile::Change(const std::function<void(CConfigText&)>& change) {
    // First without the lock: what is there already needs no writing, and no permission to.
    Read();
    if (m_whyUnreadable.empty() && Changed(change).Text() == m_text.Text()) {
        return {};
    }
    const std::string target = FollowLinks(m_path);
    ConfigWriting::CLock lock;
    std::string reason = ConfigWriting::MakeFolderOf(target);
    if (reason.empty()) {
        reason = lock.Take(target);
    }
    return reason.empty() ? ChangeUnderLock(target, change) : reason;
}

std::string CConfigFile::ChangeUnderLock(const std::string& target,
                                         const std::function<void(CConfigText&)>& change) {
    Load();
    if (!m_whyUnreadable.empty()) {
        return "it cannot be read: " + m_whyUnreadable;
    }
    CConfigText text = Changed(change);
    std::string reason;
    if (text.Text() != m_text.Text()) {
        reason = ConfigWriting::Replace(target, text.Text());
        m_isStampSure = false;
    }
    if (reason.empty()) {
        m_text = std::move(text);
    }
    return reason;
}

CConfigText CConfigFile::Changed(const std::function<void(CConfigText&)>& change) const {
    CConfigText text = m_text;
    change(text);
    return text;
}
