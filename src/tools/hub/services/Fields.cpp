#include "hub/services/Fields.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Hub {

namespace {

constexpr std::size_t kLongestName = 256;

bool IsControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

} // namespace

const BAtomC* CFields::Find(const char* name) {
    const BAtomC* const value = m_values.Find(name);
    if (value == nullptr) {
        Refuse(std::string("\"") + name + "\" is missing");
    }
    return value;
}

void CFields::Want(const char* name, const std::string& what) {
    Refuse(std::string("\"") + name + "\" must be " + what);
}

void CFields::Refuse(const std::string& why) {
    if (m_whyWrong.empty()) {
        m_whyWrong = why;
    }
}

std::string CFields::Text(const char* name, std::size_t longest) {
    const BAtomC* const value = Find(name);
    if (value == nullptr) {
        return {};
    }
    const std::string* const text = value->AsText();
    if (text == nullptr || text->size() > longest) {
        Want(name, "a text of at most " + std::to_string(longest) + " bytes");
        return {};
    }
    return *text;
}

std::string CFields::Name(const char* name) {
    std::string text = Text(name, kLongestName);
    if (m_whyWrong.empty() && (text.empty() || std::any_of(text.begin(), text.end(), IsControl))) {
        Want(name, "a name, without control characters");
    }
    return text;
}

double CFields::Number(const char* name) {
    const BAtomC* const value = Find(name);
    if (value == nullptr || value->IsNull()) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const auto number = value->AsDouble();
    if (!number) {
        Want(name, "a number or null");
    }
    return number.value_or(0.0);
}

double CFields::FiniteNumber(const char* name) {
    const double number = Number(name);
    if (m_whyWrong.empty() && !std::isfinite(number)) {
        Want(name, "a number");
    }
    return number;
}

std::int32_t CFields::Integer(const char* name) {
    const BAtomC* const value = Find(name);
    const auto number = value == nullptr ? std::nullopt : value->AsInteger();
    if (!number) {
        Want(name, "a whole number of 32 bits");
    }
    return number.value_or(0);
}

std::int64_t CFields::Count(const char* name, std::int64_t highest) {
    const double number = FiniteNumber(name);
    if (!m_whyWrong.empty()) {
        return 0;
    }
    if (number < 0.0 || number > static_cast<double>(highest) || number != std::floor(number)) {
        Want(name, "a whole number from 0 to " + std::to_string(highest));
        return 0;
    }
    return static_cast<std::int64_t>(number);
}

bool CFields::Truth(const char* name) {
    const BAtomC* const value = Find(name);
    if (value == nullptr) {
        return false;
    }
    if (const BAtomC::STruth* const truth = value->AsTruth()) {
        return truth->value;
    }
    const auto number = value->AsInteger();
    if (!number || (*number != 0 && *number != 1)) {
        Want(name, "true or false, or 1 or 0");
    }
    return number == 1;
}

BListC CFields::List(const char* name) {
    const BAtomC* const value = Find(name);
    const BListC* const list = value == nullptr ? nullptr : value->AsList();
    if (list == nullptr) {
        Want(name, "an array");
        return {};
    }
    return *list;
}

} // namespace Hub
