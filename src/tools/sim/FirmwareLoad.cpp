#include "FirmwareLoad.h"

#include "platform/Text.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace Sim {

namespace {

using Core::Utilities::Trim;

constexpr std::string_view kReadyForSetup = "READY_FOR_SETUP";
constexpr std::string_view kReadyForData = "READY_FOR_DATA";
constexpr std::string_view kAtReset = "reset";
constexpr std::string_view kWithData = "data";
constexpr std::string_view kWroteFlash = "WROTE_FLASH";

struct SError {
    std::string_view status;
    std::string_view stage; ///< the state in whose place it comes, or one of the two above
};

constexpr std::array kErrors = {
    SError{"RESET_ERROR", kAtReset},
    SError{"BAD_SRECORD", kWithData},
    SError{"BAD_PLATFORM", kWithData},
    SError{"BAD_MODULE", kWithData},
    SError{"NO_MODULE", kWithData},
    SError{"NO_PLATFORM", kWithData},
    SError{"MODULE_MISMATCH", kWithData},
    SError{"OUT_OF_MEMORY", kWithData},
    SError{"DATA_OVERLAP", kWithData},
    SError{"BAD_AUTHCODE", "DATA_VERIFIED"},
    SError{"BAD_IMAGE_CRC", "DATA_VERIFIED"},
    SError{"IMAGE_OVERSIZE", "DATA_VERIFIED"},
    SError{"INCOMPATIBLE_FLASH", "WRITING_FLASH"},
    SError{"BAD_FLASH_ERASE", kWroteFlash},
    SError{"BAD_FLASH_WRITE", kWroteFlash},
    SError{"TIMEOUT", kWroteFlash},
    SError{"AUTHCODE_WRITE_ERROR", "WROTE_AUTHCODE"},
};

struct SStep {
    std::string_view status;
    Milliseconds after; ///< the one before it
};

constexpr std::array kSteps = {
    SStep{"VERIFYING_DATA", 0}, SStep{"DATA_VERIFIED", 1000}, SStep{"WRITING_FLASH", 200},
    SStep{kWroteFlash, 3000},   SStep{"WROTE_AUTHCODE", 500}, SStep{"WROTE_TRANSACTION_TABLE", 500},
    SStep{"COMPLETE", 500},
};

const SError* FindError(std::string_view status) {
    const auto* const error = std::find_if(
        kErrors.begin(), kErrors.end(), [&](const SError& each) { return each.status == status; });
    return error == kErrors.end() ? nullptr : error;
}

enum class ERecord { good, noHex, wrongSum };

/// A type, a byte count, and so many bytes, the last of which makes the sum of all of them 0xFF.
ERecord Judge(std::string_view record) {
    unsigned int sum = 0;
    unsigned int count = 0;
    std::size_t bytes = 0;
    for (std::size_t at = 2; at < record.size(); at += 2, ++bytes) {
        const char* begin = record.data() + at;
        unsigned int byte = 0;
        const std::size_t length = std::min<std::size_t>(2, record.size() - at);
        const auto [end, error] = std::from_chars(begin, begin + length, byte, 16);
        if (error != std::errc() || end != begin + 2) {
            return ERecord::noHex;
        }
        count = bytes == 0 ? byte : count;
        sum += byte;
    }
    if (bytes == 0 || count != bytes - 1) {
        return ERecord::noHex;
    }
    return (sum & 0xFFU) == 0xFFU ? ERecord::good : ERecord::wrongSum;
}

} // namespace

bool CFirmwareLoad::IsError(std::string_view status) {
    return FindError(status) != nullptr;
}

std::string CFirmwareLoad::Errors() {
    std::string names;
    for (const SError& error : kErrors) {
        names += (names.empty() ? "" : ", ") + std::string(error.status);
    }
    return names;
}

SResponse CFirmwareLoad::Reset() {
    m_nextStep = kNever;
    m_isWritten = false;
    m_version.clear();
    if (FailsHere(kAtReset)) {
        return {EResponse::failed};
    }
    m_status = kReadyForSetup;
    return {};
}

bool CFirmwareLoad::IsReady() const {
    return m_status == kReadyForSetup || m_status == kReadyForData;
}

bool CFirmwareLoad::FailsHere(std::string_view stage) {
    const SError* error = FindError(m_error);
    if (error == nullptr || error->stage != stage) {
        return false;
    }
    m_status = error->status;
    m_nextStep = kNever;
    return true;
}

SResponse CFirmwareLoad::Fail(std::string_view status, EResponse response) {
    m_status = status;
    return {response};
}

SResponse CFirmwareLoad::TakeRecord(std::string_view record) {
    record = Trim(record);
    if (!IsReady()) {
        return {EResponse::failed};
    }
    if (record.size() < 2 || record[0] != 'S' || record[1] < '0' || record[1] > '9') {
        return Fail("BAD_SRECORD", EResponse::badHexString);
    }
    if (record.substr(2).starts_with('~')) {
        TakeMetadata(record.substr(2));
        return {};
    }
    switch (Judge(record)) {
    case ERecord::noHex:
        return Fail("BAD_SRECORD", EResponse::badHexString);
    case ERecord::wrongSum:
        return Fail("BAD_SRECORD", EResponse::invalidChecksum);
    case ERecord::good:
        break;
    }
    if (record[1] == '3') {
        if (FailsHere(kWithData)) {
            return {EResponse::failed};
        }
        m_status = kReadyForData;
    }
    return {};
}

/// "~V~OEM060400RN0000" tells the version; what the other letters mean does not matter here.
void CFirmwareLoad::TakeMetadata(std::string_view record) {
    constexpr std::string_view kVersion = "~V~";
    if (record.starts_with(kVersion)) {
        m_version = record.substr(kVersion.size());
    }
}

SResponse CFirmwareLoad::Commit(Milliseconds now) {
    if (m_status != kReadyForData) {
        return {EResponse::failed};
    }
    m_step = 0;
    m_nextStep = now + kSteps[0].after;
    return {};
}

void CFirmwareLoad::Advance(Milliseconds now) {
    if (now < m_nextStep) {
        return;
    }
    const SStep& step = kSteps[m_step];
    if (FailsHere(step.status)) {
        return;
    }
    m_status = step.status;
    m_isWritten = m_isWritten || step.status == kWroteFlash;
    ++m_step;
    m_nextStep = m_step < kSteps.size() ? m_nextStep + kSteps[m_step].after : kNever;
}

bool CFirmwareLoad::IsUnderWay() const {
    return IsReady() || m_nextStep != kNever;
}

} // namespace Sim
