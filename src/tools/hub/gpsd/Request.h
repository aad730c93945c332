// What a client of gpsd's protocol asks for: requests taken off its bytes.
#pragma once

#include <optional>
#include <string_view>

namespace Hub::GPSD {

enum class ERequest {
    version,
    devices,
    device, ///< with an argument: to set it up
    watch,  ///< with an argument: to change what is watched
    poll,
    unknown,
    fromBrowser, ///< the first line of an HTTP request
};

struct SRequest {
    ERequest kind = ERequest::unknown;
    std::string_view text;                    ///< as it came, without its argument
    std::optional<std::string_view> argument; ///< behind the "="
};

/// Takes the next request off the front of `input`, with the separators before it. Nothing when no
/// request is there whole: the separators are gone, the rest stays. A request is whole with its
/// ";", the end of its argument or its line's end, or at the end of all input; anything that does
/// not begin with "?" with its line's end.
std::optional<SRequest> TakeRequest(std::string_view& input, bool hasInputEnded);

} // namespace Hub::GPSD
