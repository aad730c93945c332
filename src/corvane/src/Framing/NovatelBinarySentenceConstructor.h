// The framer of the receiver's binary logs and responses.
#pragma once

#include "Framing/SentenceConstructor.h"

namespace Novatel {

/// A sentence begins with 0xAA 0x44 0x12 and the header's length; the message's length stands at
/// offset 8 (the receiver's manual, "Binary message header"). It is delivered from its first sync
/// byte through its CRC.
///
/// - After 0xAA, a byte that is not 0x44 may itself begin a sentence; after 0xAA 0x44, the byte
///   that is not 0x12 is skipped whatever it is.
/// - The header's length is taken as received. Where both lengths are so small that the sentence
///   would end inside its own header, it ends at its 11th byte.
/// - Nothing limits the length but its fields: a damaged one swallows up to 65,794 bytes, which are
///   then rejected as one.
class CNovatelBinarySentenceConstructor : public CSentenceConstructor {
protected:
    int ConstructSentence() override;
};

} // namespace Novatel
