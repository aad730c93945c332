#include "Bytes/ByteReaders.h"

std::string Bytes::ReadText(const Sentence& sentence, std::size_t offset, std::size_t count) {
    if (count == 0 || !IsInside(sentence, offset, count)) {
        return {};
    }
    const auto begin = sentence.begin() + static_cast<std::ptrdiff_t>(offset);
    std::string text(begin, begin + static_cast<std::ptrdiff_t>(count));
    text.push_back('\0');
    return text;
}
