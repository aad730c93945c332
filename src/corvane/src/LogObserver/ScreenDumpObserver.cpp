#include "LogObserver/ScreenDumpObserver.h"

#include "Logs/GPSRecord.h"
#include "Logs/NovatelOEMV/NovatelRecord.h"
#include "Logs/NovatelOEMV/NovatelResponse.h"

#include <charconv>
#include <cinttypes>
#include <cstdio>
#include <string>

namespace {

/// The shortest text without an exponent that reads back as the same number; whole milliseconds of
/// a week have at most ten digits.
std::string ShortestText(double number) {
    char buffer[32];
    const auto end =
        std::to_chars(buffer, buffer + sizeof buffer, number, std::chars_format::fixed).ptr;
    return std::string(buffer, end);
}

} // namespace

void CScreenDumpObserver::NewRecord(CGPSRecord* record) {
    if (dynamic_cast<Novatel::CNovatelRecord*>(record) == nullptr) {
        return;
    }
    std::uint32_t week = 0;
    double seconds = 0.0;
    record->GetGPSTime(week, seconds);
    // The size is always printed as 0; kept: consumers rely on it.
    std::printf("ID = %d, size = 0, week = %" PRIu32 ", seconds = %s\n", record->GetMessageID(),
                week, ShortestText(seconds).c_str());
    if (const auto* response = dynamic_cast<Novatel::CNovatelResponse*>(record)) {
        // c_str(): the text ends at its first zero byte.
        std::printf("Response: Log=%d, ID=%" PRIu32 ": \"%s\"\n", record->GetMessageID(),
                    response->GetResponseID(), response->GetResponseText().c_str());
    }
}
