// Builds the receiver's binary sentences for tests, with header, lengths and CRC as they should be
// unless a test says otherwise.
#pragma once

#include "Bytes/ByteReaders.h"

#include <bit>
#include <optional>
#include <string_view>

namespace Sentences {

/// The receiver's CRC-32, one bit at a time.
inline std::uint32_t CRC32(const Bytes::Sentence& bytes) {
    std::uint32_t crc = 0;
    for (const std::uint8_t byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1) ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0U);
        }
    }
    return crc;
}

/// Writes little-endian values at offsets, growing with zeros as needed.
class CByteWriter {
public:
    void U8(std::size_t offset, std::uint8_t value) { Put(offset, value, 1); }
    void U16(std::size_t offset, std::uint16_t value) { Put(offset, value, 2); }
    void U32(std::size_t offset, std::uint32_t value) { Put(offset, value, 4); }
    void F32(std::size_t offset, float value) { U32(offset, std::bit_cast<std::uint32_t>(value)); }
    void F64(std::size_t offset, double value) {
        Put(offset, std::bit_cast<std::uint64_t>(value), 8);
    }
    void Text(std::size_t offset, std::string_view text) {
        for (std::size_t i = 0; i < text.size(); ++i) {
            U8(offset + i, static_cast<std::uint8_t>(text[i]));
        }
    }

    Bytes::Sentence bytes;

private:
    void Put(std::size_t offset, std::uint64_t value, std::size_t width) {
        if (bytes.size() < offset + width) {
            bytes.resize(offset + width);
        }
        for (std::size_t i = 0; i < width; ++i) {
            bytes[offset + i] = static_cast<std::uint8_t>(value >> (8 * i));
        }
    }
};

/// What every log has; `TSelf` is the log's own builder, so that calls can be chained.
template <class TSelf>
class CBinarySentence {
public:
    explicit CBinarySentence(std::uint16_t messageID) : m_messageID(messageID) {}

    TSelf& messageID(std::uint16_t value) { return Set(m_messageID, value); }
    TSelf& messageType(std::uint8_t value) { return Set(m_messageType, value); }
    TSelf& portAddress(std::uint8_t value) { return Set(m_portAddress, value); }
    TSelf& sequence(std::uint16_t value) { return Set(m_sequence, value); }
    TSelf& idleTime(std::uint8_t value) { return Set(m_idleTime, value); }
    TSelf& timeStatus(std::uint8_t value) { return Set(m_timeStatus, value); }
    TSelf& week(std::uint16_t value) { return Set(m_week, value); }
    TSelf& milliseconds(std::uint32_t value) { return Set(m_milliseconds, value); }
    TSelf& receiverStatus(std::uint32_t value) { return Set(m_receiverStatus, value); }
    TSelf& reserved(std::uint16_t value) { return Set(m_reserved, value); }
    TSelf& softwareVersion(std::uint16_t value) { return Set(m_softwareVersion, value); }
    /// Above 28 the header is padded to this length; below, only its length byte says so.
    TSelf& headerLength(std::uint8_t value) { return Set(m_headerLength, value); }
    /// Instead of the body's true length.
    TSelf& messageLength(std::uint16_t value) { return Set(m_messageLength, value); }
    /// A CRC that does not belong to the sentence.
    TSelf& wrongCRC() { return Set(m_crcError, 1U); }

    TSelf& u8(std::size_t offset, std::uint8_t value) { return Body().U8(offset, value), Self(); }
    TSelf& u16(std::size_t offset, std::uint16_t value) {
        return Body().U16(offset, value), Self();
    }
    TSelf& u32(std::size_t offset, std::uint32_t value) {
        return Body().U32(offset, value), Self();
    }
    TSelf& f32(std::size_t offset, float value) { return Body().F32(offset, value), Self(); }
    TSelf& f64(std::size_t offset, double value) { return Body().F64(offset, value), Self(); }
    TSelf& text(std::size_t offset, std::string_view value) {
        return Body().Text(offset, value), Self();
    }
    /// Cuts the body, or extends it with zeros.
    TSelf& bodySize(std::size_t size) { return Body().bytes.resize(size), Self(); }

    Bytes::Sentence bytes() const {
        CByteWriter sentence = Header();
        sentence.bytes.insert(sentence.bytes.end(), m_body.bytes.begin(), m_body.bytes.end());
        sentence.U32(sentence.bytes.size(), CRC32(sentence.bytes) ^ m_crcError);
        return sentence.bytes;
    }
    operator Bytes::Sentence() const { return bytes(); }

protected:
    CByteWriter& Body() { return m_body; }
    std::size_t BodySize() const { return m_body.bytes.size(); }

private:
    static constexpr std::uint8_t kUsualHeaderLength = 28;

    TSelf& Self() { return static_cast<TSelf&>(*this); }

    template <class TField, class TValue>
    TSelf& Set(TField& field, TValue value) {
        field = value;
        return Self();
    }

    CByteWriter Header() const {
        CByteWriter header;
        header.U8(0, 0xAA);
        header.U8(1, 0x44);
        header.U8(2, 0x12);
        header.U8(3, m_headerLength);
        header.U16(4, m_messageID);
        header.U8(6, m_messageType);
        header.U8(7, m_portAddress);
        header.U16(8, m_messageLength.value_or(static_cast<std::uint16_t>(m_body.bytes.size())));
        header.U16(10, m_sequence);
        header.U8(12, m_idleTime);
        header.U8(13, m_timeStatus);
        header.U16(14, m_week);
        header.U32(16, m_milliseconds);
        header.U32(20, m_receiverStatus);
        header.U16(24, m_reserved);
        header.U16(26, m_softwareVersion);
        if (m_headerLength > kUsualHeaderLength) {
            header.bytes.resize(m_headerLength, 0xEE);
        }
        return header;
    }

    CByteWriter m_body;
    std::uint8_t m_headerLength = kUsualHeaderLength;
    std::uint16_t m_messageID;
    std::uint8_t m_messageType = 0;
    std::uint8_t m_portAddress = 0x20;
    std::optional<std::uint16_t> m_messageLength;
    std::uint16_t m_sequence = 0;
    std::uint8_t m_idleTime = 133;
    std::uint8_t m_timeStatus = 180;
    std::uint16_t m_week = 1800;
    std::uint32_t m_milliseconds = 345600500;
    std::uint32_t m_receiverStatus = 0;
    std::uint16_t m_reserved = 0;
    std::uint16_t m_softwareVersion = 3153;
    std::uint32_t m_crcError = 0;
};

/// Any binary log, its body written by offsets.
class BinaryLog : public CBinarySentence<BinaryLog> {
public:
    explicit BinaryLog(std::uint16_t messageID) : CBinarySentence(messageID) {}
};

} // namespace Sentences
