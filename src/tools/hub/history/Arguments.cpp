#include "hub/history/Arguments.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace Hub {

namespace {

constexpr std::array kQuestions{
    SHistoryQuestion{"positions", true, false, false, 3600.0},
    SHistoryQuestion{"events", false, true, false, 0.0},
    SHistoryQuestion{"diagnostics", false, true, false, 0.0},
    SHistoryQuestion{"statuses", false, true, true, 0.0},
};

constexpr int kMostPoints = 5000;
constexpr int kMostRows = 1000;

/// Beyond it a time has no whole seconds any more; some 30,000 years.
constexpr double kLastTime = 1e12;

template <class TNumber>
std::string ReadNumber(const std::string& text, TNumber lowest, TNumber highest, TNumber& number) {
    TNumber read{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), read);
    if (error != std::errc() || end != text.data() + text.size() ||
        !(read >= lowest && read <= highest)) {
        return "no number from " + std::to_string(static_cast<long long>(lowest)) + " to " +
               std::to_string(static_cast<long long>(highest)) + ": '" + text + "'";
    }
    number = read;
    return "";
}

/// An argument that the question does not have is left alone and gives nothing.
std::optional<std::string> ReadOne(const SHistoryQuestion& question, const std::string& name,
                                   const std::string& text, SHistoryArguments& arguments) {
    if (name == "from" || name == "to") {
        return ReadNumber(text, -kLastTime, kLastTime,
                          name == "from" ? arguments.from : arguments.to);
    }
    if (name == "points" && question.hasPoints) {
        return ReadNumber(text, 1, kMostPoints, arguments.points);
    }
    if (name == "limit" && question.hasLimit) {
        return ReadNumber(text, 1, kMostRows, arguments.limit);
    }
    if ((name == "name" || name == "key") && question.hasName) {
        (name == "name" ? arguments.name : arguments.key) = text;
        return "";
    }
    return std::nullopt;
}

} // namespace

const SHistoryQuestion* FindQuestion(const std::string& what) {
    const auto* const found = std::find_if(kQuestions.begin(), kQuestions.end(),
                                           [&](const auto& each) { return each.what == what; });
    return found == kQuestions.end() ? nullptr : found;
}

std::string ReadArguments(const SHistoryQuestion& question, const TQuery& query, double now,
                          SHistoryArguments& arguments) {
    arguments = SHistoryArguments();
    arguments.to = question.span > 0.0 ? now : kLastTime;
    for (const auto& [name, text] : query) {
        if (query.count(name) > 1) {
            return "'" + name + "' is there more than once";
        }
        const auto why = ReadOne(question, name, text, arguments);
        if (!why) {
            return "there is no argument '" + name + "' of " + question.what;
        }
        if (!why->empty()) {
            return "'" + name + "' is " + *why;
        }
    }
    if (query.count("from") == 0) {
        arguments.from = question.span > 0.0 ? arguments.to - question.span : -kLastTime;
    }
    return arguments.from <= arguments.to ? "" : "'from' is later than 'to'";
}

} // namespace Hub
