// The framer of NMEA sentences.
#pragma once

#include "Framing/TextSentenceConstructor.h"

/// `$text*checksum`: the XOR of the text's bytes in the two characters after the first `*`, more
/// may follow. At most 1,025 bytes without the end of the line.
///
/// For an empty text the `*` itself stands in for the XOR, so `$*2A` is valid and `$*00` is not.
class CNMEASentenceConstructor : public CTextSentenceConstructor {
public:
    CNMEASentenceConstructor();

protected:
    bool IsValid(std::span<const std::uint8_t> sentence) const override;
};
