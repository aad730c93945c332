// The text of a configuration file as lines that can be looked up and changed; no file is touched.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Sections, "key = value" entries and whole-line comments (# and ;). Whatever is not changed comes
/// out as it went in: comments, order, blanks, line ends (also CR LF), a byte order mark, and lines
/// that are not understood. Entries before the first section header are in the section "".
class CConfigText {
public:
    struct SProblem {
        std::size_t lineNumber; ///< from 1
        std::string line;       ///< without its line end
    };

    CConfigText() = default;
    explicit CConfigText(std::string_view text);

    std::string Text() const;

    /// The lines that are not understood. What follows such a section header, up to the next
    /// header, is kept but in no section.
    std::vector<SProblem> Problems() const;

    /// The value of the last entry with this key; nothing when there is none.
    std::optional<std::string> Get(std::string_view section, std::string_view key) const;

    /// The sections that have a header, each once.
    std::vector<std::string> GetSections() const;

    /// The values of the section's entries by key; nothing when no header names it.
    std::optional<std::map<std::string, std::string>> GetSection(std::string_view section) const;

    /// Changes the last entry with this key, or adds one at the end of its section, or that section
    /// at the end. The arguments must have passed the checks below.
    void Set(const std::string& section, const std::string& key, const std::string& value);

    void Remove(std::string_view section, std::string_view key);

    /// Why the text cannot stand in a file as this, and be read back as it is; nullptr when it can.
    static const char* WhyNoSection(std::string_view section);
    static const char* WhyNoKey(std::string_view key);
    static const char* WhyNoValue(std::string_view value);

private:
    enum class EKind { Blank, Comment, Header, Entry, Unknown };

    struct SLine {
        std::string text; ///< with its line end, if it has one
        EKind kind = EKind::Blank;
        std::optional<std::string> section; ///< the one it stands in, none after a bad header
        std::string key;
        std::string value;
    };

    static SLine ParseLine(std::string_view text, const std::optional<std::string>& section);
    static void ParseHeader(std::string_view content, SLine& line);
    static void ParseEntry(std::string_view content, SLine& line);
    static void ReplaceValue(SLine& line, const std::string& value);

    std::size_t FindLast(std::string_view section, std::string_view key) const;
    /// Where a new entry of the section goes; nothing when there is no such section.
    std::optional<std::size_t> EndOfSection(std::string_view section) const;
    bool IsKind(std::size_t index, EKind kind) const { return m_lines[index].kind == kind; }
    void Insert(std::size_t index, const std::string& content, const std::string& section);

    std::string m_byteOrderMark;
    std::string m_lineEnd = "\n"; ///< as the first line has it
    std::vector<SLine> m_lines;
};
