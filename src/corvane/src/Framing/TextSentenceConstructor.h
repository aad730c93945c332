// What the framers of the two text kinds share: a start character, an end of line, a size limit.
#pragma once

#include "Framing/SentenceConstructor.h"

/// A sentence runs from its start character up to, and without, the CR or LF that ends it.
///
/// - Another start character begins it anew, silently.
/// - The byte that comes while it holds more than `sizeLimit` bytes, and neither ends nor restarts
///   it, rejects it; so one byte more than the limit is accepted.
class CTextSentenceConstructor : public CSentenceConstructor {
protected:
    CTextSentenceConstructor(std::uint8_t start, std::size_t sizeLimit)
        : m_start(start), m_longest(sizeLimit + 1) {}

    int ConstructSentence() final;

    /// Whether the sentence (its start character at index 0, and nowhere else) carries the right
    /// checksum.
    virtual bool IsValid(std::span<const std::uint8_t> sentence) const = 0;

    /// The number that `strtoul` in base 16 reads from these characters alone, modulo 2^32: leading
    /// blanks, a sign and a 0x are taken, what follows the digits is ignored, no digit at all reads
    /// as 0. At most 8 characters.
    static std::uint32_t ReadChecksum(std::span<const std::uint8_t> characters);

private:
    static constexpr std::size_t kStartSize = 1;

    struct SScan {
        /// The last start, as an index into what is unread.
        std::size_t begin;
        /// What follows from there up to the end of the line, or up to where the scan stopped: the
        /// end of the input, or the byte that is one too many.
        std::size_t length;
        bool hasEnd;
    };

    /// The sentence at the front, several bytes a step.
    SScan Scan() const;

    const std::uint8_t m_start;
    const std::size_t m_longest;
    /// How many bytes of the sentence at the front are known to hold no end and no other start, so
    /// that none is looked at twice.
    std::size_t m_scanned = kStartSize;
};
