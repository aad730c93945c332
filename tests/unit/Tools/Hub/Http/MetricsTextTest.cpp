#include "hub/http/MetricsText.h"

#include <gtest/gtest.h>
#include <limits>

using Hub::CMetricsText;

TEST(MetricsText, begins_a_family_with_its_help_and_type) {
    CMetricsText text;
    text.Gauge("a", "What it is.");
    text.Sample(1.0);
    text.Counter("b_total", "Counted.");
    EXPECT_EQ(text.Text(), "# HELP a What it is.\n# TYPE a gauge\na 1\n"
                           "# HELP b_total Counted.\n# TYPE b_total counter\n");
}

TEST(MetricsText, writes_labels_in_their_order) {
    CMetricsText text;
    text.Gauge("a", "");
    text.Sample({{"x", "1"}, {"y", "2"}}, 3.0);
    EXPECT_TRUE(text.Text().ends_with("\na{x=\"1\",y=\"2\"} 3\n"));
}

TEST(MetricsText, escapes_labels) {
    CMetricsText text;
    text.Gauge("a", "");
    text.Sample({{"x", "back\\slash \"quoted\"\nline \xC3\xA4"}}, 1.0);
    EXPECT_TRUE(text.Text().ends_with("a{x=\"back\\\\slash \\\"quoted\\\"\\nline \xC3\xA4\"} 1\n"));
}

TEST(MetricsText, writes_numbers_with_all_their_digits) {
    CMetricsText text;
    text.Gauge("a", "");
    const std::string head = text.Text();
    text.Sample(0.1);
    text.Sample(-2.5);
    text.Sample(1763834800.125);
    text.Sample(std::numeric_limits<double>::quiet_NaN());
    text.Sample(std::numeric_limits<double>::infinity());
    text.Sample(-std::numeric_limits<double>::infinity());
    EXPECT_EQ(text.Text().substr(head.size()),
              "a 0.1\na -2.5\na 1763834800.125\na NaN\na +Inf\na -Inf\n");
}
