#include "CommandReader.h"

#include <algorithm>
#include <array>

namespace Sim {

namespace {

/// Above SOFTLOADSREC with the longest S-record, 515 characters.
constexpr std::size_t kLongestLine = 1023;
/// Far above every binary command; noise that looks like one must not swallow much.
constexpr std::size_t kLongestFrame = 1024;
constexpr std::array<std::uint8_t, 3> kSync = {0xAA, 0x44, 0x12};
constexpr std::size_t kHeaderStart = 10; ///< from here on both lengths are known
constexpr std::size_t kCRC = 4;

bool IsTyped(char byte) {
    return byte == '\t' || (byte >= ' ' && byte <= '~');
}

bool MayBeFrame(const Bytes& bytes) {
    return std::equal(bytes.begin(),
                      bytes.begin() +
                          static_cast<std::ptrdiff_t>(std::min(bytes.size(), kSync.size())),
                      kSync.begin());
}

std::size_t FrameLength(const Bytes& frame) {
    return frame[3] + static_cast<std::size_t>(frame[8] | frame[9] << 8) + kCRC;
}

} // namespace

std::vector<SCommand> CCommandReader::Read(std::string_view bytes) {
    std::vector<SCommand> commands;
    for (const char byte : bytes) {
        TakeByte(byte, commands);
    }
    return commands;
}

void CCommandReader::Forget() {
    m_line.clear();
    m_frame.clear();
    m_isNoise = false;
    m_wasReturn = false;
}

void CCommandReader::TakeByte(char byte, std::vector<SCommand>& commands) {
    if (!m_frame.empty() || static_cast<std::uint8_t>(byte) == kSync[0]) {
        TakeFrameByte(byte, commands);
    } else {
        TakeLineByte(byte, commands);
    }
}

void CCommandReader::TakeFrameByte(char byte, std::vector<SCommand>& commands) {
    m_frame.push_back(static_cast<std::uint8_t>(byte));
    if (!MayBeFrame(m_frame)) {
        m_frame.clear();
        m_isNoise = true;
        TakeLineByte(byte, commands);
    } else if (m_frame.size() >= kHeaderStart) {
        const std::size_t length = FrameLength(m_frame);
        if (m_frame.size() >= length) {
            commands.push_back(ParseFrame(m_frame));
        }
        if (m_frame.size() >= length || length > kLongestFrame) {
            m_frame.clear();
        }
    }
}

void CCommandReader::TakeLineByte(char byte, std::vector<SCommand>& commands) {
    const bool isEndDone = byte == '\n' && m_wasReturn;
    m_wasReturn = byte == '\r';
    if (isEndDone) {
        return;
    }
    if (byte != '\r' && byte != '\n') {
        m_isNoise = m_isNoise || !IsTyped(byte) || m_line.size() >= kLongestLine;
        if (!m_isNoise) {
            m_line.push_back(byte);
        }
        return;
    }
    if (!m_isNoise) {
        commands.push_back(ParseLine(m_line));
    }
    m_line.clear();
    m_isNoise = false;
}

} // namespace Sim
