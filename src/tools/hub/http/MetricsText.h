// Writes Prometheus' text format 0.0.4: families of samples with labels.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace Hub {

class CMetricsText {
public:
    using TLabels = std::initializer_list<std::pair<std::string_view, std::string_view>>;

    /// Begins a family; its samples follow.
    void Gauge(std::string_view name, std::string_view help) { Begin(name, help, "gauge"); }
    void Counter(std::string_view name, std::string_view help) { Begin(name, help, "counter"); }

    void Sample(double value) { Sample({}, value); }
    void Sample(TLabels labels, double value);

    const std::string& Text() const { return m_text; }

private:
    void Begin(std::string_view name, std::string_view help, std::string_view type);

    std::string m_text;
    std::string m_name;
};

} // namespace Hub
