// Every test begins with a trace that has printed nothing, so that no repetition is counted across.

#include "TraceOutputs.h"

#include <gtest/gtest.h>

namespace {

class CFreshTrace : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { CTraceOutputs::Restart(); }
};

[[maybe_unused]] const bool g_isListening = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new CFreshTrace);
    return true;
}();

} // namespace
