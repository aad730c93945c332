// What a client gets: its answers, in order, whatever way its requests come.

#include "MPIServerTesting.h"

namespace {

class MPISocketServer : public CMPIServerTesting {
protected:
    void SetUp() override {
        Listen();
        m_client = Connect();
    }

    std::unique_ptr<CTestClient> m_client;
};

} // namespace

TEST_F(MPISocketServer, answers_a_request_with_its_result) {
    EXPECT_EQ(AnswersTo(*m_client, Request("1", "Echo", "hello") + "\n", 1),
              Lines{Result("1", R"(["hello"])")});
}

TEST_F(MPISocketServer, answers_null_for_a_procedure_that_returns_nothing) {
    OfferRecording("Nothing", ECost::light);
    EXPECT_EQ(AnswersTo(*m_client, Request("1", "Nothing", "x") + "\n", 1),
              Lines{Result("1", "null")});
    EXPECT_EQ(m_calls, Lines{"x"});
}

TEST_F(MPISocketServer, nests_lists_as_arrays) {
    Offer("Nested", ECost::light, [](const BListC&) {
        return std::make_unique<BListC>(
            BListC().Add(BListC().Add(1).Add(BListC())).Add(0.5).Add("x").Add(true));
    });
    EXPECT_EQ(AnswersTo(*m_client, Request("1", "Nested") + "\n", 1),
              Lines{Result("1", R"([[1,[]],0.5,"x",1])")});
}

TEST_F(MPISocketServer, answers_pipelined_requests_in_order) {
    std::string requests;
    Lines answers;
    for (int i = 0; i < 300; ++i) {
        const std::string id = std::to_string(i);
        requests += Request(id, "Echo", id) + "\n";
        answers.push_back(Result(id, "[\"" + id + "\"]"));
    }
    EXPECT_EQ(AnswersTo(*m_client, requests, answers.size()), answers);
}

TEST_F(MPISocketServer, makes_the_call_of_a_notification_and_does_not_answer) {
    OfferRecording("Note", ECost::light);
    EXPECT_EQ(AnswersTo(*m_client,
                        Notification("Note", "a") + "\n" + Notification("Unknown") + "\n" +
                            Request("1", "Echo") + "\n",
                        1),
              Lines{Result("1", "[]")});
    EXPECT_EQ(m_calls, Lines{"a"});
}

TEST_F(MPISocketServer, tells_each_error_with_its_code_and_keeps_the_connection) {
    auto method = std::make_unique<CTestMethod>(
        "Strict", ECost::light, [](const BListC&) { return nullptr; },
        std::vector<MPICallbackBase::SArgument>{{"speed", MPICallbackBase::EType::integer}});
    m_server.Register(std::move(method));
    Offer("Busy", ECost::light, [](const BListC&) { return nullptr; }).whyNotNow = "too busy";
    const std::string requests = "not JSON at all\n"
                                 "\n"
                                 "5\n" +
                                 Request("2", "Unknown") + "\n" + Request("3", "Strict", "x") +
                                 "\n" + R"({"jsonrpc":"2.0","id":4,"method":"Echo","params":{}})" +
                                 "\n" + Request("5", "Busy") + "\n" + Request("6", "Echo") + "\n";
    EXPECT_EQ(AnswersTo(*m_client, requests, 8),
              (Lines{Error("null", -32700, "not JSON"), Error("null", -32700, "not JSON"),
                     Error("null", -32600, "a request must be an object"),
                     Error("2", -32601, "unknown method: Unknown"),
                     Error("3", -32602, "argument 0 (speed) must be a whole number within 32 bits"),
                     Error("4", -32602, "the arguments of this method are an array"),
                     Error("5", -32603, "too busy"), Result("6", "[]")}));
}

TEST_F(MPISocketServer, calls_nothing_that_is_refused) {
    OfferRecording("Never", ECost::light);
    Offer("Busy", ECost::light, [this](const BListC&) {
        m_calls.push_back("Busy");
        return nullptr;
    }).whyNotNow = "too busy";
    EXPECT_EQ(AnswersTo(*m_client,
                        R"({"jsonrpc":"2.0","id":1,"method":"Never","params":{"a":1}})"
                        "\n" +
                            Request("2", "Busy") + "\n",
                        2)
                  .size(),
              2U);
    EXPECT_EQ(m_calls, Lines{});
}

TEST_F(MPISocketServer, takes_the_procedure_that_was_registered_last_under_a_name) {
    Offer("Echo", ECost::light, [](const BListC&) { return std::make_unique<BListC>(); });
    EXPECT_EQ(AnswersTo(*m_client, Request("1", "Echo", "x") + "\n", 1), Lines{Result("1", "[]")});
}

TEST_F(MPISocketServer, takes_lines_that_are_cut_anywhere) {
    const std::string first = Request("1", "Echo", "first");
    const std::string bytes = first + "\n" + Request("2", "Echo") + "\n";
    for (std::size_t cut = 1; cut < bytes.size(); ++cut) {
        const std::size_t before = m_client->LineCount();
        m_client->Send(bytes.substr(0, cut));
        m_loop.Pass();
        EXPECT_EQ(AnswersTo(*m_client, bytes.substr(cut), before + 2 - m_client->LineCount()),
                  (Lines{Result("1", R"(["first"])"), Result("2", "[]")}))
            << "cut after " << cut;
    }
}

TEST_F(MPISocketServer, takes_lines_with_a_carriage_return) {
    EXPECT_EQ(AnswersTo(*m_client, Request("1", "Echo") + "\r\n", 1), Lines{Result("1", "[]")});
}

TEST_F(MPISocketServer, answers_a_batch_on_one_line_in_order) {
    const std::string batch = "[" + Request("1", "Echo", "a]") + " , " + Notification("Echo") +
                              ",5," + Request("2", "Unknown") + "," + Request("3", "Echo") + "]";
    EXPECT_EQ(
        AnswersTo(*m_client, batch + "\n" + Request("4", "Echo") + "\n", 2),
        (Lines{"[" + Result("1", R"(["a]"])") + "," +
                   Error("null", -32600, "a request must be an object") + "," +
                   Error("2", -32601, "unknown method: Unknown") + "," + Result("3", "[]") + "]",
               Result("4", "[]")}));
}

TEST_F(MPISocketServer, does_not_answer_a_batch_of_notifications) {
    OfferRecording("Note", ECost::light);
    EXPECT_EQ(AnswersTo(*m_client,
                        "[" + Notification("Note", "a") + "," + Notification("Note", "b") + "]\n" +
                            Request("1", "Echo") + "\n",
                        1),
              Lines{Result("1", "[]")});
    EXPECT_EQ(m_calls, (Lines{"a", "b"}));
}

TEST_F(MPISocketServer, answers_one_batch_after_the_other) {
    const std::string batch = "[" + Request("1", "Echo") + "," + Request("2", "Echo") + "]";
    const std::string answer = "[" + Result("1", "[]") + "," + Result("2", "[]") + "]";
    EXPECT_EQ(AnswersTo(*m_client,
                        batch + "\n" + batch + "\n[" + Notification("Echo") + "]\n" + batch + "\n",
                        3),
              (Lines{answer, answer, answer}));
}

TEST_F(MPISocketServer, refuses_a_batch_that_is_empty_or_broken_as_a_whole) {
    OfferRecording("Note", ECost::light);
    EXPECT_EQ(AnswersTo(*m_client, "[ ]\n[" + Notification("Note", "a") + ",]\n", 2),
              (Lines{Error("null", -32600, "a batch must not be empty"),
                     Error("null", -32700, "not JSON")}));
    EXPECT_EQ(m_calls, Lines{});
}

TEST_F(MPISocketServer, puts_a_callback_that_is_posted_during_a_batch_behind_the_batch) {
    Offer("Post", ECost::light, [this](const BListC&) {
        m_server.Caller()->PostCallback("cb", BListC().AddInt(7));
        return std::make_unique<BListC>();
    });
    const std::string batch = "[" + Request("1", "Echo") + "," + Request("2", "Post") + "," +
                              Request("3", "Echo") + "]\n";
    EXPECT_EQ(
        AnswersTo(*m_client, batch, 2),
        (Lines{"[" + Result("1", "[]") + "," + Result("2", "[]") + "," + Result("3", "[]") + "]",
               R"({"jsonrpc":"2.0","method":"cb","params":[7]})"}));
}

TEST_F(MPISocketServer, sends_a_callback_that_the_rest_of_the_pass_posts_with_the_pass) {
    MPISocketConnectionC* connection = nullptr;
    Offer("Remember", ECost::light, [&](const BListC&) {
        connection = m_server.Caller();
        return nullptr;
    });
    AnswersTo(*m_client, Request("1", "Remember") + "\n", 1);
    ASSERT_NE(connection, nullptr);
    EXPECT_EQ(m_server.Caller(), nullptr) << "outside of calls";
    connection->PostCallback("cb", BListC().AddString("x"));
    m_server.EndPass();
    EXPECT_FALSE(connection->HasWaitingBytes());
    AwaitLines(*m_client, 2);
    EXPECT_EQ(m_client->Lines().back(), R"({"jsonrpc":"2.0","method":"cb","params":["x"]})");
}

TEST_F(MPISocketServer, gives_a_client_that_sends_no_more_its_answers_and_closes) {
    m_client->Send(Request("1", "Echo") + "\n[" + Request("2", "Echo") + "]\n");
    m_client->EndSending();
    AwaitEnd(*m_client);
    EXPECT_EQ(m_client->Lines(), (Lines{Result("1", "[]"), "[" + Result("2", "[]") + "]"}));
    EXPECT_EQ(m_server.ClientCount(), 0U);
}

TEST_F(MPISocketServer, drops_the_unfinished_line_of_a_client_that_sends_no_more) {
    m_client->Send(Request("1", "Echo") + "\n" + Request("2", "Echo"));
    m_client->EndSending();
    AwaitEnd(*m_client);
    EXPECT_EQ(m_client->Lines(), Lines{Result("1", "[]")});
}

TEST_F(MPISocketServer, tells_once_whose_connection_was_closed) {
    const MPISocketConnectionC* connection = nullptr;
    Offer("Remember", ECost::light, [&](const BListC&) {
        connection = m_server.Caller();
        return nullptr;
    });
    const auto other = Connect();
    AnswersTo(*m_client, Request("1", "Remember") + "\n", 1);
    EXPECT_TRUE(m_server.closed.empty());
    m_client->Close();
    EXPECT_TRUE(m_loop.PassUntil([this] { return m_server.ClientCount() == 1; }));
    for (int i = 0; i < 3; ++i) {
        m_loop.Pass();
    }
    EXPECT_EQ(m_server.closed, std::vector<const MPISocketConnectionC*>{connection});
    EXPECT_EQ(AnswersTo(*other, Request("2", "Echo") + "\n", 1), Lines{Result("2", "[]")});
}

TEST_F(MPISocketServer, closes_at_once_what_sends_an_http_request_and_calls_nothing) {
    OfferRecording("Note", ECost::light);
    m_client->Send("POST / HTTP/1.1\r\nHost: localhost:5314\r\n\r\n" + Notification("Note", "x") +
                   "\n");
    AwaitEnd(*m_client);
    EXPECT_EQ(m_client->Received(), "");
    EXPECT_EQ(m_server.ClientCount(), 0U);
    EXPECT_EQ(m_calls, Lines{});
}
