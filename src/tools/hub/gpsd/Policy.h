// What a client of gpsd's protocol watches, as ?WATCH sets it.
#pragma once

#include <string>
#include <string_view>

namespace Hub::GPSD {

struct SPolicy {
    bool isEnabled = false;
    bool wantsJSON = false;
    bool wantsNMEA = false;
    int raw = 0; ///< 1: what is no text in hexadecimal, 2: all as it is
    bool isScaled = false;
    bool wantsTiming = false;
    bool splits24 = false;
    bool wantsPPS = false;
    std::string device; ///< the only one; any when empty

    bool WatchesJSON() const { return isEnabled && wantsJSON; }
    bool WatchesNMEA() const { return isEnabled && wantsNMEA; }
    int WatchesRaw() const { return isEnabled ? raw : 0; }
};

/// Changes what the argument of ?WATCH names, and turns watching on unless it says otherwise.
/// Returns what is wrong with the argument, and changes nothing then; the empty text otherwise.
std::string Change(SPolicy& policy, std::string_view argument);

} // namespace Hub::GPSD
