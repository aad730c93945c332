#include "Logs/DamagedLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <unistd.h>

namespace {

/// Leaves a line in standard output's buffer, with standard output going where errors go.
void LeaveUnflushed() {
    dup2(STDERR_FILENO, STDOUT_FILENO);
    std::setvbuf(stdout, nullptr, _IOFBF, 4096);
    std::fputs("not yet flushed\n", stdout);
}

} // namespace

TEST(DamagedLog, fails_an_assertion_with_the_C_library_s_line_and_SIGABRT) {
    const std::string expected = std::string(program_invocation_short_name) +
                                 ": source:12: int f(): Assertion `1 == 2' failed.\n";
    EXPECT_EXIT(DamagedLog::FailAssertion("source", 12, "int f()", "1 == 2"),
                testing::KilledBySignal(SIGABRT), testing::StartsWith(expected));
}

TEST(DamagedLog, flushes_standard_output_before_a_failed_assertion) {
    EXPECT_EXIT((LeaveUnflushed(), DamagedLog::FailAssertion("s", 1, "f", "0")),
                testing::KilledBySignal(SIGABRT), testing::StartsWith("not yet flushed\n"));
}

TEST(DamagedLog, exits_with_status_1) {
    EXPECT_EXIT(DamagedLog::Exit(), testing::ExitedWithCode(1), "");
}

TEST(DamagedLog, flushes_standard_output_before_it_exits) {
    EXPECT_EXIT((LeaveUnflushed(), DamagedLog::Exit()), testing::ExitedWithCode(1),
                testing::Eq("not yet flushed\n"));
}
