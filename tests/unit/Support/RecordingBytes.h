// The bytes of a recording, put together field by field, right or wrong as a test wants them.
#pragma once

#include <cstdint>
#include <string>

class CRecordingBytes {
public:
    CRecordingBytes& BigEndian() {
        m_isBigEndian = true;
        return *this;
    }
    CRecordingBytes& Nanoseconds() {
        m_magic = 0xA1B23C4D;
        return *this;
    }
    CRecordingBytes& Version(std::uint16_t major, std::uint16_t minor) {
        m_major = major;
        m_minor = minor;
        return *this;
    }
    CRecordingBytes& LinkType(std::uint32_t linkType) {
        m_linkType = linkType;
        return *this;
    }
    CRecordingBytes& SnapLength(std::uint32_t snapLength) {
        m_snapLength = snapLength;
        return *this;
    }

    /// To be called after what shapes the whole file. `fraction` in the file's own unit.
    CRecordingBytes& Block(std::uint32_t seconds, std::uint32_t fraction,
                           const std::string& bytes) {
        const auto length = static_cast<std::uint32_t>(bytes.size());
        return BlockHeader(seconds, fraction, length).Bytes(bytes);
    }
    CRecordingBytes& BlockHeader(std::uint32_t seconds, std::uint32_t fraction,
                                 std::uint32_t length) {
        for (const std::uint32_t word : {seconds, fraction, length, length}) {
            Word(m_blocks, word);
        }
        return *this;
    }
    CRecordingBytes& Bytes(const std::string& bytes) {
        m_blocks += bytes;
        return *this;
    }

    std::string Take() const {
        std::string file;
        Word(file, m_magic);
        Half(file, m_major);
        Half(file, m_minor);
        Word(file, 0);
        Word(file, 0);
        Word(file, m_snapLength);
        Word(file, m_linkType);
        return file + m_blocks;
    }

private:
    void Half(std::string& out, std::uint32_t half) const {
        const char high = static_cast<char>(half >> 8 & 0xFF);
        const char low = static_cast<char>(half & 0xFF);
        out += m_isBigEndian ? high : low;
        out += m_isBigEndian ? low : high;
    }
    void Word(std::string& out, std::uint32_t word) const {
        Half(out, m_isBigEndian ? word >> 16 : word & 0xFFFF);
        Half(out, m_isBigEndian ? word & 0xFFFF : word >> 16);
    }

    bool m_isBigEndian = false;
    std::uint32_t m_magic = 0xA1B2C3D4;
    std::uint32_t m_major = 2;
    std::uint32_t m_minor = 4;
    std::uint32_t m_snapLength = 65535;
    std::uint32_t m_linkType = 147;
    std::string m_blocks;
};
