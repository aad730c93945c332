#include "MPIServerTesting.h"
#include "RPCMessage.h"

namespace {

/// Wants a text by the name "word", and answers it.
class CNamedMethod : public MPICallbackBase {
public:
    CNamedMethod() : MPICallbackBase("Repeat", {}, ECost::light) {}

    bool TakesNamedArguments() const override { return true; }
    std::string WhyWrong(const BListC& arguments) const override {
        return Word(arguments) == nullptr ? "\"word\" is missing" : "";
    }
    BAtomC Call(const BListC& arguments) override { return *Word(arguments); }

private:
    static const BAtomC* Word(const BListC& arguments) {
        EXPECT_EQ(arguments.Size(), 1U);
        const BDictionaryC* const names = arguments.At(0).AsDictionary();
        EXPECT_NE(names, nullptr);
        return names == nullptr ? nullptr : names->Find("word");
    }
};

/// A server with that method, "Echo", whose arguments have places, and "Busy", which cannot be
/// called now.
class MPINamedArguments : public CMPIServerTesting {
protected:
    MPINamedArguments() {
        m_server.Register(std::make_unique<CNamedMethod>());
        Offer("Busy", ECost::light, [](const BListC&) { return nullptr; }).whyNotNow = "busy";
        Listen();
        m_client = Connect();
    }

    std::string AnswerTo(const std::string& line) {
        return AnswersTo(*m_client, line + "\n", 1).front();
    }
    static std::string Call(const std::string& method, const std::string& params) {
        return R"({"jsonrpc":"2.0","id":1,"method":")" + method + R"(","params":)" + params + "}";
    }
    /// What has no answer is over when what was sent behind it has one.
    void Say(const std::string& line) {
        m_client->SendLine(line);
        EXPECT_EQ(AnswerTo(Request("9", "Echo")), Result("9", "[]"));
    }

    std::unique_ptr<CTestClient> m_client;
};

} // namespace

TEST_F(MPINamedArguments, come_as_one_dictionary) {
    EXPECT_EQ(AnswerTo(Call("Repeat", R"({"word":"hello","more":1})")), Result("1", "\"hello\""));
    EXPECT_EQ(AnswerTo(Call("Repeat", R"({"word":null})")), Result("1", "null"));
}

TEST_F(MPINamedArguments, are_checked_before_the_call) {
    EXPECT_EQ(AnswerTo(Call("Repeat", "{}")), Error("1", -32602, R"(\"word\" is missing)"));
}

TEST_F(MPINamedArguments, are_not_taken_for_arguments_with_places) {
    EXPECT_EQ(AnswerTo(Call("Repeat", R"(["hello"])")),
              Error("1", -32602, "the arguments of this method are an object"));
    EXPECT_EQ(AnswerTo(R"({"jsonrpc":"2.0","id":1,"method":"Repeat"})"),
              Error("1", -32602, "the arguments of this method are an object"));
    EXPECT_EQ(AnswerTo(Call("Echo", R"({"word":"hello"})")),
              Error("1", -32602, "the arguments of this method are an array"));
}

TEST_F(MPINamedArguments, are_in_an_object_or_an_array) {
    EXPECT_EQ(AnswerTo(Call("Repeat", "\"hello\"")),
              Error("null", -32600, R"(\"params\" must be an array or an object)"));
}

TEST_F(MPINamedArguments, come_in_batches_too) {
    EXPECT_EQ(AnswerTo("[" + Call("Repeat", R"({"word":5})") + "," + Call("Echo", "[6]") + "]"),
              "[" + Result("1", "5") + "," + Result("1", "[6]") + "]");
}

TEST_F(MPINamedArguments, of_a_good_request_are_not_refused) {
    AnswerTo(Call("Repeat", R"({"word":"hello"})"));
    Say(R"({"jsonrpc":"2.0","method":"Repeat","params":{"word":"hello"}})");
    EXPECT_EQ(m_server.refused, 0);
}

TEST_F(MPINamedArguments, of_a_wrong_request_are_told_to_be_refused) {
    int refused = 0;
    for (const std::string& line :
         {Call("Repeat", "{}"), Call("Repeat", "[]"), Call("Echo", "{}"), Call("None", "[]"),
          Call("Busy", "[]"), std::string("{}"), std::string("x"), std::string("[]"),
          std::string("[1"), std::string("5")}) {
        AnswerTo(line);
        EXPECT_EQ(m_server.refused, ++refused) << line;
    }
}

TEST_F(MPINamedArguments, of_a_wrong_notification_are_told_to_be_refused) {
    Say(R"({"jsonrpc":"2.0","method":"Repeat","params":{}})");
    Say(R"({"jsonrpc":"2.0","method":"None"})");
    EXPECT_EQ(m_server.refused, 2);
}

TEST_F(MPINamedArguments, of_each_wrong_request_in_a_batch_are_told_to_be_refused) {
    AnswerTo("[" + Call("Repeat", "{}") + ",1," + Call("Echo", "[6]") + "]");
    EXPECT_EQ(m_server.refused, 2);
}

TEST_F(MPINamedArguments, in_a_line_that_is_too_long_are_told_to_be_refused) {
    m_client->Send(std::string(MPISocketConnectionC::kMaxLine + 1, ' '));
    AwaitEnd(*m_client);
    EXPECT_EQ(m_server.refused, 1);
}
