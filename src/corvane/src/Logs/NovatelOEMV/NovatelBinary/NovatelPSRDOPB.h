// Decodes binary PSRDOP sentences.
#pragma once

#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryRecord.h"
#include "Logs/NovatelOEMV/NovatelPSRDOP.h"

namespace Novatel {

/// A sentence whose length is not the one that its number of PRNs gives ends the process with a
/// failed assertion.
class CNovatelPSRDOPB : public CNovatelBinaryRecord, public CNovatelPSRDOP {
public:
    explicit CNovatelPSRDOPB(const Bytes::Sentence& sentenceData,
                             ECRCCheck check = ECRCCheck::compute);

private:
    void ParseSentenceData(const Bytes::Sentence& sentenceData);
};

} // namespace Novatel
