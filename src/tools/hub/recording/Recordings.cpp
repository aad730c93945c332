#include "hub/recording/Recordings.h"

#include "hub/Folder.h"
#include "hub/Names.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <ctime>

namespace Hub {

namespace fs = std::filesystem;

namespace {

constexpr char kExtension[] = ".pcap";
constexpr std::uint64_t kFileHeaderBytes = 24;
constexpr std::uint64_t kPacketHeaderBytes = 16;
constexpr double kLastTime = 4294967295.0; ///< that a recording can tell

std::uint64_t BytesOf(const SRawBlock& block) {
    const std::uint64_t packets = block.bytes.size() / CRecordingWriter::kLongestBlock + 1;
    return block.bytes.size() + packets * kPacketHeaderBytes;
}

/// A file of that name is neither hidden nor in another folder, and there is room for the rest.
std::string FileName(const std::string& name) {
    constexpr std::size_t kLongest = 200;
    std::string escaped = Escaped(name, [](char byte) {
        return std::isalnum(static_cast<unsigned char>(byte)) != 0 || byte == '-' || byte == '_' ||
               byte == '.';
    });
    escaped = escaped.starts_with('.') ? "%2E" + escaped.substr(1) : escaped;
    return escaped.substr(0, kLongest);
}

/// Of ISO 8601, without what some file systems refuse.
std::string DateAndTime(double seconds) {
    const auto whole = static_cast<std::time_t>(std::clamp(seconds, 0.0, kLastTime));
    std::tm utc{};
    ::gmtime_r(&whole, &utc);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y%m%dT%H%M%SZ", &utc);
    return text.data();
}

} // namespace

CRecordings::CRecordings(const std::string& folder, const SRecordingLimits& limits)
    : m_folder(folder), m_limits(limits) {
    // So that something is left when the oldest file goes.
    m_limits.fileBytes = std::min(m_limits.fileBytes, m_limits.folderBytes / 2);
    for (const SFound& found : OldestFirst()) {
        m_bytes += found.bytes;
    }
}

CRecordings::~CRecordings() {
    while (!m_files.empty()) {
        Finish(m_files.begin());
    }
}

void CRecordings::Add(const SRawBlock& block) {
    auto file = m_files.find(block.name);
    if (file != m_files.end() && HasEnded(file->second, block)) {
        Finish(file);
        file = m_files.end();
    }
    const std::uint64_t bytes = BytesOf(block);
    MakeRoom(bytes + kFileHeaderBytes);
    // Making room may have taken the present file.
    file = m_files.find(block.name);
    if (file == m_files.end()) {
        file = Begin(block);
        if (file == m_files.end()) {
            return;
        }
    }
    const Core::UnixTime time(Core::Time::FromSeconds(block.time));
    if (const std::string why = file->second.writer.Write(time, block.bytes); !why.empty()) {
        m_complaint.Tell("cannot write to " + why);
        return;
    }
    m_bytes += bytes;
    m_complaint.TellOver("they go on");
}

void CRecordings::End(const std::string& name) {
    if (const auto file = m_files.find(name); file != m_files.end()) {
        Finish(file);
    }
}

/// Or too old, also when the clock has been set back; or no longer where it was.
bool CRecordings::HasEnded(const SFile& file, const SRawBlock& block) const {
    std::error_code ignored;
    return file.writer.Size() + BytesOf(block) > m_limits.fileBytes ||
           std::abs(block.time - file.start) >= m_limits.fileSeconds ||
           !fs::exists(file.path, ignored);
}

/// The end when no file can be made.
CRecordings::TFiles::iterator CRecordings::Begin(const SRawBlock& block) {
    if (const std::string why = MakeFolder(m_folder); !why.empty()) {
        m_complaint.Tell(why);
        return m_files.end();
    }
    const auto file = m_files.try_emplace(block.name).first;
    file->second.path = NewPath(block);
    file->second.start = block.time;
    const std::string why =
        file->second.writer.Open(file->second.path, CRecordingWriter::EPlace::atOnce);
    if (!why.empty()) {
        // Without the file's name, which is another one each second.
        m_complaint.Tell("none can be begun in " + m_folder.string() + why.substr(why.rfind(": ")));
        m_files.erase(file);
        return m_files.end();
    }
    m_bytes += file->second.writer.Size();
    return file;
}

/// One that no file has yet, of whichever run.
fs::path CRecordings::NewPath(const SRawBlock& block) const {
    const std::string stem = FileName(block.name) + "-" + DateAndTime(block.time);
    std::error_code ignored;
    fs::path path = m_folder / (stem + kExtension);
    for (int number = 2; fs::exists(path, ignored); ++number) {
        path = m_folder / (stem + "-" + std::to_string(number) + kExtension);
    }
    return path;
}

void CRecordings::Finish(TFiles::iterator file) {
    if (const std::string why = file->second.writer.Finish(); !why.empty()) {
        m_complaint.Tell("cannot end " + why);
    }
    m_files.erase(file);
}

/// Looks at the folder only when it seems to be full. A file that is written now may be the oldest
/// one; it ends then.
void CRecordings::MakeRoom(std::uint64_t bytes) {
    if (m_bytes + bytes <= m_limits.folderBytes) {
        return;
    }
    const std::vector<SFound> found = OldestFirst();
    m_bytes = 0;
    for (const SFound& each : found) {
        m_bytes += each.bytes;
    }
    for (const SFound& oldest : found) {
        if (m_bytes + bytes <= m_limits.folderBytes) {
            return;
        }
        Remove(oldest);
    }
}

std::vector<CRecordings::SFound> CRecordings::OldestFirst() const {
    std::vector<SFound> found;
    std::error_code failure;
    for (fs::directory_iterator at(m_folder, failure), end; at != end; at.increment(failure)) {
        if (at->path().extension() != kExtension || !at->is_regular_file(failure)) {
            continue;
        }
        SFound each{at->path(), at->last_write_time(failure), at->file_size(failure)};
        if (!failure) {
            found.push_back(std::move(each));
        }
    }
    std::sort(found.begin(), found.end(), [](const SFound& a, const SFound& b) {
        return a.written != b.written ? a.written < b.written : a.path < b.path;
    });
    return found;
}

void CRecordings::Remove(const SFound& found) {
    const auto written = std::find_if(m_files.begin(), m_files.end(), [&](const auto& file) {
        return file.second.path == found.path;
    });
    if (written != m_files.end()) {
        m_files.erase(written);
    }
    std::error_code failure;
    if (fs::remove(found.path, failure)) {
        m_bytes -= found.bytes;
        m_removal.TellOver("the oldest recordings are removed again");
    } else if (failure) {
        m_removal.Tell("cannot remove " + found.path.string() + ": " + failure.message());
    }
}

} // namespace Hub
