// The logging service's categories that the program under test switches, without a service.
#pragma once

#include <string>
#include <utility>
#include <vector>

/// Stands in this test program in place of the platform's CLogClient.
class CCategoryWishes {
public:
    using Wishes = std::vector<std::pair<std::string, bool>>;

    /// Every wish since the last Forget().
    static Wishes& All();
    static void Forget() { All().clear(); }
};
