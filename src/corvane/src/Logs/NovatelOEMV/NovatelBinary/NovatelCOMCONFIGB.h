// Decodes binary COMCONFIG sentences.
#pragma once

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryRecord.h"
#include "Logs/NovatelOEMV/NovatelCOMCONFIG.h"

namespace Novatel {

/// A sentence whose length is not the one that its number of ports gives ends the process with a
/// failed assertion.
class CNovatelCOMCONFIGB : public CNovatelBinaryRecord, public CNovatelCOMCONFIG {
public:
    explicit CNovatelCOMCONFIGB(const Bytes::Sentence& sentenceData,
                                ECRCCheck check = ECRCCheck::compute);

private:
    void ParseSentenceData(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
