#include "support/LiteralFraming.h"

#include <cstdlib>
#include <string>

namespace Literal {

namespace {

std::uint32_t TableEntry(std::uint32_t byte) {
    for (int bit = 0; bit < 8; ++bit) {
        const bool shiftedOut = (byte & 1) != 0;
        byte >>= 1;
        if (shiftedOut) {
            byte ^= 0xEDB88320U;
        }
    }
    return byte;
}

std::uint32_t LastWord(const Sentence& sentence) {
    std::uint32_t word = 0;
    for (std::size_t i = 1; i <= 4; ++i) {
        word = word << 8 | sentence[sentence.size() - i];
    }
    return word;
}

std::uint32_t ReadHexadecimal(const Sentence& sentence, std::size_t offset, std::size_t count) {
    std::string characters;
    for (std::size_t i = offset; i < offset + count; ++i) {
        characters += static_cast<char>(sentence[i]);
    }
    return static_cast<std::uint32_t>(std::strtoul(characters.c_str(), nullptr, 16));
}

} // namespace

std::uint32_t BitwiseCRC32(const std::uint8_t* bytes, std::size_t length) {
    std::uint32_t crc = 0;
    for (std::size_t i = 0; i < length; ++i) {
        crc = (crc >> 8) ^ TableEntry((crc ^ bytes[i]) & 0xFF);
    }
    return crc;
}

void CFramer::AddBytes(const std::vector<std::uint8_t>& chunk) {
    for (const std::uint8_t byte : chunk) {
        m_queue.push_back(byte);
    }
}

int CFramer::GetSentence(Sentence& out) {
    const int result = ConstructSentence();
    if (result == 1) {
        out = m_completed;
        m_completed.clear();
    } else if (result == -1) {
        out.clear();
    }
    return result;
}

std::uint8_t CFramer::TakeByte() {
    const std::uint8_t byte = m_queue.front();
    m_queue.pop_front();
    return byte;
}

int CFramer::Finish(bool isValid) {
    if (isValid) {
        m_completed = m_sentence;
    }
    m_sentence.clear();
    m_state = 0;
    return isValid ? 1 : -1;
}

int CBinaryFramer::ConstructSentence() {
    while (!m_queue.empty()) {
        const std::uint8_t byte = TakeByte();
        if (m_state < 3) {
            TakeSync(byte);
        } else if (m_state < 5) {
            TakeHeader(byte);
        } else {
            m_sentence.push_back(byte);
            if (m_sentence.size() >= m_expectedLength) {
                return Finish(BitwiseCRC32(m_sentence.data(), m_sentence.size() - 4) ==
                              LastWord(m_sentence));
            }
        }
    }
    return 0;
}

void CBinaryFramer::TakeSync(std::uint8_t byte) {
    constexpr std::uint8_t kSync[] = {0xAA, 0x44, 0x12};
    if (byte == kSync[m_state]) {
        if (m_state == 0) {
            m_sentence.clear();
        }
        m_sentence.push_back(byte);
        ++m_state;
        return;
    }
    if (m_state == 1) {
        m_queue.push_front(byte);
    }
    m_sentence.clear();
    m_state = 0;
}

void CBinaryFramer::TakeHeader(std::uint8_t byte) {
    if (m_state == 3) {
        m_headerLength = byte;
        m_state = 4;
    } else if (m_sentence.size() == 9) {
        m_messageLength = m_sentence[8] + 256U * byte;
        m_expectedLength = m_messageLength + m_headerLength + 4;
        m_state = 5;
    }
    m_sentence.push_back(byte);
}

int CTextFramer::ConstructSentence() {
    while (!m_queue.empty()) {
        const std::uint8_t byte = TakeByte();
        if (byte == m_start) {
            m_sentence.clear();
            m_sentence.push_back(byte);
            m_state = 1;
        } else if (m_state == 1) {
            if (byte == 13 || byte == 10) {
                return Finish(Verify());
            }
            if (m_sentence.size() > m_sizeLimit) {
                return Finish(false);
            }
            m_sentence.push_back(byte);
        }
    }
    return 0;
}

bool CASCIIFramer::Verify() const {
    if (m_sentence.size() <= 9) {
        return false;
    }
    std::size_t star = m_sentence.size();
    for (std::size_t i = 0; i < m_sentence.size(); ++i) {
        star = m_sentence[i] == '*' ? i : star;
    }
    if (star == m_sentence.size() || star < 2) {
        return false;
    }
    const std::size_t textSize = star - 1;
    const std::size_t after = m_sentence.size() - star - 1;
    return textSize >= 2 && after >= 8 &&
           BitwiseCRC32(m_sentence.data() + 1, textSize) ==
               ReadHexadecimal(m_sentence, star + 1, 8);
}

bool CNMEAFramer::Verify() const {
    std::size_t dollar = 0;
    while (dollar < m_sentence.size() && m_sentence[dollar] != '$') {
        ++dollar;
    }
    std::size_t star = dollar + 1;
    while (star < m_sentence.size() && m_sentence[star] != '*') {
        ++star;
    }
    if (star >= m_sentence.size() || m_sentence.size() - star - 1 < 2) {
        return false;
    }
    std::uint8_t checksum = m_sentence[dollar + 1];
    for (std::size_t i = dollar + 2; i < star; ++i) {
        checksum = static_cast<std::uint8_t>(checksum ^ m_sentence[i]);
    }
    return checksum == (ReadHexadecimal(m_sentence, star + 1, 2) & 0xFF);
}

} // namespace Literal
