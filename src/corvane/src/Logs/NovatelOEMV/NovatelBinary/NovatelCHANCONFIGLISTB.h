// Decodes binary CHANCONFIGLIST sentences.
#pragma once

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryRecord.h"
#include "Logs/NovatelOEMV/NovatelCHANCONFIGLIST.h"

namespace Novatel {

/// A sentence too short for the sets that it announces ends the process with a failed assertion.
class CNovatelCHANCONFIGLISTB : public CNovatelBinaryRecord, public CNovatelCHANCONFIGLIST {
public:
    explicit CNovatelCHANCONFIGLISTB(const Bytes::Sentence& sentenceData,
                                     ECRCCheck check = ECRCCheck::compute);

private:
    void ParseSentenceData(const Bytes::Sentence& sentenceData);
    /// The set that starts at byte `startIndex` of the sentence.
    SChannelConfigSet ParseConfigSet(const Bytes::Sentence& sentenceData,
                                     unsigned int startIndex) const;
};

} // namespace Novatel
