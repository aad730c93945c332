// The gpsd server with clients of its own, in a test's hands.
#pragma once

#include "GPSDTesting.h"
#include "hub/gpsd/GPSDServer.h"
#include "platform/MPIServerTesting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

class CGPSDServerTesting : public testing::Test {
protected:
    using Lines = std::vector<std::string>;
    using json = nlohmann::json;

    CGPSDServerTesting() { m_loop.sockets.Add(&m_server); }

    void SetUp() override {
        m_server.Start("127.0.0.1", 0);
        ASSERT_TRUE(m_server.IsListening());
    }

    /// A client that has been welcomed.
    std::unique_ptr<CTestClient> Connect(int receiveBuffer = 0) {
        auto client = std::make_unique<CTestClient>(m_server.Port(), receiveBuffer);
        EXPECT_TRUE(client->IsConnected());
        AwaitLines(*client, 1);
        return client;
    }
    /// One that watches.
    std::unique_ptr<CTestClient> Watcher(const std::string& policy = R"("json":true)") {
        auto client = Connect();
        AnswersTo(*client, "?WATCH={" + policy + "};\n", 2);
        return client;
    }

    template <class TCondition>
    void Await(CTestClient& client, const TCondition& condition) {
        EXPECT_TRUE(m_loop.PassUntil([&] {
            client.Transfer();
            return condition();
        })) << client.Received().substr(0, 2000);
    }
    void AwaitLines(CTestClient& client, std::size_t count) {
        Await(client, [&] { return client.LineCount() >= count; });
    }
    void AwaitEnd(CTestClient& client) {
        Await(client, [&] { return client.HasEnded(); });
    }
    /// Serves until nothing is left to do.
    void Settle() {
        for (int i = 0; i < 5; ++i) {
            m_loop.Pass(1);
        }
    }

    /// The lines that follow, without their ends.
    Lines AnswersTo(CTestClient& client, const std::string& bytes, std::size_t count) {
        const std::size_t before = client.LineCount();
        client.Send(bytes);
        AwaitLines(client, before + count);
        return LinesAfter(client, before);
    }
    static Lines LinesAfter(const CTestClient& client, std::size_t before) {
        Lines lines = client.Lines();
        lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(before));
        for (std::string& line : lines) {
            EXPECT_EQ(line.back(), '\r') << line;
            line.pop_back();
        }
        return lines;
    }
    /// What a client is told because of what is done.
    template <class TAction>
    Lines ToldBy(CTestClient& client, const TAction& action) {
        client.Transfer();
        const std::size_t before = client.LineCount();
        action();
        Settle();
        client.Transfer();
        return LinesAfter(client, before);
    }
    /// The classes of reports.
    static Lines Classes(const Lines& lines) {
        Lines classes;
        for (const std::string& line : lines) {
            classes.push_back(json::parse(line)["class"]);
        }
        return classes;
    }
    template <class TMessage>
    void Publish(const TMessage& message) {
        m_server.NewMessage(message);
    }
    void PublishSolution() { Publish(GPSDTesting::Solution(GPSDTesting::CClocks::Now())); }

    GPSDTesting::CClocks m_clocks;
    CServerLoop m_loop;
    Hub::CGPSDServer m_server{m_loop.sockets};
};
