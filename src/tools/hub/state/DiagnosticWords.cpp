#include "hub/state/DiagnosticWords.h"

#include <algorithm>
#include <array>

namespace Hub {

namespace {

struct SWords {
    std::int32_t code;
    std::int32_t sub;
    std::string_view words;
};

/// As docs/diagnostics.md lists them.
// clang-format off
constexpr std::array kWords = {
    SWords{90001, 0,  "The port has brought no record, and the receiver was reset"},
    SWords{90002, 0,  "The receiver had to be initialised ten times or more"},
    SWords{79141, 2,  "The smoothing filter has lost its carrier phases"},
    SWords{79160, 1,  "No satellites are tracked"},
    SWords{79188, 12, "The receiver's model has no GLONASS"},
    SWords{79195, 0,  "The receiver's processor is overloaded"},
    SWords{79151, 0,  "The receiver's temperature is outside its limits"},
    SWords{79161, 4,  "The receiver's supply voltage is outside its limits"},
    SWords{70950, 4,  "The antenna is not powered"},
    SWords{70922, 5,  "The antenna's line is open"},
    SWords{70922, 6,  "The antenna's line is shorted"},
    SWords{79203, 12, "A buffer of the receiver's ports has overrun"},
    SWords{73505, 17, "The receiver has no valid almanac"},
    SWords{79200, 12, "The receiver's hardware has failed"},
    SWords{79202, 12, "The receiver's firmware is invalid"},
    SWords{79207, 12, "The receiver's software has reached a limit"},
    SWords{79201, 12, "The receiver reports error bit 17"},
    SWords{79177, 12, "The receiver reports error bit 5"},
};
// clang-format on

} // namespace

std::string_view DiagnosticWords(std::int32_t code, std::int32_t sub) {
    const auto found = std::find_if(kWords.begin(), kWords.end(), [&](const SWords& row) {
        return row.code == code && row.sub == sub;
    });
    return found == kWords.end() ? std::string_view() : found->words;
}

} // namespace Hub
