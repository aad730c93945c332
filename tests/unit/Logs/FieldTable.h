// A log's body as a table of fields, from which the promises that every decoder makes are tested.
#pragma once

#include "Support/BinarySentence.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

enum class EWireType { u8, u16, u32, f32, f64 };

/// One row of a body's table: where it stands, a value of its own, and how the content class gives
/// it back. Values are exact as doubles.
template <class TLog>
struct SField {
    EWireType type;
    std::size_t offset;
    double value;
    std::function<double(const TLog&)> get;
};

template <class TLog>
using FieldTable = std::vector<SField<TLog>>;

inline std::size_t WidthOf(EWireType type) {
    constexpr std::size_t kWidths[] = {1, 2, 4, 4, 8};
    return kWidths[static_cast<std::size_t>(type)];
}

/// An independent reading of a field that may lie anywhere; zero when it is not wholly inside.
inline double ReadField(const Bytes::Sentence& sentence, EWireType type, std::size_t offset) {
    const std::size_t width = WidthOf(type);
    if (offset + width > sentence.size()) {
        return 0;
    }
    std::uint64_t bits = 0;
    for (std::size_t i = width; i-- > 0;) {
        bits = bits << 8 | sentence[offset + i];
    }
    if (type == EWireType::f32) {
        return static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
    }
    return type == EWireType::f64 ? std::bit_cast<double>(bits) : static_cast<double>(bits);
}

inline void WriteField(Sentences::BinaryLog& log, EWireType type, std::size_t offset,
                       double value) {
    switch (type) {
    case EWireType::u8:
        log.u8(offset, static_cast<std::uint8_t>(value));
        break;
    case EWireType::u16:
        log.u16(offset, static_cast<std::uint16_t>(value));
        break;
    case EWireType::u32:
        log.u32(offset, static_cast<std::uint32_t>(value));
        break;
    case EWireType::f32:
        log.f32(offset, static_cast<float>(value));
        break;
    case EWireType::f64:
        log.f64(offset, value);
        break;
    }
}

template <class TLog>
Sentences::BinaryLog SentenceOf(const FieldTable<TLog>& fields, std::size_t bodySize) {
    Sentences::BinaryLog log(1);
    log.bodySize(bodySize);
    for (const auto& field : fields) {
        WriteField(log, field.type, field.offset, field.value);
    }
    return log;
}

/// Every field reads back as the table says.
template <class TDecoder, class TLog>
void ExpectFields(const FieldTable<TLog>& fields, const Bytes::Sentence& sentence) {
    const TDecoder log(sentence);
    for (const auto& field : fields) {
        EXPECT_EQ(field.get(log), field.value) << "at body offset " << field.offset;
    }
}

/// The same when the header is longer than usual.
template <class TDecoder, class TLog>
void ExpectFieldsBehindLongHeader(const FieldTable<TLog>& fields, std::size_t bodySize) {
    ExpectFields<TDecoder>(fields, SentenceOf(fields, bodySize).headerLength(32));
}

/// Of a sentence cut anywhere, each field gives what stands there, or zero where it is cut.
template <class TDecoder, class TLog>
void ExpectZerosPastEveryCut(const FieldTable<TLog>& fields, std::size_t bodySize) {
    const Bytes::Sentence whole = SentenceOf(fields, bodySize);
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const Bytes::Sentence cut(whole.data(), whole.data() + size);
        const TDecoder log(cut);
        const std::size_t start = size > 3 ? cut[3] : 0;
        for (const auto& field : fields) {
            ASSERT_EQ(field.get(log), ReadField(cut, field.type, start + field.offset))
                << "at body offset " << field.offset << " of " << size << " bytes";
        }
    }
}

/// Whatever the header length claims, each field gives what stands where it then must be.
template <class TDecoder, class TLog>
void ExpectFieldsFollowEveryHeaderLength(const FieldTable<TLog>& fields, std::size_t bodySize) {
    Bytes::Sentence sentence = SentenceOf(fields, bodySize);
    for (unsigned length = 0; length <= 255; ++length) {
        sentence[3] = static_cast<std::uint8_t>(length);
        const TDecoder log(sentence);
        for (const auto& field : fields) {
            const double expected = ReadField(sentence, field.type, length + field.offset);
            if (expected == expected) { // not the one bit pattern that equals nothing
                ASSERT_EQ(field.get(log), expected)
                    << "at body offset " << field.offset << " with header length " << length;
            }
        }
    }
}

/// All of the above.
template <class TDecoder, class TLog>
void ExpectLenientDecoder(const FieldTable<TLog>& fields, std::size_t bodySize) {
    ExpectFields<TDecoder>(fields, SentenceOf(fields, bodySize));
    ExpectFieldsBehindLongHeader<TDecoder>(fields, bodySize);
    ExpectZerosPastEveryCut<TDecoder>(fields, bodySize);
    ExpectFieldsFollowEveryHeaderLength<TDecoder>(fields, bodySize);
}
