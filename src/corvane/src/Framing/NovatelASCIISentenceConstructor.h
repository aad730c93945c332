// The framer of the receiver's ASCII logs and responses.
#pragma once

#include "Framing/TextSentenceConstructor.h"

namespace Novatel {

/// `#text*checksum`: at least two characters of text, its CRC-32 in the eight characters after the
/// last `*`, more may follow. At most 4,097 bytes without the end of the line.
class CNovatelASCIISentenceConstructor : public CTextSentenceConstructor {
public:
    CNovatelASCIISentenceConstructor();

protected:
    bool IsValid(std::span<const std::uint8_t> sentence) const override;
};

} // namespace Novatel
