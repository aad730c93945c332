#include "hub/gpsd/Request.h"

#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <vector>

using namespace Hub::GPSD;

namespace {

struct STaken {
    ERequest kind;
    std::string text;
    std::string argument; ///< "-" for none

    bool operator==(const STaken&) const = default;
    friend void PrintTo(const STaken& taken, std::ostream* out) {
        *out << static_cast<int>(taken.kind) << " " << taken.text << " " << taken.argument;
    }
};
using Requests = std::vector<STaken>;

/// All requests that are whole; what is left stays in `input`.
Requests TakeAll(std::string_view& input, bool hasEnded = false) {
    Requests all;
    while (const auto request = TakeRequest(input, hasEnded)) {
        all.push_back({request->kind, std::string(request->text),
                       std::string(request->argument.value_or("-"))});
    }
    return all;
}

Requests RequestsIn(std::string_view input, bool hasEnded = false) {
    return TakeAll(input, hasEnded);
}

} // namespace

TEST(GPSDRequest, each_command_is_known) {
    EXPECT_EQ(RequestsIn("?VERSION;?DEVICES;?DEVICE;?WATCH;?POLL;\n"),
              (Requests{{ERequest::version, "?VERSION", "-"},
                        {ERequest::devices, "?DEVICES", "-"},
                        {ERequest::device, "?DEVICE", "-"},
                        {ERequest::watch, "?WATCH", "-"},
                        {ERequest::poll, "?POLL", "-"}}));
}

TEST(GPSDRequest, ends_with_its_semicolon_or_its_line) {
    for (const char* text : {"?POLL;", "?POLL\n", "?POLL\r\n", " ;\n ?POLL ;;\r\n"}) {
        EXPECT_EQ(RequestsIn(text), (Requests{{ERequest::poll, "?POLL", "-"}})) << text;
    }
}

TEST(GPSDRequest, waits_for_the_rest_of_what_is_cut) {
    const std::string_view whole = "?WATCH={\"device\":\"}\\\"{\",\"raw\":{}}";
    for (std::size_t length = 0; length < whole.size(); ++length) {
        std::string_view cut = whole.substr(0, length);
        EXPECT_EQ(TakeAll(cut), Requests{}) << length;
        EXPECT_EQ(cut, whole.substr(0, length));
    }
    EXPECT_EQ(RequestsIn(whole),
              (Requests{{ERequest::watch, "?WATCH", std::string(whole.substr(7))}}));
}

TEST(GPSDRequest, ends_with_its_argument_also_without_a_semicolon) {
    EXPECT_EQ(
        RequestsIn("?WATCH={\"json\":true}?POLL;"),
        (Requests{{ERequest::watch, "?WATCH", "{\"json\":true}"}, {ERequest::poll, "?POLL", "-"}}));
}

TEST(GPSDRequest, an_argument_that_is_no_object_ends_with_a_semicolon_or_the_line) {
    EXPECT_EQ(RequestsIn("?WATCH=5;?WATCH= {\"a\n?WATCH=\n"),
              (Requests{{ERequest::watch, "?WATCH", "5"},
                        {ERequest::watch, "?WATCH", "{\"a"},
                        {ERequest::watch, "?WATCH", ""}}));
}

TEST(GPSDRequest, at_the_end_of_all_input_what_is_there_is_whole) {
    EXPECT_EQ(RequestsIn("?POLL", true), (Requests{{ERequest::poll, "?POLL", "-"}}));
    EXPECT_EQ(RequestsIn("?WATCH={", true), (Requests{{ERequest::watch, "?WATCH", "{"}}));
    EXPECT_EQ(RequestsIn("hello", true), (Requests{{ERequest::unknown, "hello", "-"}}));
    EXPECT_EQ(RequestsIn(" \r\n;", true), Requests{});
}

TEST(GPSDRequest, anything_else_is_unknown) {
    EXPECT_EQ(RequestsIn("?FOO;?poll;?POLL={};?;?WATCHES={};\n"),
              (Requests{{ERequest::unknown, "?FOO", "-"},
                        {ERequest::unknown, "?poll", "-"},
                        {ERequest::unknown, "?POLL", "{}"},
                        {ERequest::unknown, "?", "-"},
                        {ERequest::unknown, "?WATCHES", "{}"}}));
}

TEST(GPSDRequest, what_does_not_begin_with_a_question_mark_is_unknown_to_its_lines_end) {
    EXPECT_EQ(RequestsIn("hello;?POLL;\n?POLL;"),
              (Requests{{ERequest::unknown, "hello;?POLL;", "-"}, {ERequest::poll, "?POLL", "-"}}));
    EXPECT_EQ(RequestsIn("hello;?POLL;"), Requests{});
}

TEST(GPSDRequest, an_http_request_line_is_a_browsers) {
    for (const char* line : {"GET / HTTP/1.1\r\n", "POST /?WATCH={} HTTP/1.0\n",
                             "OPTIONS * HTTP/1.1\n", "GET http://x/ HTTP/2\r\n"}) {
        const auto requests = RequestsIn(line);
        ASSERT_EQ(requests.size(), 1U) << line;
        EXPECT_EQ(requests[0].kind, ERequest::fromBrowser) << line;
    }
    for (const char* line : {"get / HTTP/1.1\n", " HTTP/1.1\n", "GET\n", "GET /\n"}) {
        for (const auto& request : RequestsIn(line)) {
            EXPECT_EQ(request.kind, ERequest::unknown) << line;
        }
    }
}
