// The values that remote procedure calls carry: what a client sends and what a server answers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

class BListC;
class BDictionaryC;

/// One value: nothing, a 32-bit integer, a double, a text, a list or a dictionary. A truth value is
/// the integer 0 or 1, which is also what a `bool` becomes here; one that a peer has written as
/// `true` or `false` is kept as what it is, and reads as none of these.
///
/// A value never changes but by assignment, so that copies are cheap: they share what a list or a
/// dictionary holds. Reading it as something that it is not gives nothing.
class BAtomC {
public:
    BAtomC() = default;
    BAtomC(std::int32_t value) : m_value(value) {}
    BAtomC(double value) : m_value(value) {}
    BAtomC(std::string value) : m_value(std::move(value)) {}
    BAtomC(const char* value) : m_value(std::string(value)) {}
    struct STruth {
        bool value;
    };
    BAtomC(STruth value) : m_value(value) {}
    BAtomC(BListC value);
    BAtomC(BDictionaryC value);

    bool IsNull() const { return std::holds_alternative<std::monostate>(m_value); }

    /// Also of a double that is a whole number within 32 bits, since a peer may write 5 as 5.0.
    std::optional<std::int32_t> AsInteger() const;
    /// Also of an integer.
    std::optional<double> AsDouble() const;
    /// Null when it is none.
    const STruth* AsTruth() const { return std::get_if<STruth>(&m_value); }
    /// Null when it is none; otherwise valid as long as this value is left as it is. So are those
    /// of the two below.
    const std::string* AsText() const { return std::get_if<std::string>(&m_value); }
    const BListC* AsList() const;
    const BDictionaryC* AsDictionary() const;

private:
    using TList = std::shared_ptr<const BListC>;
    using TDictionary = std::shared_ptr<const BDictionaryC>;

    std::variant<std::monostate, std::int32_t, double, std::string, STruth, TList, TDictionary>
        m_value;
};

/// Values in order: the arguments of a call, or what it answers.
class BListC {
public:
    /// Each returns the list itself, so that short lists are written in one expression.
    BListC& Add(BAtomC value);
    BListC& AddInt(std::int32_t value) { return Add(value); }
    BListC& AddString(std::string value) { return Add(std::move(value)); }

    std::size_t Size() const { return m_values.size(); }
    /// The value at a position from 0 as a kind; 0, 0.0 and the empty text where it is none.
    std::int32_t GetInt(std::size_t position) const;
    double GetDouble(std::size_t position) const;
    std::string GetString(std::size_t position) const;
    /// The value at a position from 0; past the end a value that is nothing, as a missing argument.
    const BAtomC& At(std::size_t position) const;

    auto begin() const { return m_values.begin(); }
    auto end() const { return m_values.end(); }

private:
    std::vector<BAtomC> m_values;
};

/// Values by name.
class BDictionaryC {
public:
    /// Replaces what had the name before. Returns the dictionary itself.
    BDictionaryC& Set(std::string name, BAtomC value);

    /// Null when nothing has the name.
    const BAtomC* Find(std::string_view name) const;

    /// Pairs of name and value, by rising name.
    auto begin() const { return m_values.begin(); }
    auto end() const { return m_values.end(); }

private:
    std::map<std::string, BAtomC, std::less<>> m_values;
};
