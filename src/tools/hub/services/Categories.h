// Which names' raw blocks are to be recorded, kept over restarts.
#pragma once

#include "hub/Messages.h"
#include "platform/Config.h"

#include <string>
#include <vector>

namespace Hub {

/// Categories are off until they are set.
class CCategories {
public:
    static constexpr std::size_t kMostCategories = 1000;

    /// Keeps them in a file that is made with the first one.
    explicit CCategories(const std::string& path) : m_file(path) {}

    bool IsEnabled(const std::string& category);
    /// What is wrong with a category's name; the empty text when nothing is.
    static std::string WhyWrong(const std::string& category);
    /// Why it cannot be set as well; the empty text when it can.
    std::string WhyNoRoom(const std::string& category);
    /// Holds at once; one that cannot be kept is told on standard error and holds until the end.
    void Set(const SCategory& category);

    /// All that were ever set.
    std::vector<SCategory> All();

private:
    CConfig m_file;
};

} // namespace Hub
