// The services with a client and an observer, in a test's hands.
#pragma once

#include "Support/TemporaryFolder.h"
#include "hub/services/ServicesServer.h"
#include "platform/MPISocketConnection.h"

#include <array>
#include <gtest/gtest.h>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace HubTesting {

using nlohmann::json;

/// Notes every call as one line: what it was, the members that all messages have, then its own.
class CNotingObserver : public Hub::CHubObserver {
public:
    std::vector<std::string> calls;

    using CHubObserver::NewMessage;
    void NewMessage(const Hub::SRegistration& message) override {
        Note("registration", message, message.process, message.pid, message.version);
    }
    void NewMessage(const Hub::SStatus& message) override {
        const bool isEssential = message.level == Hub::EStatusLevel::essential;
        Note("status", message, isEssential ? "essential" : "info", message.key, message.value);
    }
    void NewMessage(const Hub::SDataLine& message) override {
        Note("data", message, message.key, message.value);
    }
    void NewMessage(const Hub::SEvent& message) override {
        const bool isError = message.level == Hub::EEventLevel::error;
        Note("event", message, isError ? "error" : "warning", message.text);
    }
    void NewMessage(const Hub::SRawBlock& message) override { Note("raw", message, message.bytes); }
    void NewMessage(const Hub::SSolution& message) override { NoteSolution("solution", message); }
    void SolutionPassedOver(const Hub::SSolution& message) override {
        NoteSolution("passed over", message);
    }
    void NewMessage(const Hub::SSky& message) override {
        std::ostringstream channels;
        for (const Hub::SSky::SChannel& channel : message.channels) {
            channels << '(' << int{channel.prn} << ' ' << channel.word1 << ' ' << channel.word2
                     << ' ' << (channel.cn0 ? std::to_string(*channel.cn0) : "none") << ')';
        }
        Note("sky", message, channels.str());
    }
    void NewMessage(const Hub::SBase& message) override {
        Note("base", message, message.x, message.y, message.z);
    }
    void NewMessage(const Hub::SReference& message) override {
        Note("reference", message, message.week, message.seconds, message.x, message.y, message.z,
             message.gps, message.glonass, message.other);
    }
    void NewMessage(const Hub::SSentence& message) override {
        Note("sentence", message, message.id, message.gpsTime, message.sentence);
    }
    void NewMessage(const Hub::SGeoid& message) override {
        Note("geoid", message, message.separation);
    }
    void NewMessage(const Hub::SDiagnostic& message) override {
        Note(message.isRaised ? "raise" : "clear", message, message.code, message.sub,
             message.value);
    }
    void NewMessage(const Hub::SActivity& message) override {
        Note("activity", message, message.received, message.sentences);
    }
    void NewMessage(const Hub::SCategory& message) override {
        calls.push_back("category|" + message.category + (message.isEnabled ? "|on" : "|off"));
    }
    void ProcessGone(Hub::TProcess process) override {
        calls.push_back("gone|" + std::to_string(process));
    }
    void MessageRefused() override { calls.emplace_back("refused"); }

private:
    template <class... TValues>
    void Note(const char* kind, const Hub::SMessage& message, const TValues&... values) {
        std::ostringstream line;
        line.precision(17);
        line << kind << '|' << message.name << '|' << message.time << '|' << message.sender;
        ((line << '|' << values), ...);
        calls.push_back(line.str());
    }
    void NoteSolution(const char* kind, const Hub::SSolution& message) {
        const Position::SECEFPositionSolutionData& data = message.data;
        Note(kind, message, data.x, data.y, data.z, data.velocityX, data.velocityY, data.velocityZ,
             data.standardDeviationX, data.standardDeviationY, data.standardDeviationZ, data.week,
             data.seconds, data.hostTime, data.positionQuality, data.fixQuality,
             data.differentialAge, data.satellites[0], data.satellites[1], data.satellites[2],
             data.hdop, data.vdop, data.solutionClass, data.velocityLatency);
    }
};

/// Asks the services as a client that is connected would.
class CServicesTesting : public testing::Test {
protected:
    CServicesTesting() {
        std::array<int, 2> ends{};
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends.data()) == 0) {
            m_caller = std::make_unique<MPISocketConnectionC>(ends[0]);
            close(ends[1]);
        }
    }

    /// The answer to a line; null when there is none.
    json AnswerTo(const std::string& line) {
        std::string answer;
        EXPECT_TRUE(m_server->Answer(*m_caller, line, answer));
        return answer.empty() ? json() : json::parse(answer);
    }
    json Request(const std::string& method, const json& params) {
        return AnswerTo(
            json{{"jsonrpc", "2.0"}, {"id", 1}, {"method", method}, {"params", params}}.dump());
    }
    json Notify(const std::string& method, const json& params) {
        return AnswerTo(json{{"jsonrpc", "2.0"}, {"method", method}, {"params", params}}.dump());
    }
    /// What the observer was told by a message.
    std::vector<std::string> CallsOf(const std::string& method, const json& params) {
        m_observer.calls.clear();
        EXPECT_EQ(Notify(method, params), json());
        return m_observer.calls;
    }
    /// Why a message is wrong; the empty text when it is taken.
    std::string WhyWrong(const std::string& method, const json& params) {
        m_observer.calls.clear();
        const json answer = Request(method, params);
        if (!answer.contains("error")) {
            EXPECT_TRUE(answer.contains("result"));
            return "";
        }
        EXPECT_EQ(answer["error"]["code"], -32602);
        EXPECT_EQ(m_observer.calls, std::vector<std::string>{"refused"});
        return answer["error"]["message"];
    }
    /// A category's call is the only one of its kind in a pass.
    void NextPass() { m_server->AfterService(); }
    /// As after a restart, with the same file.
    void Restart() {
        m_server.reset();
        m_categories = std::make_unique<Hub::CCategories>(m_folder.Path("categories.conf"));
        m_server = std::make_unique<Hub::CServicesServer>(
            m_sockets, *m_categories, std::vector<Hub::CHubObserver*>{&m_observer});
    }

    CTemporaryFolder m_folder;
    CNotingObserver m_observer;
    SocketCollectionC m_sockets;
    std::unique_ptr<MPISocketConnectionC> m_caller;
    std::unique_ptr<Hub::CCategories> m_categories =
        std::make_unique<Hub::CCategories>(m_folder.Path("categories.conf"));
    std::unique_ptr<Hub::CServicesServer> m_server = std::make_unique<Hub::CServicesServer>(
        m_sockets, *m_categories, std::vector<Hub::CHubObserver*>{&m_observer});
};

} // namespace HubTesting
