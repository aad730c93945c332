#include "hub/http/MetricsText.h"

#include <array>
#include <charconv>
#include <cmath>

namespace Hub {

namespace {

std::string Number(double value) {
    if (std::isnan(value)) {
        return "NaN";
    }
    if (std::isinf(value)) {
        return value > 0.0 ? "+Inf" : "-Inf";
    }
    std::array<char, 32> buffer;
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return std::string(buffer.data(), result.ptr);
}

std::string Escaped(std::string_view value) {
    std::string text;
    for (const char c : value) {
        if (c == '\n') {
            text += "\\n";
            continue;
        }
        if (c == '\\' || c == '"') {
            text += '\\';
        }
        text += c;
    }
    return text;
}

} // namespace

void CMetricsText::Begin(std::string_view name, std::string_view help, std::string_view type) {
    m_name = name;
    m_text.append("# HELP ").append(name).append(" ").append(help).append("\n");
    m_text.append("# TYPE ").append(name).append(" ").append(type).append("\n");
}

void CMetricsText::Sample(TLabels labels, double value) {
    m_text += m_name;
    char separator = '{';
    for (const auto& [label, text] : labels) {
        m_text += separator;
        m_text.append(label).append("=\"").append(Escaped(text)).append("\"");
        separator = ',';
    }
    m_text.append(labels.size() == 0 ? " " : "} ").append(Number(value)).append("\n");
}

} // namespace Hub
