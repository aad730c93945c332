#include "hub/gpsd/Request.h"

#include "platform/Text.h"

#include <algorithm>
#include <array>

namespace Hub::GPSD {

namespace {

constexpr auto kNone = std::string_view::npos;

bool IsSeparator(char c) {
    return c == ';' || c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

/// Requests come from programs of any origin: that of a web page begins with a method in capitals.
bool IsHTTPRequestLine(std::string_view line) {
    const std::size_t end = line.find(' ');
    return end != kNone && end > 0 &&
           std::all_of(line.begin(), line.begin() + static_cast<std::ptrdiff_t>(end),
                       [](char c) { return c >= 'A' && c <= 'Z'; }) &&
           line.find(" HTTP/", end) != kNone;
}

/// How long the JSON object at the front is; npos when its end is not there.
std::size_t ObjectLength(std::string_view text) {
    int depth = 0;
    bool isInString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (isInString && c == '\\') {
            ++i;
        } else if (c == '"') {
            isInString = !isInString;
        } else if (!isInString && c == '{') {
            ++depth;
        } else if (!isInString && c == '}' && --depth == 0) {
            return i + 1;
        }
    }
    return kNone;
}

ERequest KindOf(std::string_view name, bool hasArgument) {
    struct SRow {
        std::string_view name;
        ERequest kind;
        bool takesArgument;
    };
    static constexpr std::array kRows = {
        SRow{"?VERSION", ERequest::version, false}, SRow{"?DEVICES", ERequest::devices, false},
        SRow{"?DEVICE", ERequest::device, true},    SRow{"?WATCH", ERequest::watch, true},
        SRow{"?POLL", ERequest::poll, false},
    };
    const auto* const row = std::find_if(kRows.begin(), kRows.end(), [&](const SRow& each) {
        return each.name == name && (each.takesArgument || !hasArgument);
    });
    return row == kRows.end() ? ERequest::unknown : row->kind;
}

/// How long the argument is that begins here; npos when its end is not there.
std::size_t ArgumentLength(std::string_view text, bool hasInputEnded) {
    const std::size_t lineEnd = text.find('\n');
    const std::string_view line = text.substr(0, lineEnd);
    const std::size_t begin = line.find_first_not_of(" \t");
    const std::size_t length = begin == kNone       ? kNone
                               : line[begin] == '{' ? ObjectLength(line.substr(begin))
                                                    : line.substr(begin).find(';');
    if (length != kNone) {
        return begin + length;
    }
    return lineEnd != kNone || hasInputEnded ? line.size() : kNone;
}

} // namespace

std::optional<SRequest> TakeRequest(std::string_view& input, bool hasInputEnded) {
    const auto take = [&](std::size_t count) {
        const std::string_view taken = input.substr(0, count);
        input.remove_prefix(taken.size());
        return taken;
    };
    take(static_cast<std::size_t>(std::find_if_not(input.begin(), input.end(), IsSeparator) -
                                  input.begin()));
    if (input.empty()) {
        return std::nullopt;
    }
    const std::size_t end = input.find_first_of(input[0] == '?' ? ";=\n" : "\n");
    if (end == kNone && !hasInputEnded) {
        return std::nullopt;
    }
    SRequest request;
    if (end == kNone || input[end] != '=') {
        request.text = Core::Utilities::Trim(take(end));
        request.kind =
            IsHTTPRequestLine(request.text) ? ERequest::fromBrowser : KindOf(request.text, false);
        return request;
    }
    const std::size_t length = ArgumentLength(input.substr(end + 1), hasInputEnded);
    if (length == kNone) {
        return std::nullopt;
    }
    request.text = Core::Utilities::Trim(take(end));
    request.argument = Core::Utilities::Trim(take(1 + length).substr(1));
    request.kind = KindOf(request.text, true);
    return request;
}

} // namespace Hub::GPSD
