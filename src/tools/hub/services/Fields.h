// Takes the arguments of a message by name, and keeps what was wrong with the first wrong one.
#pragma once

#include "platform/BAtom.h"

#include <cstdint>
#include <string>

namespace Hub {

/// Each reading gives a value of its kind; one that is missing or not of the kind gives an empty
/// one and is told by WhyWrong().
class CFields {
public:
    explicit CFields(const BDictionaryC& values) : m_values(values) {}

    /// At most so many bytes long.
    std::string Text(const char* name, std::size_t longest);
    /// A text of at least one byte that holds no control characters.
    std::string Name(const char* name);
    /// NaN for a null, which is how a number that is not finite is written.
    double Number(const char* name);
    double FiniteNumber(const char* name);
    std::int32_t Integer(const char* name);
    /// A whole number from 0 to `highest`, which may lie beyond 32 bits.
    std::int64_t Count(const char* name, std::int64_t highest);
    /// Also written as 0 or 1.
    bool Truth(const char* name);
    /// Empty when it is none.
    BListC List(const char* name);
    /// For readers of what lies in a list.
    void Refuse(const std::string& why);

    /// The empty text when nothing was wrong.
    const std::string& WhyWrong() const { return m_whyWrong; }

private:
    const BAtomC* Find(const char* name);
    void Want(const char* name, const std::string& what);

    const BDictionaryC& m_values;
    std::string m_whyWrong;
};

} // namespace Hub
