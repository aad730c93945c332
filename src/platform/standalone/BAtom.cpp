#include "platform/BAtom.h"

#include <cmath>
#include <limits>

namespace {

/// The first test also refuses what is not a number.
bool IsWholeWithin32Bits(double value) {
    return value >= std::numeric_limits<std::int32_t>::min() &&
           value <= std::numeric_limits<std::int32_t>::max() && std::trunc(value) == value;
}

} // namespace

BAtomC::BAtomC(BListC value) : m_value(std::make_shared<const BListC>(std::move(value))) {
}

BAtomC::BAtomC(BDictionaryC value)
    : m_value(std::make_shared<const BDictionaryC>(std::move(value))) {
}

std::optional<std::int32_t> BAtomC::AsInteger() const {
    if (const std::int32_t* integer = std::get_if<std::int32_t>(&m_value)) {
        return *integer;
    }
    const double* number = std::get_if<double>(&m_value);
    if (number != nullptr && IsWholeWithin32Bits(*number)) {
        return static_cast<std::int32_t>(*number);
    }
    return std::nullopt;
}

std::optional<double> BAtomC::AsDouble() const {
    if (const std::int32_t* integer = std::get_if<std::int32_t>(&m_value)) {
        return *integer;
    }
    if (const double* number = std::get_if<double>(&m_value)) {
        return *number;
    }
    return std::nullopt;
}

const BListC* BAtomC::AsList() const {
    const TList* list = std::get_if<TList>(&m_value);
    return list == nullptr ? nullptr : list->get();
}

const BDictionaryC* BAtomC::AsDictionary() const {
    const TDictionary* dictionary = std::get_if<TDictionary>(&m_value);
    return dictionary == nullptr ? nullptr : dictionary->get();
}

BListC& BListC::Add(BAtomC value) {
    m_values.push_back(std::move(value));
    return *this;
}

const BAtomC& BListC::At(std::size_t position) const {
    static const BAtomC nothing;
    return position < m_values.size() ? m_values[position] : nothing;
}

std::int32_t BListC::GetInt(std::size_t position) const {
    return At(position).AsInteger().value_or(0);
}

double BListC::GetDouble(std::size_t position) const {
    return At(position).AsDouble().value_or(0.0);
}

std::string BListC::GetString(std::size_t position) const {
    const std::string* const text = At(position).AsText();
    return text == nullptr ? std::string() : *text;
}

BDictionaryC& BDictionaryC::Set(std::string name, BAtomC value) {
    m_values.insert_or_assign(std::move(name), std::move(value));
    return *this;
}

const BAtomC* BDictionaryC::Find(std::string_view name) const {
    const auto found = m_values.find(name);
    return found == m_values.end() ? nullptr : &found->second;
}
