#include "ConfigText.h"

#include "platform/Text.h"

#include <algorithm>
#include <utility>

using Core::Utilities::Trim;

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kLineBreaks("\n\r\0", 3);

bool IsComment(std::string_view content) {
    return content.front() == '#' || content.front() == ';';
}

bool HasBlanksAround(std::string_view text) {
    return Trim(text).size() != text.size();
}

bool HasLineBreak(std::string_view text) {
    return text.find_first_of(kLineBreaks) != std::string_view::npos;
}

std::string_view WithoutLineEnd(std::string_view line) {
    return line.substr(0, std::min(line.size(), line.find_last_not_of("\r\n") + 1));
}

} // namespace

CConfigText::CConfigText(std::string_view text) {
    if (text.starts_with(kByteOrderMark)) {
        m_byteOrderMark = kByteOrderMark;
        text.remove_prefix(kByteOrderMark.size());
    }
    std::optional<std::string> section = "";
    while (!text.empty()) {
        const std::size_t length = std::min(text.find('\n'), text.size() - 1) + 1;
        m_lines.push_back(ParseLine(text.substr(0, length), section));
        section = m_lines.back().section;
        text.remove_prefix(length);
    }
    if (!m_lines.empty() && m_lines.front().text.ends_with("\r\n")) {
        m_lineEnd = "\r\n";
    }
}

CConfigText::SLine CConfigText::ParseLine(std::string_view text,
                                          const std::optional<std::string>& section) {
    SLine line;
    line.text = text;
    line.section = section;
    const std::string_view content = Trim(text);
    if (content.empty()) {
        line.kind = EKind::Blank;
    } else if (IsComment(content)) {
        line.kind = EKind::Comment;
    } else if (content.front() == '[') {
        ParseHeader(content, line);
    } else {
        ParseEntry(content, line);
    }
    return line;
}

void CConfigText::ParseHeader(std::string_view content, SLine& line) {
    const std::string_view name =
        Trim(content.substr(1, std::max<std::size_t>(content.size(), 2) - 2));
    const bool isClosed = content.find(']') == content.size() - 1;
    if (!isClosed || name.empty() || WhyNoSection(name) != nullptr) {
        line.kind = EKind::Unknown;
        line.section.reset();
        return;
    }
    line.kind = EKind::Header;
    line.section = name;
}

void CConfigText::ParseEntry(std::string_view content, SLine& line) {
    const std::size_t equals = content.find('=');
    const std::string_view key = Trim(content.substr(0, equals));
    if (equals == std::string_view::npos || key.empty() || HasLineBreak(content)) {
        line.kind = EKind::Unknown;
        return;
    }
    line.kind = EKind::Entry;
    line.key = key;
    line.value = Trim(content.substr(equals + 1));
}

std::string CConfigText::Text() const {
    std::string text = m_byteOrderMark;
    for (const SLine& line : m_lines) {
        text += line.text;
    }
    return text;
}

std::vector<CConfigText::SProblem> CConfigText::Problems() const {
    std::vector<SProblem> problems;
    for (std::size_t i = 0; i < m_lines.size(); ++i) {
        if (IsKind(i, EKind::Unknown)) {
            problems.push_back({i + 1, std::string(WithoutLineEnd(m_lines[i].text))});
        }
    }
    return problems;
}

std::optional<std::string> CConfigText::Get(std::string_view section, std::string_view key) const {
    const std::size_t index = FindLast(section, key);
    if (index == m_lines.size()) {
        return std::nullopt;
    }
    return m_lines[index].value;
}

std::vector<std::string> CConfigText::GetSections() const {
    std::vector<std::string> sections;
    for (const SLine& line : m_lines) {
        if (line.kind == EKind::Header &&
            std::find(sections.begin(), sections.end(), *line.section) == sections.end()) {
            sections.push_back(*line.section);
        }
    }
    return sections;
}

std::optional<std::map<std::string, std::string>>
CConfigText::GetSection(std::string_view section) const {
    std::map<std::string, std::string> values;
    bool isNamed = false;
    for (const SLine& line : m_lines) {
        if (line.section != section) {
            continue;
        }
        isNamed = isNamed || line.kind == EKind::Header;
        if (line.kind == EKind::Entry) {
            values[line.key] = line.value; // the last one holds
        }
    }
    if (!isNamed) {
        return std::nullopt;
    }
    return values;
}

void CConfigText::Set(const std::string& section, const std::string& key,
                      const std::string& value) {
    const std::size_t index = FindLast(section, key);
    if (index < m_lines.size()) {
        ReplaceValue(m_lines[index], value);
        return;
    }
    const std::string entry = key + " = " + value;
    if (const auto end = EndOfSection(section)) {
        Insert(*end, entry, section);
        return;
    }
    if (!m_lines.empty() && !IsKind(m_lines.size() - 1, EKind::Blank)) {
        Insert(m_lines.size(), "", section);
    }
    Insert(m_lines.size(), '[' + section + ']', section);
    Insert(m_lines.size(), entry, section);
}

void CConfigText::ReplaceValue(SLine& line, const std::string& value) {
    const std::string_view content = WithoutLineEnd(line.text);
    const std::string end = line.text.substr(content.size());
    const std::size_t afterEquals = content.find('=') + 1;
    const std::size_t old = content.find_first_not_of(" \t", afterEquals);
    line.text.resize(std::min(old, content.size()));
    line.text += value + end;
    line.value = value;
}

void CConfigText::Remove(std::string_view section, std::string_view key) {
    std::erase_if(m_lines, [&](const SLine& line) {
        return line.kind == EKind::Entry && line.section == section && line.key == key;
    });
}

std::size_t CConfigText::FindLast(std::string_view section, std::string_view key) const {
    for (std::size_t i = m_lines.size(); i-- > 0;) {
        if (IsKind(i, EKind::Entry) && m_lines[i].key == key && m_lines[i].section == section) {
            return i;
        }
    }
    return m_lines.size();
}

std::optional<std::size_t> CConfigText::EndOfSection(std::string_view section) const {
    std::size_t end = m_lines.size();
    while (end > 0 && m_lines[end - 1].section != section) {
        --end;
    }
    if (end == 0 && !section.empty()) {
        return std::nullopt;
    }
    if (end < m_lines.size()) {
        // Comments right above the next header, apart from this section, belong to the next one.
        std::size_t comments = end;
        while (comments > 0 && IsKind(comments - 1, EKind::Comment)) {
            --comments;
        }
        if (comments > 0 && IsKind(comments - 1, EKind::Blank)) {
            end = comments;
        }
    }
    while (end > 0 && IsKind(end - 1, EKind::Blank)) {
        --end;
    }
    return end;
}

void CConfigText::Insert(std::size_t index, const std::string& content,
                         const std::string& section) {
    if (index > 0 && !m_lines[index - 1].text.ends_with('\n')) {
        m_lines[index - 1].text += m_lineEnd;
    }
    const SLine line = ParseLine(content + m_lineEnd, section);
    m_lines.insert(m_lines.begin() + static_cast<std::ptrdiff_t>(index), line);
}

const char* CConfigText::WhyNoSection(std::string_view section) {
    if (HasLineBreak(section)) {
        return "the section has a line break or a zero byte";
    }
    if (section.find(']') != std::string_view::npos) {
        return "the section has a ']'";
    }
    return HasBlanksAround(section) ? "the section has blanks around it" : nullptr;
}

const char* CConfigText::WhyNoKey(std::string_view key) {
    if (key.empty()) {
        return "the key is empty";
    }
    if (HasLineBreak(key)) {
        return "the key has a line break or a zero byte";
    }
    if (key.find('=') != std::string_view::npos) {
        return "the key has a '='";
    }
    if (IsComment(key) || key.front() == '[') {
        return "the key begins as a comment or a section does";
    }
    return HasBlanksAround(key) ? "the key has blanks around it" : nullptr;
}

const char* CConfigText::WhyNoValue(std::string_view value) {
    if (HasLineBreak(value)) {
        return "the value has a line break or a zero byte";
    }
    return HasBlanksAround(value) ? "the value has blanks around it" : nullptr;
}
