#include "hub/state/Counts.h"

#include "platform/Text.h"

#include <charconv>
#include <string_view>

namespace Hub {

namespace {

constexpr char kChecksums[] = "checksum_stats";
constexpr char kDropped[] = "dropped_messages";

std::optional<std::int64_t> Count(std::string_view text) {
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isWhole = error == std::errc() && end == text.data() + text.size() && value >= 0;
    return isWhole ? std::optional(value) : std::nullopt;
}

} // namespace

std::optional<SChecksumCounts> ChecksumCounts(const SStatus& status) {
    if (status.key != kChecksums) {
        return std::nullopt;
    }
    const auto parts = Core::Utilities::Split(status.value, ',');
    if (parts.size() != 2) {
        return std::nullopt;
    }
    const auto good = Count(parts[0]);
    const auto rejected = Count(parts[1]);
    return good && rejected ? std::optional(SChecksumCounts{*good, *rejected}) : std::nullopt;
}

std::int64_t DroppedMessages(const CState& state) {
    std::int64_t sum = 0;
    for (const auto& [key, kept] : state.Statuses()) {
        if (key.second == kDropped) {
            sum += Count(kept.message.value).value_or(0);
        }
    }
    return sum;
}

} // namespace Hub
