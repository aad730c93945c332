#include "LogCatalog.h"

#include "Words.h"

#include <algorithm>
#include <string>

namespace Sim {

namespace {

using enum ELogKind;

constexpr Milliseconds kSecond = 1000;
constexpr Milliseconds kMinute = 60 * kSecond;

// clang-format off
constexpr SCatalogLog kLogs[] = {
    // Positions and solutions
    {"BESTPOS", 42, synchronous},       {"BESTXYZ", 241, synchronous},
    {"BESTVEL", 99, synchronous},       {"PSRPOS", 47, synchronous},
    {"PSRXYZ", 243, synchronous},       {"PSRVEL", 100, synchronous},
    {"RTKPOS", 141, synchronous},       {"RTKXYZ", 244, synchronous},
    {"RTKVEL", 216, synchronous},       {"PDPPOS", 469, synchronous},
    {"PDPXYZ", 471, synchronous},       {"PDPVEL", 470, synchronous},
    {"PDPSTAT", 1085, synchronous},     {"OMNIHPPOS", 495, synchronous},
    {"PSRDOP", 174, synchronous, kMinute},
    {"TIME", 101, synchronous},         {"CLOCKMODEL", 16, synchronous, kSecond},
    // Measurements and satellites
    {"RANGE", 43, synchronous},         {"TRACKSTAT", 83, synchronous},
    {"RANGECMP", 140, synchronous},     {"SATVIS", 48, synchronous, kSecond},
    {"PSRSATS", 1162, synchronous},     {"RTKSATS", 1174, synchronous},
    {"PDPSATS", 1234, synchronous},     {"BESTSATS", 1194, synchronous},
    {"LBANDINFO", 730, asynchronous},   {"LBANDSTAT", 731, synchronous, kSecond},
    // Of the reference
    {"REFSTATION", 175, asynchronous},  {"REFSTATIONINFO", 0, asynchronous},
    {"BASESTATIONOBS", 0, asynchronous},
    {"MATCHEDPOS", 96, asynchronous},   {"MATCHEDSATS", 1176, asynchronous},
    {"RTKDATA", 215, asynchronous},
    {"CMROBS", 103, synchronous},       {"CMRGLOOBS", 1003, synchronous},
    {"CMRREF", 105, synchronous},       {"CMRDESC", 310, synchronous},
    {"RTCM1004", 770, synchronous},     {"RTCM1005", 765, synchronous},
    {"RTCM1012", 898, synchronous},     {"RTCM1033", 0, synchronous},
    // Broadcast by the satellites
    {"IONUTC", 8, asynchronous},        {"ALMANAC", 73, asynchronous},
    {"RAWALM", 74, asynchronous},       {"RAWEPHEM", 41, asynchronous},
    {"GLOALMANAC", 718, asynchronous},  {"GLOCLOCK", 719, asynchronous},
    {"GLOEPHEMERIS", 723, asynchronous}, {"GLORAWALM", 720, asynchronous},
    {"GLORAWEPHEM", 792, asynchronous}, {"RAWWAASFRAME", 287, asynchronous},
    // What comes in on a port
    {"PASSCOM1", 233, asynchronous},    {"PASSCOM2", 234, asynchronous},
    {"PASSCOM3", 235, asynchronous},    {"PASSUSB1", 607, asynchronous},
    {"PASSUSB2", 608, asynchronous},    {"PASSUSB3", 609, asynchronous},
    // The receiver itself
    {"VERSION", 37, asynchronous},      {"RXSTATUS", 93, asynchronous},
    {"RXSTATUSEVENT", 94, asynchronous}, {"CBITHINT", 0, asynchronous},
    {"CHANCONFIGLIST", 1148, asynchronous}, {"SOFTLOADSTATUS", 1235, asynchronous},
    {"VALIDMODELS", 206, asynchronous},
    {"LOGLIST", 5, polled},             {"RXCONFIG", 128, polled},
    {"COMCONFIG", 317, polled},         {"PORTSTATS", 72, polled},
    // NMEA 0183
    {"GPALM", 217, nmea, kSecond},      {"GPGGA", 218, nmea},
    {"GPGLL", 219, nmea},               {"GPGRS", 220, nmea},
    {"GPGSA", 221, nmea},               {"GPGST", 222, nmea},
    {"GPGSV", 223, nmea},               {"GPRMB", 224, nmea},
    {"GPRMC", 225, nmea},               {"GPVTG", 226, nmea},
    {"GPZDA", 227, nmea},               {"GPHDT", 0, nmea},
};
// clang-format on

const SCatalogLog* FindName(std::string_view name) {
    const auto* const log =
        std::find_if(std::begin(kLogs), std::end(kLogs),
                     [&](const SCatalogLog& each) { return each.name == name; });
    return log == std::end(kLogs) ? nullptr : log;
}

} // namespace

const SCatalogLog* FindLog(std::uint16_t identifier) {
    const auto* const log =
        std::find_if(std::begin(kLogs), std::end(kLogs), [&](const SCatalogLog& each) {
            return each.identifier == identifier && identifier != 0;
        });
    return log == std::end(kLogs) ? nullptr : log;
}

std::string LogName(const SNamedLog& log) {
    std::string name(log.log->name);
    switch (log.format) {
    case ELogFormat::binary:
        return name + "B";
    case ELogFormat::ascii:
        return name + "A";
    case ELogFormat::abbreviated:
    case ELogFormat::nmea:
        break;
    }
    return name;
}

std::optional<SNamedLog> FindLog(std::string_view word) {
    const std::string name = Capitals(word);
    // The bare name first: RTKDATA ends in an A of its own.
    if (const SCatalogLog* log = FindName(name)) {
        return SNamedLog{log, log->kind == nmea ? ELogFormat::nmea : ELogFormat::abbreviated};
    }
    if (name.empty() || (name.back() != 'A' && name.back() != 'B')) {
        return std::nullopt;
    }
    const SCatalogLog* log = FindName(std::string_view(name).substr(0, name.size() - 1));
    if (log == nullptr || log->kind == nmea) {
        return std::nullopt;
    }
    return SNamedLog{log, name.back() == 'A' ? ELogFormat::ascii : ELogFormat::binary};
}

} // namespace Sim
