#include "platform/DebugPrint.h"

#include "ChildProcess.h"
#include "Support/FakeClock.h"
#include "Support/TemporaryFolder.h"
#include "TraceOutputs.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/stat.h>

using testing::HasSubstr;
using testing::Not;

namespace {

/// Runs `body` in a process that was started with this CORVANE_TRACE (nullptr: without).
SChildEnd RunTraced(const char* setting, const std::function<void()>& body) {
    CTraceOutputs::Get(); // what the child replaces
    return RunInChild([&] {
        if (setting == nullptr) {
            unsetenv("CORVANE_TRACE");
        } else {
            setenv("CORVANE_TRACE", setting, 1);
        }
        CTraceOutputs::Restart();
        body();
    });
}

/// What stands on standard error at the end of such a process.
std::string StandardErrorOf(const char* setting, const std::function<void()>& body) {
    const SChildEnd end = RunTraced(setting, body);
    EXPECT_TRUE(end.HasExitedWith(0)) << end.status;
    return end.standardError;
}

std::string Contents(const std::string& path) {
    std::stringstream contents;
    contents << std::ifstream(path, std::ios::binary).rdbuf();
    return contents.str();
}

void PrintOneOfEach() {
    dprintf("trace %d\n", 1);
    deprintf("error %s\n", "two");
}

} // namespace

TEST(DebugPrint, goes_to_standard_error_in_order) {
    EXPECT_EQ(StandardErrorOf(nullptr, PrintOneOfEach), "trace 1\nerror two\n");
    EXPECT_EQ(StandardErrorOf("", PrintOneOfEach), "trace 1\nerror two\n");
}

TEST(DebugPrint, that_is_off_leaves_the_errors) {
    EXPECT_EQ(StandardErrorOf("off", PrintOneOfEach), "error two\n");
}

TEST(DebugPrint, goes_to_the_end_of_a_file_and_errors_do_not) {
    const CTemporaryFolder folder;
    const std::string path = folder.Write("trace", "before\n");
    EXPECT_EQ(StandardErrorOf(path.c_str(), PrintOneOfEach), "error two\n");
    EXPECT_EQ(Contents(path), "before\ntrace 1\n");
}

TEST(DebugPrint, makes_a_file_that_all_may_read) {
    const CTemporaryFolder folder;
    const std::string path = folder.Path("trace");
    StandardErrorOf(path.c_str(), [] {
        umask(0);
        CTraceOutputs::Restart();
    });
    struct stat status = {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_TRUE(S_ISREG(status.st_mode));
    EXPECT_EQ(status.st_mode & 07133U, 0U) << "none may run it, the owner alone may write it";
    EXPECT_EQ(status.st_mode & 0600U, 0600U);
}

TEST(DebugPrint, says_once_that_its_file_cannot_be_opened_and_goes_to_standard_error) {
    EXPECT_EQ(StandardErrorOf("/nonexistent/trace",
                              [] {
                                  PrintOneOfEach();
                                  dprintf("trace %d\n", 2);
                              }),
              "Cannot open the trace file /nonexistent/trace (No such file or directory): tracing "
              "to standard error\ntrace 1\nerror two\ntrace 2\n");
}

TEST(DebugPrint, does_not_wait_for_the_reader_of_a_named_pipe) {
    const CTemporaryFolder folder;
    const std::string path = folder.Path("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_THAT(StandardErrorOf(path.c_str(), PrintOneOfEach),
                HasSubstr("tracing to standard error"));
}

TEST(DebugPrint, never_makes_its_file_a_standard_descriptor) {
    const CTemporaryFolder folder;
    const std::string path = folder.Path("trace");
    const SChildEnd end = RunTraced("off", [&] {
        close(STDIN_FILENO);
        setenv("CORVANE_TRACE", path.c_str(), 1);
        CTraceOutputs::Restart();
        dprintf("trace\n");
        std::_Exit(fcntl(STDIN_FILENO, F_GETFD) < 0 ? 3 : 4);
    });
    EXPECT_TRUE(end.HasExitedWith(3));
    EXPECT_EQ(Contents(path), "trace\n");
}

TEST(DebugPrint, survives_a_full_disk) {
    if (access("/dev/full", W_OK) != 0) {
        GTEST_SKIP() << "this machine has no /dev/full";
    }
    EXPECT_EQ(StandardErrorOf("/dev/full", PrintOneOfEach), "error two\n");
}

TEST(DebugPrint, survives_a_closed_standard_error) {
    const SChildEnd end = RunTraced(nullptr, [] {
        close(STDERR_FILENO);
        PrintOneOfEach();
    });
    EXPECT_TRUE(end.HasExitedWith(0));
}

TEST(DebugPrint, writes_a_text_of_any_length) {
    for (const std::size_t length : {1022U, 1023U, 1024U, 1025U, 20'000U}) {
        const std::string text(length, 'x');
        EXPECT_EQ(StandardErrorOf(nullptr, [&] { dprintf("%s\n", text.c_str()); }), text + '\n');
    }
}

TEST(DebugPrint, writes_nothing_for_an_empty_text) {
    EXPECT_EQ(StandardErrorOf(nullptr, [] { dprintf("%s", ""); }), "");
}

TEST(DebugPrint, keeps_errno) {
    for (const char* const setting : {"", "off", "/nonexistent/trace"}) {
        const SChildEnd end = RunTraced(setting, [] {
            close(STDERR_FILENO); // so that writing fails
            errno = ENXIO;
            dprintf("a\n");
            deprintf("b\n");
            deperror("c");
            std::_Exit(errno == ENXIO ? 0 : 1);
        });
        EXPECT_TRUE(end.HasExitedWith(0)) << setting;
    }
}

TEST(DebugPrint, of_an_error_has_the_text_of_errno) {
    EXPECT_EQ(StandardErrorOf("off",
                              [] {
                                  errno = ENOENT;
                                  deperror("CFileHandler:Open");
                              }),
              "CFileHandler:Open: No such file or directory\n");
}

TEST(DebugPrint, counts_a_repeated_line_and_tells_the_count_at_the_end) {
    EXPECT_EQ(StandardErrorOf(nullptr,
                              [] {
                                  PrintOneOfEach();
                                  PrintOneOfEach();
                                  PrintOneOfEach();
                              }),
              "trace 1\nerror two\ntrace 1 (repeated 2 times)\nerror two (repeated 2 times)\n");
}

TEST(DebugPrint, tells_the_count_with_the_next_print) {
    EXPECT_EQ(StandardErrorOf(nullptr,
                              [] {
                                  CFakeClock clock;
                                  dprintf("a\n");
                                  dprintf("a\n");
                                  clock.Advance(Core::Time::FromSeconds(10.0));
                                  dprintf("a\n");
                              }),
              "a\na (repeated 1 time)\n");
}

TEST(DebugPrint, counts_and_tells_in_the_trace_file_too) {
    const CTemporaryFolder folder;
    const std::string path = folder.Path("trace");
    EXPECT_EQ(StandardErrorOf(path.c_str(),
                              [] {
                                  dprintf("a\n");
                                  deprintf("a\n");
                                  dprintf("a\n");
                              }),
              "a\n");
    EXPECT_EQ(Contents(path), "a\na (repeated 1 time)\n");
}

TEST(DebugPrint, prints_every_measurement) {
    EXPECT_EQ(StandardErrorOf(nullptr,
                              [] {
                                  dprintf("%.3f,main_loop\n", 1.0);
                                  dprintf("%.3f,main_loop\n", 1.0);
                              }),
              "1.000,main_loop\n1.000,main_loop\n");
}

TEST(DebugPrint, never_folds_fragments_of_a_line) {
    EXPECT_EQ(StandardErrorOf(nullptr,
                              [] {
                                  for (int i = 0; i < 2; ++i) {
                                      dprintf("ab");
                                      dprintf("ab");
                                      dprintf("c\n"); // ends a line that it did not begin
                                  }
                                  dprintf("c\n");
                                  dprintf("c\n");
                              }),
              "ababc\nababc\nc\nc (repeated 1 time)\n");
}

TEST(DebugPrint, tells_the_counts_on_a_line_of_their_own) {
    EXPECT_EQ(StandardErrorOf(nullptr,
                              [] {
                                  dprintf("a\n");
                                  dprintf("a\n");
                                  dprintf("unfinished");
                              }),
              "a\nunfinished\na (repeated 1 time)\n");
}

TEST(DebugPrint, still_prints_while_the_process_exits) {
    EXPECT_EQ(StandardErrorOf(nullptr,
                              [] {
                                  // Registered last, so run first; what it registers runs next.
                                  std::atexit([] {
                                      dprintf("a\n");
                                      std::atexit([] { dprintf("a\n"); });
                                  });
                              }),
              "a\na (repeated 1 time)\n");
}
