// Fuzzes the record factory and every decoder with sentences, as they come and with a right CRC;
// the screen dump then reads what was decoded.
#include "ChecksumRepair.h"
#include "Framing/RecordFactory.h"
#include "LogObserver/ScreenDumpObserver.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelBinaryRecord.h"
#include "OrderedEnd.h"

#include <cstdio>
#include <cstdlib>

namespace {

void Require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "Not so: %s\n", what);
        std::abort();
    }
}

/// Null also for a sentence that orders the end of the process.
std::unique_ptr<CGPSRecord> Decode(const Bytes::Sentence& sentence, ECRCCheck check) {
    try {
        return CreateRecord(sentence, check);
    } catch (const SOrderedEnd&) {
        return nullptr;
    }
}

/// The valid flag of every binary record is the outcome of its CRC check.
void RequireFlag(const CGPSRecord* record, bool isValid) {
    if (dynamic_cast<const Novatel::CNovatelBinaryRecord*>(record) != nullptr) {
        std::uint32_t week = 0;
        double seconds = 0;
        Require(record->GetGPSTime(week, seconds) == isValid, "a record is valid by its CRC");
    }
}

void Look(CGPSRecord* record) {
    static CScreenDumpObserver screenDump;
    if (record != nullptr) {
        screenDump.NewRecord(record);
        Require(record->GetReceptionSeconds() > 0, "a record has been received at some time");
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // The screen dump's; findings go to standard error.
    Require(std::freopen("/dev/null", "w", stdout) != nullptr, "/dev/null opens");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Bytes::Sentence sentence(data, data + size);
    Bytes::Sentence repaired = sentence;
    RepairCRC(repaired);
    for (const Bytes::Sentence& input : {sentence, repaired}) {
        const auto computed = Decode(input, ECRCCheck::compute);
        const auto passed = Decode(input, ECRCCheck::alreadyPassed);
        Require((computed == nullptr) == (passed == nullptr), "the CRC decides only the flag");
        RequireFlag(computed.get(), size >= 4 && input == repaired);
        RequireFlag(passed.get(), true);
        Look(computed.get());
    }
    return 0;
}
