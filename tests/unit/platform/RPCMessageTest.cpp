#include "RPCMessage.h"

#include <gtest/gtest.h>
#include <limits>
#include <tuple>
#include <vector>

namespace {

using namespace RPCMessage;
using Elements = std::vector<std::string>;

/// What is answered to a text that is no request: "code: message"; empty when it is one.
std::string WhyNoRequest(std::string_view text) {
    const auto read = ReadRequest(text);
    const auto* const error = std::get_if<SError>(&read);
    return error == nullptr ? "" : std::to_string(error->code) + ": " + error->message;
}

SRequest Read(std::string_view text) {
    const auto read = ReadRequest(text);
    const auto* const request = std::get_if<SRequest>(&read);
    EXPECT_NE(request, nullptr) << WhyNoRequest(text);
    return request == nullptr ? SRequest() : *request;
}

/// A request whose id is `id`, and how that comes back.
std::string Echoed(const std::string& id) {
    const SRequest request = Read(R"({"jsonrpc":"2.0","method":"m","id":)" + id + "}");
    return request.id ? Answer(*request.id, BAtomC()) : "none";
}

std::string WhyNoBatch(std::string_view line) {
    const std::optional<SError> error = CheckBatch(line);
    return error ? std::to_string(error->code) + ": " + error->message : "";
}

Elements ElementsOf(const std::string& line) {
    EXPECT_EQ(WhyNoBatch(line), "");
    CBatchReader reader(line);
    Elements elements;
    while (const auto element = reader.Next()) {
        elements.emplace_back(*element);
    }
    EXPECT_FALSE(reader.Next()) << "nothing comes behind the end";
    return elements;
}

std::string Repeated(std::size_t count, const std::string& text) {
    std::string all;
    for (std::size_t i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

} // namespace

TEST(RPCMessage, reads_a_request) {
    const SRequest request =
        Read(R"( {"params":[5,"x"],"id":7,"method":"novatel_Do","jsonrpc":"2.0","more":1} )");
    ASSERT_TRUE(request.id);
    EXPECT_EQ(request.id->AsInteger(), 7);
    EXPECT_EQ(request.method, "novatel_Do");
    EXPECT_EQ(request.params.Size(), 2U);
    EXPECT_EQ(request.params.GetInt(0), 5);
    EXPECT_EQ(request.params.GetString(1), "x");
    EXPECT_FALSE(request.hasNamedParams);
}

TEST(RPCMessage, reads_a_request_without_arguments) {
    EXPECT_EQ(Read(R"({"jsonrpc":"2.0","method":"m","id":1})").params.Size(), 0U);
    EXPECT_EQ(Read(R"({"jsonrpc":"2.0","method":"m","id":1,"params":[]})").params.Size(), 0U);
}

TEST(RPCMessage, reads_a_request_without_an_id_as_a_notification) {
    EXPECT_FALSE(Read(R"({"jsonrpc":"2.0","method":"m","params":[1]})").id);
    EXPECT_TRUE(Read(R"({"jsonrpc":"2.0","method":"m","id":null})").id);
}

TEST(RPCMessage, marks_named_arguments) {
    const SRequest request = Read(R"({"jsonrpc":"2.0","method":"m","params":{"a":1}})");
    EXPECT_TRUE(request.hasNamedParams);
    ASSERT_EQ(request.params.Size(), 1U);
    const BDictionaryC* const named = request.params.At(0).AsDictionary();
    ASSERT_NE(named, nullptr);
    ASSERT_NE(named->Find("a"), nullptr);
    EXPECT_EQ(named->Find("a")->AsInteger(), 1);
}

TEST(RPCMessage, gives_every_kind_of_id_back_as_it_was) {
    for (const char* id : {"1", "0", "-1", "2147483648", "9007199254740992", "-9007199254740992",
                           "0.5", "\"\"", R"("a \"b\" \\ c")", "\"1\"", "\"\xC3\xA9\"", "null"}) {
        EXPECT_EQ(Echoed(id), R"({"jsonrpc":"2.0","id":)" + std::string(id) + R"(,"result":null})");
    }
}

TEST(RPCMessage, refuses_what_is_not_json) {
    for (const char* text : {"", "garbage", "{", R"({"jsonrpc":"2.0","method":"m",})",
                             R"({"jsonrpc":"2.0","method":"m","id":1e999})", "\"\xFF\"",
                             R"({"jsonrpc":"2.0","method":"m"} {})"}) {
        EXPECT_EQ(WhyNoRequest(text), "-32700: not JSON") << text;
    }
}

TEST(RPCMessage, refuses_what_is_no_request) {
    constexpr std::tuple<const char*, const char*> kTexts[] = {
        {"5", "a request must be an object"},
        {"\"m\"", "a request must be an object"},
        {"null", "a request must be an object"},
        {"[1]", "a request must be an object"},
        {"{}", R"("jsonrpc" must be "2.0")"},
        {R"({"method":"m","id":1})", R"("jsonrpc" must be "2.0")"},
        {R"({"jsonrpc":"1.0","method":"m","id":1})", R"("jsonrpc" must be "2.0")"},
        {R"({"jsonrpc":2.0,"method":"m","id":1})", R"("jsonrpc" must be "2.0")"},
        {R"({"jsonrpc":"2.0","id":1})", R"("method" must be a text)"},
        {R"({"jsonrpc":"2.0","method":5,"id":1})", R"("method" must be a text)"},
        {R"({"jsonrpc":"2.0","method":null})", R"("method" must be a text)"},
        {R"({"jsonrpc":"2.0","method":"m","params":5})",
         R"("params" must be an array or an object)"},
        {R"({"jsonrpc":"2.0","method":"m","params":"x"})",
         R"("params" must be an array or an object)"},
        {R"({"jsonrpc":"2.0","method":"m","params":null})",
         R"("params" must be an array or an object)"},
    };
    for (const auto& [text, why] : kTexts) {
        EXPECT_EQ(WhyNoRequest(text), "-32600: " + std::string(why)) << text;
    }
}

TEST(RPCMessage, refuses_an_id_that_is_no_text_no_number_and_not_null) {
    for (const char* id : {"[]", "[1]", "{}", "9007199254740994", "1e300"}) {
        EXPECT_EQ(WhyNoRequest(R"({"jsonrpc":"2.0","method":"m","id":)" + std::string(id) + "}"),
                  R"(-32600: "id" must be a text, a number up to 2^53 or null)")
            << id;
    }
}

TEST(RPCMessage, refuses_a_truth_value_as_an_id) {
    for (const char* id : {"true", "false"}) {
        EXPECT_EQ(WhyNoRequest(R"({"jsonrpc":"2.0","method":"m","id":)" + std::string(id) + "}"),
                  R"(-32600: "id" must be a text, a number up to 2^53 or null)")
            << id;
    }
}

TEST(RPCMessage, refuses_what_is_nested_too_deep_or_holds_too_much) {
    const std::string begin = R"({"jsonrpc":"2.0","method":"m","params":[)";
    EXPECT_EQ(WhyNoRequest(begin + Repeated(30, "[") + Repeated(30, "]") + "]}"), "");
    EXPECT_EQ(WhyNoRequest(begin + Repeated(31, "[") + Repeated(31, "]") + "]}"),
              "-32600: nested deeper than 32 levels");
    EXPECT_EQ(WhyNoRequest(begin + "0" + Repeated(9'000, ",0") + "]}"), "");
    EXPECT_EQ(WhyNoRequest(begin + "0" + Repeated(10'000, ",0") + "]}"),
              "-32600: more than 10000 values in one request");
}

TEST(RPCMessage, answers_with_a_result) {
    const BListC result = BListC().Add(1).Add(0.5).Add("a\"b").Add(BListC().Add(BAtomC()));
    EXPECT_EQ(Answer(5, result), R"({"jsonrpc":"2.0","id":5,"result":[1,0.5,"a\"b",[null]]})");
    const BListC empty;
    EXPECT_EQ(Answer("x", empty), R"({"jsonrpc":"2.0","id":"x","result":[]})");
    EXPECT_EQ(Answer(BAtomC(), BAtomC()), R"({"jsonrpc":"2.0","id":null,"result":null})");
    const BListC notFinite = BListC().Add(std::numeric_limits<double>::infinity());
    EXPECT_EQ(Answer(1, notFinite), R"({"jsonrpc":"2.0","id":1,"result":[null]})");
}

TEST(RPCMessage, answers_with_an_error) {
    EXPECT_EQ(Answer(5, SError{kUnknownMethod, "unknown \"m\""}),
              R"({"jsonrpc":"2.0","id":5,"error":{"code":-32601,"message":"unknown \"m\""}})");
    EXPECT_EQ(Answer(BAtomC(), SError{kParseError, "not JSON"}),
              R"({"jsonrpc":"2.0","id":null,"error":{"code":-32700,"message":"not JSON"}})");
}

TEST(RPCMessage, has_the_standards_codes) {
    EXPECT_EQ((std::vector<int>{kParseError, kInvalidRequest, kUnknownMethod, kInvalidParams,
                                kInternalError}),
              (std::vector<int>{-32700, -32600, -32601, -32602, -32603}));
}

TEST(RPCMessage, tells_an_http_request_line) {
    for (const char* line :
         {"GET / HTTP/1.1\r", "POST /rpc HTTP/1.0", "OPTIONS * HTTP/2", "PUT /a b HTTP/1.1"}) {
        EXPECT_TRUE(IsHTTPRequestLine(line)) << line;
    }
    for (const char* line :
         {"", " ", "GET", "GET ", "GET /", "get / HTTP/1.1", " GET / HTTP/1.1", "HTTP/1.1 200 OK",
          "GET / FTP/1.1", R"({"jsonrpc":"2.0","method":"A / HTTP/1.1"})"}) {
        EXPECT_FALSE(IsHTTPRequestLine(line)) << line;
    }
}

TEST(RPCMessage, tells_a_batch_by_its_first_character) {
    for (const char* line : {"[", "[]", " \t\r[1]"}) {
        EXPECT_TRUE(IsBatch(line)) << line;
    }
    for (const char* line : {"", " ", "{}", "{\"a\":[]}", "5", "x[", "\"[\""}) {
        EXPECT_FALSE(IsBatch(line)) << line;
    }
}

TEST(RPCMessage, takes_a_batch_with_anything_in_it) {
    for (const char* line : {"[1]", " [ {} ] ", "[null]", "[[]]", "[\"]\"]"}) {
        EXPECT_EQ(WhyNoBatch(line), "") << line;
    }
    EXPECT_EQ(WhyNoBatch("[0" + Repeated(20'000, ",0") + "]"), "") << "of any number of requests";
}

TEST(RPCMessage, refuses_a_batch_that_is_empty_or_not_json) {
    for (const char* line : {"[]", " [ \t ] "}) {
        EXPECT_EQ(WhyNoBatch(line), "-32600: a batch must not be empty") << line;
    }
    for (const char* line : {"[", "[1", "[1,]", "[1]]", "[1] [2]", "[}", "[\"a]", "[,1]"}) {
        EXPECT_EQ(WhyNoBatch(line), "-32700: not JSON") << line;
    }
    EXPECT_EQ(WhyNoBatch(Repeated(33, "[") + Repeated(33, "]")),
              "-32600: nested deeper than 32 levels");
}

TEST(RPCMessage, takes_a_batch_apart) {
    EXPECT_EQ(ElementsOf("[1]"), Elements{"1"});
    EXPECT_EQ(ElementsOf("[1,2,3]"), (Elements{"1", "2", "3"}));
    EXPECT_EQ(ElementsOf(R"([{"a":1},{"b":2}])"), (Elements{R"({"a":1})", R"({"b":2})"}));
}

TEST(RPCMessage, keeps_the_blanks_of_a_batchs_elements) {
    EXPECT_EQ(ElementsOf(" \t[ {} ,\t5 ] \r"), (Elements{" {} ", "\t5 "}));
}

TEST(RPCMessage, keeps_lists_and_objects_within_a_batch_whole) {
    EXPECT_EQ(ElementsOf(R"([[1,[2,3]],{"a":[{"b":[]},4]},[]])"),
              (Elements{"[1,[2,3]]", R"({"a":[{"b":[]},4]})", "[]"}));
}

TEST(RPCMessage, is_not_misled_by_brackets_and_commas_within_texts) {
    EXPECT_EQ(ElementsOf(R"(["],[","{",{"}":"]"},"a,b"])"),
              (Elements{R"("],[")", R"("{")", R"({"}":"]"})", R"("a,b")"}));
}

TEST(RPCMessage, is_not_misled_by_escapes_within_texts) {
    EXPECT_EQ(ElementsOf(R"(["\"],[","\\",{"a\\\"":"\\\\"},"\u005d"])"),
              (Elements{R"("\"],[")", R"("\\")", R"({"a\\\"":"\\\\"})", R"("\u005d")"}));
}

TEST(RPCMessage, counts_the_memory_of_the_batch_it_takes_apart) {
    EXPECT_GE(CBatchReader("[" + Repeated(1000, " ") + "1]").HeldBytes(), 1003U);
}
