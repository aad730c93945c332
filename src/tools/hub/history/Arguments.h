// The arguments of a question about the history.
#pragma once

#include <map>
#include <optional>
#include <string>

namespace Hub {

using TQuery = std::multimap<std::string, std::string>;

/// Those that were not given have their defaults.
struct SHistoryArguments {
    double from = 0.0; ///< seconds since the Unix epoch
    double to = 0.0;
    int points = 1000;
    int limit = 100;
    std::optional<std::string> name;
    std::optional<std::string> key;
};

/// Which arguments a question has, and how far back it goes unless told.
struct SHistoryQuestion {
    const char* what;
    bool hasPoints;
    bool hasLimit;
    bool hasName;
    double span; ///< seconds; 0 for all there is
};

/// Null when there is no such question.
const SHistoryQuestion* FindQuestion(const std::string& what);

/// Returns what is wrong, the empty text when nothing is.
std::string ReadArguments(const SHistoryQuestion& question, const TQuery& query, double now,
                          SHistoryArguments& arguments);

} // namespace Hub
