#include "MessageKinds.h"
#include "ServicesTesting.h"

#include <algorithm>
#include <cctype>
#include <gmock/gmock.h>

namespace {

using namespace HubTesting;
using testing::ElementsAre;
using testing::HasSubstr;

json Used(json first) {
    return {std::move(first), 0, 0};
}

json Channel(const char* member, const json& value) {
    json channel = {{"prn", 1}, {"word1", 0}, {"word2", 0}, {"cn0", 40}};
    if (value == "missing") {
        channel.erase(member);
    } else {
        channel[member] = value;
    }
    return json::array({channel});
}

/// At the limits of what is taken.
std::vector<json> GoodValues(EField type) {
    switch (type) {
    case EField::name:
        return {"x", "ä b,c", std::string(256, 'x')};
    case EField::text:
        return {"", "a\nb", std::string(65536, 'x')};
    case EField::sentence:
        return {"", std::string(8192, 'x')};
    case EField::number:
        return {nullptr, 0, -1.5, 1e308, 4294967296};
    case EField::moment:
        return {0, -1.5, 1e308};
    case EField::integer:
        return {2147483647, -2147483648, 5.0};
    case EField::count:
        return {0, 7.0, 9007199254740992};
    case EField::level:
        return {};
    case EField::bytes:
        return {"", "Zg==", std::string(1000000, 'A')};
    case EField::used:
        return {Used(-2147483648), Used(5.0)};
    case EField::sky:
        return {json::array(), Channel("prn", 0), Channel("prn", 255), Channel("cn0", -1.5),
                Channel("word1", 4294967295U)};
    }
    return {};
}

/// Beyond the limits, or of another kind.
std::vector<json> BadValues(EField type) {
    const json truth = true;
    const json list = json::array();
    const json object = json::object();
    switch (type) {
    case EField::name:
        return {"",    "a\nb", "a\x7F", std::string("a\0b", 3), std::string(257, 'x'), 5, nullptr,
                truth, list,   object};
    case EField::text:
        return {std::string(65537, 'x'), 5, nullptr, truth, list, object};
    case EField::sentence:
        return {std::string(8193, 'x'), 5, nullptr, truth, list, object};
    case EField::number:
        return {"1", truth, list, object};
    case EField::moment:
        return {nullptr, "1", truth, list, object};
    case EField::integer:
        return {2147483648, -2147483649, 5.5, "5", nullptr, truth, list, object};
    case EField::count:
        return {-1, 0.5, 9007199254740994, "5", nullptr, truth, list, object};
    case EField::level:
        return {"", "Error", "Essential", "debug", 5, nullptr, truth, list, object};
    case EField::bytes:
        return {"Zg", "Zm9v\n", "####", 5, nullptr, truth, list, object};
    case EField::used:
        return {list,          {1, 2}, {1, 2, 3, 4}, Used("1"), Used(1.5),
                Used(nullptr), 3,      nullptr,      object};
    case EField::sky:
        return {Channel("prn", -1),
                Channel("prn", 256),
                Channel("prn", 1.5),
                Channel("prn", nullptr),
                Channel("word1", 4294967296),
                Channel("word2", -1),
                Channel("cn0", "40"),
                Channel("cn0", "missing"),
                Channel("prn", "missing"),
                Channel("word1", "missing"),
                Channel("word2", "missing"),
                {5},
                {nullptr},
                object,
                "x",
                nullptr};
    }
    return {};
}

class Message : public CServicesTesting, public testing::WithParamInterface<SKind> {
protected:
    json With(const char* field, const json& value) const {
        json params = GetParam().Params();
        params[field] = value;
        return params;
    }
};

} // namespace

TEST_P(Message, is_handed_on_with_all_that_it_says) {
    EXPECT_THAT(CallsOf(GetParam().method, GetParam().Params()), ElementsAre(GetParam().call));
}

TEST_P(Message, is_answered_with_nothing_when_it_is_sent_as_a_request) {
    const json answer = Request(GetParam().method, GetParam().Params());
    EXPECT_EQ(answer, (json{{"jsonrpc", "2.0"}, {"id", 1}, {"result", nullptr}}));
}

TEST_P(Message, may_say_more_than_is_known) {
    EXPECT_THAT(CallsOf(GetParam().method, With("colour", "red")), ElementsAre(GetParam().call));
}

TEST_P(Message, is_refused_without_any_of_its_members) {
    for (const SField& field : GetParam().AllFields()) {
        json params = GetParam().Params();
        params.erase(field.name);
        EXPECT_EQ(WhyWrong(GetParam().method, params),
                  "\"" + std::string(field.name) + "\" is missing");
    }
}

TEST_P(Message, takes_members_at_their_limits) {
    for (const SField& field : GetParam().AllFields()) {
        for (const json& value : GoodValues(field.type)) {
            EXPECT_EQ(WhyWrong(GetParam().method, With(field.name, value)), "")
                << field.name << ": " << value.dump().substr(0, 80);
        }
    }
}

TEST_P(Message, is_refused_with_a_member_beyond_its_limits_or_of_another_kind) {
    for (const SField& field : GetParam().AllFields()) {
        for (const json& value : BadValues(field.type)) {
            EXPECT_THAT(WhyWrong(GetParam().method, With(field.name, value)),
                        HasSubstr("\"" + std::string(field.name) + "\""))
                << value.dump().substr(0, 80);
        }
    }
}

TEST_P(Message, is_counted_as_refused_when_it_is_wrong_and_gets_no_answer) {
    EXPECT_THAT(CallsOf(GetParam().method, json::object()), ElementsAre("refused"));
    EXPECT_THAT(CallsOf(GetParam().method, json::array({"N", 1.5})), ElementsAre("refused"));
}

INSTANTIATE_TEST_SUITE_P(Services, Message, testing::ValuesIn(MessageKinds()),
                         [](const testing::TestParamInfo<SKind>& kind) {
                             std::string name = kind.param.method;
                             std::replace(name.begin(), name.end(), '.', '_');
                             return name;
                         });
