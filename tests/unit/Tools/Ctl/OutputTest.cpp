#include "ctl/Output.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace Ctl;
using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

TEST(Output, tells_people_texts_and_programs_documents) {
    COutput output;
    CaptureStdout();
    output.Tell("a\nb", {{"k", 1}});
    EXPECT_EQ(GetCapturedStdout(), "a\nb\n");
    output.SetJSON(true);
    CaptureStdout();
    output.Tell("a\nb", {{"k", 1}});
    EXPECT_EQ(GetCapturedStdout(), "{\"k\":1}\n");
    EXPECT_EQ(output.Finish(), 0);
}

TEST(Output, keeps_control_characters_from_the_terminal) {
    EXPECT_EQ(Printable("a\x1B[2Jb\x07\x7F\r\nc\t"), "a?[2Jb???\nc?");
    EXPECT_EQ(Printable("\xC3\xA4"), "\xC3\xA4");
}

TEST(Output, makes_valid_json_of_any_bytes) {
    COutput output;
    output.SetJSON(true);
    CaptureStdout();
    output.Tell("", {{"k", "\xFF\n"}});
    EXPECT_EQ(GetCapturedStdout(), "{\"k\":\"\xEF\xBF\xBD\\n\"}\n");
}

TEST(Output, tells_a_failure_with_its_advice_and_keeps_its_status) {
    COutput output;
    CaptureStderr();
    output.Fail(EStatus::unreachable, "no daemon", "start it");
    EXPECT_EQ(GetCapturedStderr(), "corvanectl: no daemon\nstart it\n");
    EXPECT_EQ(output.Status(), EStatus::unreachable);
    EXPECT_EQ(output.Finish(), 3);
}

TEST(Output, is_one_document_also_of_two_failures) {
    COutput output;
    output.SetJSON(true);
    CaptureStdout();
    CaptureStderr();
    output.Fail(EStatus::refused, "first");
    output.Fail(EStatus::usage, "second");
    EXPECT_EQ(GetCapturedStderr(), "corvanectl: first\ncorvanectl: second\n");
    EXPECT_EQ(GetCapturedStdout(), "{\"error\":{\"status\":1,\"message\":\"first\"}}\n");
    EXPECT_EQ(output.Finish(), 1);
}
