#include "JSONValue.h"

#include "JSONText.h"

#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

namespace {

using JSONValue::EFault;
using nlohmann::json;

/// Builds the value while the text is parsed. Open lists and dictionaries are kept here and not on
/// the program's stack, and parsing ends where they get too deep.
class CValueBuilder : public json::json_sax_t {
public:
    BAtomC TakeValue() { return std::move(m_value); }

    bool null() override { return Place(BAtomC()); }
    bool boolean(bool value) override { return Place(BAtomC::STruth{value}); }
    bool number_integer(number_integer_t value) override {
        if (value < std::numeric_limits<std::int32_t>::min()) {
            return Place(static_cast<double>(value));
        }
        return Place(static_cast<std::int32_t>(value)); // never above zero here
    }
    bool number_unsigned(number_unsigned_t value) override {
        if (value > std::uint64_t{std::numeric_limits<std::int32_t>::max()}) {
            return Place(static_cast<double>(value));
        }
        return Place(static_cast<std::int32_t>(value));
    }
    bool number_float(number_float_t value, const string_t&) override { return Place(value); }
    bool string(string_t& value) override { return Place(std::move(value)); }
    bool binary(binary_t&) override { return false; }

    EFault Fault() const { return m_fault; }

    bool start_object(std::size_t) override { return Begin(); }
    bool key(string_t& name) override {
        m_open.back().name = std::move(name);
        return true;
    }
    bool end_object() override { return Place(Finish().dictionary); }
    bool start_array(std::size_t) override { return Begin(); }
    bool end_array() override { return Place(Finish().list); }
    bool parse_error(std::size_t, const std::string&, const json::exception&) override {
        return false;
    }

private:
    struct SOpen {
        BListC list;
        BDictionaryC dictionary;
        std::optional<std::string> name; ///< of the dictionary's next value
    };

    bool Begin() {
        m_open.emplace_back();
        return m_open.size() <= JSONValue::kMaxDepth || Fail(EFault::tooDeep);
    }

    bool Fail(EFault fault) {
        m_fault = fault;
        return false;
    }

    SOpen Finish() {
        SOpen finished = std::move(m_open.back());
        m_open.pop_back();
        return finished;
    }

    bool Place(BAtomC value) {
        if (++m_count > JSONValue::kMaxValues) {
            return Fail(EFault::tooManyValues);
        }
        if (m_open.empty()) {
            m_value = std::move(value);
        } else if (SOpen& open = m_open.back(); open.name) {
            open.dictionary.Set(std::move(*open.name), std::move(value));
        } else {
            open.list.Add(std::move(value));
        }
        return true;
    }

    std::vector<SOpen> m_open;
    BAtomC m_value;
    std::size_t m_count = 0;
    EFault m_fault = EFault::notJSON;
};

/// Sees whether a text is JSON and keeps nothing of it but how deep it is.
class CChecker : public json::json_sax_t {
public:
    EFault Fault() const { return m_isTooDeep ? EFault::tooDeep : EFault::notJSON; }

    bool null() override { return true; }
    bool boolean(bool) override { return true; }
    bool number_integer(number_integer_t) override { return true; }
    bool number_unsigned(number_unsigned_t) override { return true; }
    bool number_float(number_float_t, const string_t&) override { return true; }
    bool string(string_t&) override { return true; }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return Begin(); }
    bool key(string_t&) override { return true; }
    bool end_object() override { return End(); }
    bool start_array(std::size_t) override { return Begin(); }
    bool end_array() override { return End(); }
    bool parse_error(std::size_t, const std::string&, const json::exception&) override {
        return false;
    }

private:
    bool Begin() {
        m_isTooDeep = ++m_depth > JSONValue::kMaxDepth;
        return !m_isTooDeep;
    }
    bool End() {
        --m_depth;
        return true;
    }

    std::size_t m_depth = 0;
    bool m_isTooDeep = false;
};

/// The parser would take a zero byte for the end of the text and not look at what follows.
bool HasZeroByte(std::string_view text) {
    return text.find('\0') != std::string_view::npos;
}

void AppendList(std::string& out, const BListC& list) {
    out += "[";
    const char* separator = "";
    for (const BAtomC& value : list) {
        out += std::exchange(separator, ",");
        JSONValue::Append(out, value);
    }
    out += "]";
}

void AppendDictionary(std::string& out, const BDictionaryC& dictionary) {
    out += '{';
    const char* separator = "";
    for (const auto& [name, value] : dictionary) {
        out += std::exchange(separator, ",");
        JSONText::AppendString(out, name);
        out += ':';
        JSONValue::Append(out, value);
    }
    out += '}';
}

} // namespace

std::optional<BAtomC> JSONValue::Read(std::string_view text, EFault* fault) {
    CValueBuilder builder;
    const bool isRead = !HasZeroByte(text) && json::sax_parse(text.begin(), text.end(), &builder);
    if (fault != nullptr) {
        *fault = isRead ? EFault::none : builder.Fault();
    }
    return isRead ? std::optional<BAtomC>(builder.TakeValue()) : std::nullopt;
}

JSONValue::EFault JSONValue::Check(std::string_view text) {
    CChecker checker;
    const bool isJSON = !HasZeroByte(text) && json::sax_parse(text.begin(), text.end(), &checker);
    return isJSON ? EFault::none : checker.Fault();
}

void JSONValue::Append(std::string& out, const BAtomC& value) {
    if (const BListC* list = value.AsList()) {
        AppendList(out, *list);
    } else if (const BDictionaryC* dictionary = value.AsDictionary()) {
        AppendDictionary(out, *dictionary);
    } else if (const BAtomC::STruth* truth = value.AsTruth()) {
        out += truth->value ? "true" : "false";
    } else if (const std::string* text = value.AsText()) {
        JSONText::AppendString(out, *text);
    } else if (const std::optional<double> number = value.AsDouble()) {
        JSONText::AppendDouble(out, *number);
    } else {
        out += "null";
    }
}
