#include "hub/state/LogRates.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace Hub {

namespace {

constexpr std::string_view kPrefix = "QRS_";
/// More arrivals than this within the window are not told apart.
constexpr std::size_t kMostArrivals = 5000;

struct SName {
    std::int32_t identifier;
    std::string_view name;
};

/// Those that the daemon asks for or decodes.
constexpr std::array kNames = {
    SName{5, "LOGLIST"},     SName{37, "VERSION"},
    SName{42, "BESTPOS"},    SName{43, "RANGE"},
    SName{47, "PSRPOS"},     SName{83, "TRACKSTAT"},
    SName{93, "RXSTATUS"},   SName{101, "TIME"},
    SName{128, "RXCONFIG"},  SName{141, "RTKPOS"},
    SName{174, "PSRDOP"},    SName{175, "REFSTATION"},
    SName{241, "BESTXYZ"},   SName{243, "PSRXYZ"},
    SName{244, "RTKXYZ"},    SName{317, "COMCONFIG"},
    SName{471, "PDPXYZ"},    SName{495, "OMNIHPPOS"},
    SName{730, "LBANDINFO"}, SName{731, "LBANDSTAT"},
    SName{1085, "PDPSTAT"},  SName{1148, "CHANCONFIGLIST"},
    SName{1162, "PSRSATS"},  SName{1174, "RTKSATS"},
    SName{1234, "PDPSATS"},  SName{1235, "SOFTLOADSTATUS"},
    SName{65535, "NMEA"},
};

} // namespace

std::string_view LogName(std::int32_t identifier) {
    const auto found = std::find_if(kNames.begin(), kNames.end(),
                                    [&](const SName& row) { return row.identifier == identifier; });
    return found == kNames.end() ? std::string_view() : found->name;
}

double CLogRates::SLog::Rate(Core::MonotonicTime now) const {
    const auto since = std::lower_bound(recent.begin(), recent.end(), now,
                                        [](Core::MonotonicTime arrival, Core::MonotonicTime at) {
                                            return arrival + kWindow <= at;
                                        });
    const auto arrivals = static_cast<double>(recent.end() - since);
    const double known = (now - first).AsSeconds();
    if (known >= kWindow.AsSeconds()) {
        return arrivals / kWindow.AsSeconds();
    }
    // In its first second a log has no rate worth telling; the first arrival only begins its time.
    return known < 1.0 ? 0.0 : (arrivals - 1.0) / known;
}

bool CLogRates::Add(const SDataLine& line, Core::MonotonicTime now) {
    if (!line.key.starts_with(kPrefix)) {
        return true;
    }
    const std::string_view digits = std::string_view(line.key).substr(kPrefix.size());
    std::int32_t identifier = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), identifier);
    if (digits.empty() || error != std::errc() || end != digits.data() + digits.size()) {
        return true;
    }
    const TKey key(line.name, identifier);
    if (m_logs.size() >= kMostLogs && !m_logs.contains(key)) {
        return false;
    }
    SLog& log = m_logs[key];
    if (log.count == 0) {
        log.first = now;
    }
    ++log.count;
    log.last = now;
    log.recent.push_back(now);
    while (log.recent.front() + kWindow <= now || log.recent.size() > kMostArrivals) {
        log.recent.pop_front();
    }
    return true;
}

} // namespace Hub
