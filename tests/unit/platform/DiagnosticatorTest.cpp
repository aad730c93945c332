#include "platform/Diagnosticator.h"
#include "platform/Published.h"

#include <gtest/gtest.h>

namespace {

using Lines = std::vector<std::string>;

} // namespace

TEST(Diagnosticator, raises_with_a_value_and_clears_without) {
    CPublished published;
    Diagnosticator::CDiagnosticatorAPI diagnostics("Tester");
    diagnostics.Raise({79151, 2}, 1);
    diagnostics.Clear({79151, 2});
    EXPECT_EQ(published.All(),
              (Lines{R"(diagnostics.raise "name":"Tester","code":79151,"sub":2,"value":1 )",
                     R"(diagnostics.clear "name":"Tester","code":79151,"sub":2 )"}));
}

TEST(Diagnosticator, publishes_every_call_also_when_nothing_changed) {
    CPublished published;
    Diagnosticator::CDiagnosticatorAPI diagnostics("Tester");
    diagnostics.Raise({1, 0}, 1);
    diagnostics.Raise({1, 0}, 1);
    EXPECT_EQ(published.Count("diagnostics.raise"), 2);
}
