#include "platform/LogFileReader.h"

#include "platform/DebugPrint.h"
#include "platform/Descriptor.h"

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// The layout is that of libpcap's savefile format, version 2.4 (pcap-savefile(5)).
constexpr std::size_t kMagicSize = 4;
constexpr std::size_t kFileHeaderSize = 24;
constexpr std::size_t kBlockHeaderSize = 16;
constexpr std::uint32_t kUser0 = 147;

/// What pcap tools accept whatever a file's header says, and what this reader does.
constexpr std::uint32_t kUsualLongestBlock = 256 * 1024;
constexpr std::uint32_t kLongestBlock = 16 * 1024 * 1024;

struct SMagic {
    unsigned char bytes[kMagicSize];
    bool isBigEndian;
    std::uint32_t unitsPerSecond;
};

constexpr SMagic kMagics[] = {
    {{0xA1, 0xB2, 0xC3, 0xD4}, true, 1'000'000},
    {{0xD4, 0xC3, 0xB2, 0xA1}, false, 1'000'000},
    {{0xA1, 0xB2, 0x3C, 0x4D}, true, 1'000'000'000},
    {{0x4D, 0x3C, 0xB2, 0xA1}, false, 1'000'000'000},
};

/// What people are likely to offer in place of a recording.
struct SForeign {
    const char* start;
    const char* name;
};

constexpr SForeign kForeigns[] = {
    {"\x0A\x0D\x0D\x0A", "a pcapng file"},
    {"\x1F\x8B", "a gzip file"},
    {"\x28\xB5\x2F\xFD", "a zstd file"},
    {"\xAA\x44\x12", "a raw receiver capture"},
};

std::string NameOf(const unsigned char* bytes, std::size_t count) {
    for (const SForeign& foreign : kForeigns) {
        const std::size_t length = std::strlen(foreign.start);
        if (count >= length && std::memcmp(bytes, foreign.start, length) == 0) {
            return foreign.name;
        }
    }
    return "a file of some other kind";
}

} // namespace

CLogFileReader::CLogFileReader(const std::string& path) : m_path(path) {
    OpenFile();
    if (IsOpen()) {
        ReadFileHeader();
    }
}

CLogFileReader::~CLogFileReader() = default;

/// Never waits for the writer of a pipe: a pipe is refused.
void CLogFileReader::OpenFile() {
    const int descriptor = Core::IO::KeepSelectable(
        ::open(m_path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (descriptor < 0) {
        deprintf("CLogFileReader: %s: %s\n", m_path.c_str(), std::strerror(errno));
        return;
    }
    m_file.reset(::fdopen(descriptor, "rb"));
    if (!m_file) {
        deprintf("CLogFileReader: %s: %s\n", m_path.c_str(), std::strerror(errno));
        ::close(descriptor);
        return;
    }
    struct stat status {};
    if (::fstat(descriptor, &status) == 0 && S_ISFIFO(status.st_mode)) {
        Refuse("a pipe");
    }
}

void CLogFileReader::ReadFileHeader() {
    unsigned char header[kFileHeaderSize];
    const std::size_t count = std::fread(header, 1, sizeof header, m_file.get());
    if (std::ferror(m_file.get())) {
        deprintf("CLogFileReader: %s: %s\n", m_path.c_str(), std::strerror(errno));
        m_file.reset();
    } else if (count == 0) {
        m_hasEnded = true;
    } else if (count < kMagicSize || !TakeMagic(header)) {
        Refuse(NameOf(header, count));
    } else if (count < sizeof header) {
        EndDamaged("the file header is cut off");
    } else {
        TakeFileHeader(header);
    }
}

bool CLogFileReader::TakeMagic(const unsigned char* header) {
    for (const SMagic& magic : kMagics) {
        if (std::memcmp(header, magic.bytes, kMagicSize) == 0) {
            m_isBigEndian = magic.isBigEndian;
            m_unitsPerSecond = magic.unitsPerSecond;
            return true;
        }
    }
    return false;
}

/// The upper half of the link type's word tells about frame check sequences, which blocks have
/// not.
void CLogFileReader::TakeFileHeader(const unsigned char* header) {
    const std::uint32_t major = ReadHalf(header + 4);
    const std::uint32_t minor = ReadHalf(header + 6);
    const std::uint32_t snapLength = ReadWord(header + 16);
    const std::uint32_t linkType = ReadWord(header + 20) & 0xFFFF;
    if (major != 2 || minor != 4) {
        Refuse("a pcap file of version " + std::to_string(major) + "." + std::to_string(minor));
    } else if (linkType != kUser0) {
        Refuse("a pcap file of link type " + std::to_string(linkType));
    }
    m_longestBlock = std::clamp(snapLength, kUsualLongestBlock, kLongestBlock);
    m_position = kFileHeaderSize;
}

bool CLogFileReader::GetNextBinary(double& timestamp, std::string& data) {
    data.clear();
    SBlockHeader header;
    while (data.empty()) {
        if (!ReadBlockHeader(header) || !ReadBlock(header, data)) {
            return false;
        }
    }
    timestamp = header.timestamp;
    return true;
}

bool CLogFileReader::ReadBlockHeader(SBlockHeader& header) {
    unsigned char bytes[kBlockHeaderSize];
    if (m_hasEnded) {
        return false;
    }
    const std::size_t count = std::fread(bytes, 1, sizeof bytes, m_file.get());
    if (count < sizeof bytes) {
        const bool isRegularEnd = count == 0 && !std::ferror(m_file.get());
        return isRegularEnd ? End() : EndDamaged("a block header is cut off");
    }
    const std::uint32_t fraction = ReadWord(bytes + 4);
    header.length = ReadWord(bytes + 8);
    if (fraction >= m_unitsPerSecond || header.length > m_longestBlock) {
        return EndDamaged("no block header");
    }
    header.timestamp = ReadWord(bytes) + static_cast<double>(fraction) / m_unitsPerSecond;
    return true;
}

bool CLogFileReader::ReadBlock(const SBlockHeader& header, std::string& data) {
    data.resize(header.length);
    if (std::fread(data.data(), 1, data.size(), m_file.get()) < data.size()) {
        data.clear();
        return EndDamaged("a block is cut off");
    }
    m_position += kBlockHeaderSize + header.length;
    return true;
}

bool CLogFileReader::End() {
    m_hasEnded = true;
    return false;
}

bool CLogFileReader::EndDamaged(const char* reason) {
    deprintf("CLogFileReader: %s: damaged at byte %" PRIu64 " (%s); the recording ends there\n",
             m_path.c_str(), m_position,
             m_file && std::ferror(m_file.get()) ? std::strerror(errno) : reason);
    return End();
}

void CLogFileReader::Refuse(const std::string& kind) {
    deprintf("CLogFileReader: %s: this is %s; a recording is a classic pcap file (version 2.4) "
             "with link type 147 (USER0)\n",
             m_path.c_str(), kind.c_str());
    m_file.reset();
}

std::uint32_t CLogFileReader::ReadHalf(const unsigned char* bytes) const {
    const std::uint32_t first = bytes[0];
    const std::uint32_t second = bytes[1];
    return m_isBigEndian ? first << 8 | second : second << 8 | first;
}

std::uint32_t CLogFileReader::ReadWord(const unsigned char* bytes) const {
    const std::uint32_t first = ReadHalf(bytes);
    const std::uint32_t second = ReadHalf(bytes + 2);
    return m_isBigEndian ? first << 16 | second : second << 16 | first;
}

int CLogFileReader::Descriptor() const {
    return m_file ? ::fileno(m_file.get()) : -1;
}
