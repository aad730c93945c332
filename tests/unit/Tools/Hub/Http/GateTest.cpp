#include "hub/http/Gate.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using Hub::NameOfHost;
using Headers = std::vector<std::pair<std::string, std::string>>;

/// What a request came to.
struct SOutcome {
    bool isLetIn = false;
    int status = -1;
    std::string location;
    std::string cookie;
    std::string challenge;

    bool operator==(const SOutcome&) const = default;
};

std::ostream& operator<<(std::ostream& out, const SOutcome& outcome) {
    return out << (outcome.isLetIn ? "let in" : "refused") << ' ' << outcome.status << " location '"
               << outcome.location << "' cookie '" << outcome.cookie << "' challenge '"
               << outcome.challenge << "'";
}

const SOutcome kLetIn{true, -1, "", "", ""};
const SOutcome kWrongName{false, 421, "", "", ""};
const SOutcome kNoToken{false, 401, "", "", "Bearer realm=\"corvane\""};

SOutcome Ask(const Hub::CGate& gate, const Headers& headers, const std::string& token = "",
             const std::string& localAddress = "") {
    httplib::Request request;
    request.method = "GET";
    request.path = "/api/live";
    request.local_addr = localAddress;
    for (const auto& [name, value] : headers) {
        request.headers.emplace(name, value);
    }
    if (!token.empty()) {
        request.params.emplace("token", token);
    }
    httplib::Response response;
    const bool isLetIn = gate.LetIn(request, response);
    return {isLetIn, response.status, response.get_header_value("Location"),
            response.get_header_value("Set-Cookie"), response.get_header_value("WWW-Authenticate")};
}

SOutcome AskFor(const std::string& host, const std::string& listen = "127.0.0.1",
                const std::string& names = "", const std::string& localAddress = "") {
    return Ask(Hub::CGate("", listen, names), {{"Host", host}}, "", localAddress);
}

const Hub::CGate& Guarded() {
    static const Hub::CGate gate("s3cret", "127.0.0.1", "");
    return gate;
}

} // namespace

TEST(NameOfHost, is_in_small_letters_and_without_its_port) {
    EXPECT_EQ(NameOfHost("localhost"), "localhost");
    EXPECT_EQ(NameOfHost("LocalHost:8080"), "localhost");
    EXPECT_EQ(NameOfHost("10.0.0.1:1"), "10.0.0.1");
    EXPECT_EQ(NameOfHost("[::1]"), "[::1]");
    EXPECT_EQ(NameOfHost("[FE80::1]:65535"), "[fe80::1]");
}

TEST(NameOfHost, is_none_of_what_is_no_host) {
    for (const char* const host : {"", ":80", "a:", "a:b", "a:80b", "a:80:80", "a:123456", "[::1",
                                   "[::1]x", "[::1]:", "[::1]80", "::1"}) {
        EXPECT_EQ(NameOfHost(host), std::nullopt) << host;
    }
}

TEST(WebGate, lets_in_who_asks_this_machine_for_itself) {
    for (const char* const host :
         {"localhost", "LOCALHOST:8080", "127.0.0.1", "127.0.0.1:8080", "[::1]", "[::1]:8080"}) {
        EXPECT_EQ(AskFor(host), kLetIn) << host;
    }
    std::array<char, 256> own{};
    ASSERT_EQ(gethostname(own.data(), own.size() - 1), 0);
    EXPECT_EQ(AskFor(own.data()), kLetIn);
    EXPECT_EQ(AskFor(std::string(own.data()) + ".local:8080"), kLetIn);
}

TEST(WebGate, refuses_who_asks_for_another_name) {
    for (const char* const host :
         {"evil.example", "localhost.evil.example", "127.0.0.1.evil.example", "evil.example:8080",
          "localhost.", "", "a b", "localhost,evil", "127.0.0.2", "[::2]", "0.0.0.0"}) {
        EXPECT_EQ(AskFor(host), kWrongName) << host;
    }
}

TEST(WebGate, lets_in_who_asks_for_the_address_that_it_has_reached) {
    EXPECT_EQ(AskFor("192.168.1.5:8080", "0.0.0.0", "", "192.168.1.5"), kLetIn);
    EXPECT_EQ(AskFor("192.168.1.6", "0.0.0.0", "", "192.168.1.5"), kWrongName);
    EXPECT_EQ(AskFor("[fd00::5]:8080", "::", "", "fd00::5"), kLetIn);
    EXPECT_EQ(AskFor("192.168.1.5", "192.168.1.5"), kLetIn);
}

TEST(WebGate, lets_in_who_asks_for_a_name_of_the_settings) {
    const std::string names = "gnss.example, Rover.Example ,,";
    EXPECT_EQ(AskFor("gnss.example:8080", "0.0.0.0", names), kLetIn);
    EXPECT_EQ(AskFor("ROVER.example", "0.0.0.0", names), kLetIn);
    EXPECT_EQ(AskFor("other.example", "0.0.0.0", names), kWrongName);
    EXPECT_EQ(AskFor("", "0.0.0.0", names), kWrongName);
}

TEST(WebGate, refuses_a_request_that_names_no_host_or_two) {
    const Hub::CGate gate("", "127.0.0.1", "");
    EXPECT_EQ(Ask(gate, {}), kWrongName);
    EXPECT_EQ(Ask(gate, {{"Host", "localhost"}, {"Host", "localhost"}}), kWrongName);
    EXPECT_EQ(Ask(gate, {{"Host", "localhost"}, {"host", "evil.example"}}), kWrongName);
}

TEST(WebGate, wants_a_token_when_there_is_one) {
    EXPECT_EQ(Ask(Guarded(), {{"Host", "localhost"}}), kNoToken);
}

TEST(WebGate, takes_the_token_from_a_header) {
    const auto with = [](const std::string& value) {
        return Ask(Guarded(), {{"Host", "localhost"}, {"Authorization", value}});
    };
    EXPECT_EQ(with("Bearer s3cret"), kLetIn);
    for (const char* const wrong :
         {"Bearer", "Bearer ", "Bearer s3cre", "Bearer s3cretx", "Bearer S3CRET", "Bearer s3creX",
          "Basic s3cret", "s3cret", "", "Bearer s3crets3cret"}) {
        EXPECT_EQ(with(wrong), kNoToken) << wrong;
    }
}

TEST(WebGate, takes_the_token_from_a_cookie) {
    const auto with = [](const std::string& value) {
        return Ask(Guarded(), {{"Host", "localhost"}, {"Cookie", value}});
    };
    EXPECT_EQ(with("corvane_token=s3cret"), kLetIn);
    EXPECT_EQ(with("a=b; corvane_token=s3cret; c=d"), kLetIn);
    for (const char* const wrong : {"corvane_token=", "corvane_token", "corvane_token=x",
                                    "token=s3cret", "xcorvane_token=s3cret", "", "s3cret"}) {
        EXPECT_EQ(with(wrong), kNoToken) << wrong;
    }
}

TEST(WebGate, makes_a_cookie_of_the_token_in_the_address_and_takes_it_out_of_that) {
    EXPECT_EQ(Ask(Guarded(), {{"Host", "localhost"}}, "s3cret"),
              (SOutcome{false, 303, "/api/live",
                        "corvane_token=s3cret; Path=/; HttpOnly; SameSite=Strict; Max-Age=31536000",
                        ""}));
    EXPECT_EQ(Ask(Guarded(), {{"Host", "localhost"}}, "wrong"), kNoToken);
}

TEST(WebGate, makes_no_cookie_of_a_token_that_cannot_be_one) {
    for (const char* const token : {"a b", "a;b", "a,b", "a\"b", "a\\b", "\xC3\xA4"}) {
        const Hub::CGate gate(token, "127.0.0.1", "");
        EXPECT_EQ(Ask(gate, {{"Host", "localhost"}}, token), kNoToken) << token;
        EXPECT_EQ(
            Ask(gate, {{"Host", "localhost"}, {"Authorization", "Bearer " + std::string(token)}}),
            kLetIn)
            << token;
    }
}

TEST(WebGate, refuses_another_name_also_with_the_token) {
    EXPECT_EQ(Ask(Guarded(), {{"Host", "evil.example"}, {"Authorization", "Bearer s3cret"}}),
              kWrongName);
    EXPECT_EQ(Ask(Guarded(), {{"Host", "evil.example"}}, "s3cret"), kWrongName);
}

TEST(WebGate, needs_no_token_when_there_is_none) {
    const Hub::CGate gate("", "127.0.0.1", "");
    EXPECT_EQ(Ask(gate, {{"Host", "localhost"}, {"Authorization", "Bearer x"}}), kLetIn);
    EXPECT_EQ(Ask(gate, {{"Host", "localhost"}}, "x"), kLetIn);
}
