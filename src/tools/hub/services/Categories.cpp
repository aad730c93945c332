#include "hub/services/Categories.h"

#include <algorithm>

namespace Hub {

namespace {

constexpr char kSection[] = "categories";

/// What a line of the file can carry as a key.
bool IsAllowed(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '-' || c == '.';
}

} // namespace

bool CCategories::IsEnabled(const std::string& category) {
    return m_file.GetBoolean(kSection, category, false);
}

std::string CCategories::WhyWrong(const std::string& category) {
    if (category.empty() || !std::all_of(category.begin(), category.end(), IsAllowed)) {
        return "a category is made of letters, digits, '_', '-' and '.'";
    }
    return {};
}

std::string CCategories::WhyNoRoom(const std::string& category) {
    const auto all = m_file.GetSection(kSection);
    if (all && all->size() >= kMostCategories && !all->contains(category)) {
        return "there are " + std::to_string(kMostCategories) + " categories already";
    }
    return {};
}

void CCategories::Set(const SCategory& category) {
    m_file.SetBoolean(kSection, category.category, category.isEnabled);
}

std::vector<SCategory> CCategories::All() {
    std::vector<SCategory> all;
    const auto section = m_file.GetSection(kSection);
    if (section) {
        for (const auto& [name, value] : *section) {
            all.push_back({name, IsEnabled(name)});
        }
    }
    return all;
}

} // namespace Hub
