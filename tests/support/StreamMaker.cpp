#include "support/StreamMaker.h"

#include "support/SentenceMaker.h"

#include <array>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace StreamMaker {

namespace {

std::size_t Below(std::mt19937& random, std::size_t limit) {
    return random() % limit;
}

void Append(ByteVector& stream, const ByteVector& piece) {
    stream.insert(stream.end(), piece.begin(), piece.end());
}

ByteVector AnyBytes(std::mt19937& random, std::size_t count) {
    ByteVector bytes(count);
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(random());
    }
    return bytes;
}

/// Characters that no text framer stops at.
std::string AnyText(std::mt19937& random, std::size_t count) {
    std::string text;
    while (text.size() < count) {
        text += static_cast<char>('+' + Below(random, 80));
    }
    return text;
}

/// Long enough, now and then, to meet the limits of the text framers.
std::size_t AnyLength(std::mt19937& random) {
    constexpr std::array<std::size_t, 8> kLimits = {12, 12, 40, 40, 200, 1030, 1030, 4100};
    return Below(random, kLimits[Below(random, kLimits.size())]);
}

ByteVector AnySentence(std::mt19937& random) {
    constexpr std::array<const char*, 4> kEnds = {"\r\n", "\r", "\n", ""};
    const std::string end = kEnds[Below(random, kEnds.size())];
    switch (Below(random, 3)) {
    case 0: {
        const std::size_t headerLength = Below(random, 4) == 0 ? Below(random, 256) : 28;
        return SentenceMaker::Binary(static_cast<std::uint16_t>(random()),
                                     AnyBytes(random, AnyLength(random)),
                                     static_cast<std::uint8_t>(headerLength));
    }
    case 1:
        return SentenceMaker::Bytes(SentenceMaker::ASCII(AnyText(random, AnyLength(random))) + end);
    default:
        return SentenceMaker::Bytes(SentenceMaker::NMEA(AnyText(random, AnyLength(random))) + end);
    }
}

ByteVector Damaged(std::mt19937& random, ByteVector piece) {
    if (!piece.empty()) {
        piece[Below(random, piece.size())] = static_cast<std::uint8_t>(random());
    }
    return piece;
}

ByteVector AnyMeaningfulBytes(std::mt19937& random) {
    constexpr std::array<std::uint8_t, 12> kBytes = {0xAA, 0x44, 0x12, '#', '$', '*',
                                                     13,   10,   '0',  'x', 0,   ' '};
    ByteVector bytes(1 + Below(random, 16));
    for (std::uint8_t& byte : bytes) {
        byte = kBytes[Below(random, kBytes.size())];
    }
    return bytes;
}

ByteVector AnyPiece(std::mt19937& random) {
    switch (Below(random, 8)) {
    case 0:
        return AnyBytes(random, AnyLength(random));
    case 1:
    case 2:
        return AnyMeaningfulBytes(random);
    case 3:
        return Damaged(random, AnySentence(random));
    case 4: {
        const std::vector<SHostileStream>& hostile = HostileStreams();
        return Repeated(hostile[Below(random, hostile.size())].pattern, AnyLength(random));
    }
    default:
        return AnySentence(random);
    }
}

} // namespace

const std::vector<SHostileStream>& HostileStreams() {
    using namespace std::string_literals;
    static const std::vector<SHostileStream> streams = {
        {"hashes", "#"},
        {"dollars", "$"},
        {"sync_bytes", "\xAA"},
        {"sync_pairs", "\xAA\x44"},
        {"hash_line_ends", "#\r"},
        {"dollar_line_ends", "$\r"},
        {"hash_x", "#x"},
        {"short_lines", "#a\r$b\n"},
        {"empty_headers", "\xAA\x44\x12"s + std::string(8, '\0')},
        {"endless_texts", "#$" + std::string(5000, 'x')},
        {"stars", "#$" + std::string(1000, '*') + "\r"},
        {"line_ends", "\r\n"},
    };
    return streams;
}

ByteVector Repeated(const std::string& pattern, std::size_t size) {
    ByteVector stream(size);
    for (std::size_t i = 0; i < size; ++i) {
        stream[i] = static_cast<std::uint8_t>(pattern[i % pattern.size()]);
    }
    return stream;
}

ByteVector RandomStream(std::mt19937& random, std::size_t pieces) {
    ByteVector stream;
    for (std::size_t i = 0; i < pieces; ++i) {
        Append(stream, AnyPiece(random));
    }
    return stream;
}

ByteVector ReceiverStream(std::size_t size) {
    constexpr std::array<std::size_t, 5> kMessageSizes = {72, 112, 44 * 12 + 4, 40 * 16 + 16, 32};
    std::mt19937 random(1);
    ByteVector stream;
    while (stream.size() < size) {
        for (const std::size_t messageSize : kMessageSizes) {
            Append(stream, SentenceMaker::Binary(42, AnyBytes(random, messageSize)));
        }
        Append(stream, SentenceMaker::Bytes(SentenceMaker::ASCII(AnyText(random, 220)) + "\r\n"));
        Append(stream, SentenceMaker::Bytes(SentenceMaker::NMEA(AnyText(random, 70)) + "\r\n"));
    }
    return stream;
}

ByteVector ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

ByteVector ReadCapture(const std::string& name) {
    const char* folder = std::getenv("CORVANE_CAPTURES");
    return ReadFile(std::string(folder != nullptr ? folder : CORVANE_DEFAULT_CAPTURES) + "/" +
                    name);
}

} // namespace StreamMaker
