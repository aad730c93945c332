#include "Framing/RecordFactory.h"

#include "Logs/NMEARecord.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelBESTPOSB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelBESTXYZB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryResponse.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelCHANCONFIGLISTB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelCOMCONFIGB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelLBANDINFOB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelLBANDSTATB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelOMNIHPPOSB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelPDPSATSB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelPDPSTATB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelPDPXYZB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelPSRDOPB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelPSRSATSB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelPSRXYZB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelRANGEB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelREFSTATIONB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelRTKSATSB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelRTKXYZB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelRXSTATUSB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelTIMEB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelTRACKSTATB.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelVERSIONB.h"
#include "Logs/NovatelOEMV/NovatelSoftLoadStatusRecord.h"

#include <algorithm>

using namespace Novatel;

namespace {

using Maker = std::unique_ptr<CGPSRecord> (*)(const Bytes::Sentence&, ECRCCheck);

template <class TRecord>
std::unique_ptr<CGPSRecord> Make(const Bytes::Sentence& sentence, ECRCCheck check) {
    return std::make_unique<TRecord>(sentence, check);
}

struct SLog {
    std::uint16_t messageID;
    Maker make;
};

template <class TRecord>
constexpr SLog kLog = {TRecord::kMessageID, Make<TRecord>};

// Sorted by identifier, as it is searched by halves.
constexpr SLog kLogs[] = {
    kLog<CNovatelVERSIONB>,
    kLog<CNovatelBESTPOSB>,
    kLog<CNovatelRANGEB>,
    kLog<CNovatelTRACKSTATB>,
    kLog<CNovatelRXSTATUSB>,
    kLog<CNovatelTIMEB>,
    kLog<CNovatelPSRDOPB>,
    kLog<CNovatelREFSTATIONB>,
    kLog<CNovatelBESTXYZB>,
    kLog<CNovatelPSRXYZB>,
    kLog<CNovatelRTKXYZB>,
    kLog<CNovatelCOMCONFIGB>,
    kLog<CNovatelPDPXYZB>,
    kLog<CNovatelOMNIHPPOSB>,
    kLog<CNovatelLBANDINFOB>,
    kLog<CNovatelLBANDSTATB>,
    kLog<CNovatelPDPSTATB>,
    kLog<CNovatelCHANCONFIGLISTB>,
    {CNovatelSatsLog::kPSRSATS, Make<CNovatelPSRSATSB>},
    {CNovatelSatsLog::kRTKSATS, Make<CNovatelRTKSATSB>},
    {CNovatelSatsLog::kPDPSATS, Make<CNovatelPDPSATSB>},
};

static_assert(std::ranges::is_sorted(kLogs, {}, &SLog::messageID));

constexpr std::uint8_t kResponseBit = 0x80;

bool StartsWith(const Bytes::Sentence& sentence, char character) {
    return !sentence.empty() && sentence.front() == static_cast<std::uint8_t>(character);
}

} // namespace

// clang-tidy loses sight of an object once only its virtual base is pointed to: every record
// would be taken for lost.
// NOLINTBEGIN(clang-analyzer-cplusplus.NewDeleteLeaks)

std::unique_ptr<CGPSRecord> CreateRecord(const Bytes::Sentence& sentence, ECRCCheck check) {
    if (StartsWith(sentence, '$')) {
        return std::make_unique<CNMEARecord>(sentence);
    }
    return CreateNovatelRecord(sentence, check);
}

std::unique_ptr<CGPSRecord> CreateNovatelRecord(const Bytes::Sentence& sentence, ECRCCheck check) {
    return StartsWith(sentence, '#') ? CreateASCIIRecord(sentence)
                                     : CreateBinaryRecord(sentence, check);
}

std::unique_ptr<CGPSRecord> CreateBinaryRecord(const Bytes::Sentence& sentence, ECRCCheck check) {
    if (sentence.empty()) {
        return nullptr;
    }
    if ((Bytes::ReadUInt8(sentence, 6) & kResponseBit) != 0) {
        return std::make_unique<CNovatelBinaryResponse>(sentence, check);
    }
    const std::uint16_t messageID = Bytes::ReadUInt16(sentence, 4);
    const auto* const log = std::ranges::lower_bound(kLogs, messageID, {}, &SLog::messageID);
    const bool isKnown = log != std::end(kLogs) && log->messageID == messageID;
    return isKnown ? log->make(sentence, check) : Make<CNovatelBinaryRecord>(sentence, check);
}

std::unique_ptr<CGPSRecord> CreateASCIIRecord(const Bytes::Sentence& sentence) {
    const int messageID = CNovatelASCIIRecord::MessageIDOf(CNovatelASCIIRecord::LogName(sentence));
    if (messageID != CNovatelASCIIRecord::kSoftLoadStatusID) {
        return nullptr;
    }
    return std::make_unique<CNovatelSoftLoadStatusRecord>(sentence);
}

// NOLINTEND(clang-analyzer-cplusplus.NewDeleteLeaks)
