#include "Logs/NovatelOEMV/NovatelSoftLoadStatusRecord.h"

#include <algorithm>

namespace Novatel {

namespace {

struct SStatus {
    std::string_view text;
    int value;
};

// clang-format off
constexpr SStatus kStatuses[] = {
    {"NOT_STARTED", 1},
    {"READY_FOR_SETUP", 2},
    {"READY_FOR_DATA", 3},
    {"DATA_VERIFIED", 4},
    {"WRITING_FLASH", 5},
    {"WROTE_FLASH", 6},
    {"VERIFYING_DATA", 8},
    {"WROTE_TRANSACTION_TABLE", 10},
    {"NOT_READY_FOR_SETUP", 11},
    {"COMPLETE", 12},
    {"RESET_ERROR", 13},
    {"BAD_SRECORD", 14},
    {"BAD_PLATFORM", 15},
    {"BAD_MODULE", 16},
    {"NO_MODULE", 18},
    {"MODULE_MISMATCH", 19},
    {"OUT_OF_MEMORY", 20},
    {"DATA_OVERLAP", 21},
    {"BAD_IMAGE_CRC", 22},
    {"IMAGE_OVERSIZE", 23},
    {"BAD_FLASH_ERASE", 25},
    {"NO_PLATFORM", 26},
};
// clang-format on

std::string StatusText(const Bytes::Sentence& sentenceData) {
    const auto headerEnd = std::find(sentenceData.begin(), sentenceData.end(), ';');
    if (headerEnd == sentenceData.end()) {
        return {};
    }
    const auto checksum = std::find(sentenceData.rbegin(), sentenceData.rend(), '*');
    const auto textEnd = checksum == sentenceData.rend() ? headerEnd : checksum.base() - 1;
    return textEnd <= headerEnd ? std::string() : std::string(headerEnd + 1, textEnd);
}

} // namespace

CNovatelSoftLoadStatusRecord::CNovatelSoftLoadStatusRecord(const Bytes::Sentence& sentenceData)
    : CNovatelASCIIRecord(sentenceData),
      m_statusText(StatusText(sentenceData)),
      m_status(StatusOf(m_statusText)) {
}

int CNovatelSoftLoadStatusRecord::StatusOf(std::string_view text) {
    const auto* const row =
        std::find_if(std::begin(kStatuses), std::end(kStatuses),
                     [&](const SStatus& status) { return status.text == text; });
    return row == std::end(kStatuses) ? kUnknownStatus : row->value;
}

} // namespace Novatel
