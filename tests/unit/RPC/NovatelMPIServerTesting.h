// The RPC service with everything behind it, called as a connection of its own would call it.
#pragma once

#include "Control/CommandManagerTesting.h"
#include "Control/SoftloadManager.h"
#include "Framing/RecordFactory.h"
#include "LogObserver/ReceiverStatusObserver.h"
#include "RPC/NovatelMPIServer.h"
#include "Support/LogSentences.h"
#include "Support/TextSentences.h"
#include "platform/Published.h"

#include <sys/socket.h>
#include <unistd.h>

/// A connection without anybody at its other end.
class CUnusedConnection {
public:
    CUnusedConnection() {
        int ends[2] = {-1, -1};
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends), 0);
        m_connection = std::make_unique<MPISocketConnectionC>(ends[0]);
        m_peer = ends[1];
    }
    ~CUnusedConnection() { close(m_peer); }
    CUnusedConnection(const CUnusedConnection&) = delete;
    CUnusedConnection& operator=(const CUnusedConnection&) = delete;

    operator MPISocketConnectionC&() const { return *m_connection; }

private:
    std::unique_ptr<MPISocketConnectionC> m_connection;
    int m_peer = -1;
};

class CNovatelMPIServerTesting : public testing::Test {
protected:
    using Lines = std::vector<std::string>;

    CNovatelMPIServerTesting() {
        Trace("off");
        m_commands.SetByteSource(&m_source);
        m_commands.SetConstellationManager(&m_constellation);
    }
    ~CNovatelMPIServerTesting() override {
        unsetenv("CORVANE_TRACE");
        CTraceOutputs::Restart();
    }

    static void Trace(const char* where) {
        setenv("CORVANE_TRACE", where, 1);
        CTraceOutputs::Restart();
    }

    /// The result of a call in a pass of its own, as JSON; or "error <code> <message>".
    std::string Call(CNovatelMPIServer& server, const std::string& method,
                     const std::string& params = "[]") {
        const std::string head = R"({"jsonrpc":"2.0","id":1,)";
        std::string answer;
        server.AfterService();
        EXPECT_TRUE(server.Answer(m_connection,
                                  R"({"jsonrpc":"2.0","id":1,"method":")" + method +
                                      R"(","params":)" + params + "}",
                                  answer));
        EXPECT_EQ(answer.substr(0, head.size()), head);
        return Shortened(answer.substr(head.size()));
    }
    std::string Call(const std::string& method, const std::string& params = "[]") {
        return Call(m_server, method, params);
    }

    template <class TObserver>
    static void Offer(TObserver& observer, const Bytes::Sentence& sentence) {
        const std::unique_ptr<CGPSRecord> record(CreateRecord(sentence));
        ASSERT_NE(record, nullptr);
        observer.NewRecord(record.get());
    }

    /// As another program writes the settings.
    void WriteSettings(const std::string& text) { m_folder.Write("corvane.conf", text); }
    std::string SettingsFile() const { return FileText(m_folder.Path("corvane.conf")); }
    static std::string FileText(const std::string& path) {
        std::stringstream text;
        text << std::ifstream(path).rdbuf();
        return text.str();
    }

    /// Takes all that waits to be sent.
    Lines TakePending() {
        Lines lines;
        for (std::size_t count = m_commands.PendingCount(); count > 0; --count) {
            lines.push_back(m_commands.NextCommand());
        }
        return lines;
    }
    /// A fresh configuration of so many commands waits, `command` among them.
    void ExpectReplayed(const std::string& command, std::size_t count = kUsualCount) {
        const Lines pending = TakePending();
        EXPECT_EQ(pending.size(), count);
        EXPECT_EQ(std::count(pending.begin(), pending.end(), command + "\r\n"), 1) << command;
    }
    void ExpectNothingDone(const std::string& settingsFile = "") {
        EXPECT_EQ(SettingsFile(), settingsFile);
        EXPECT_EQ(m_commands.PendingCount(), 0U);
        EXPECT_TRUE(m_commands.Configuration().empty());
        EXPECT_EQ(m_source.done, Lines{});
    }

    /// How many commands the configuration has without any setting, and how many more for
    /// recording.
    static constexpr std::size_t kUsualCount = 61;
    static constexpr std::size_t kRecordingCount = 23;

    CFakeClock m_clock;
    CTemporaryFolder m_folder;
    CSystemConfigFile m_system{m_folder.Write("corvane.conf", "")};
    CPublished m_published;
    CFakeByteSource m_source;
    CConstellationManager m_constellation;
    CCommandManager m_commands{m_system.Config()};
    CRemoteLogger m_logger{"Logger"};
    SoftloadManager m_upgrade{&m_source, m_logger};
    CReceiverStatusObserver m_receiverStatus;
    SocketCollectionC m_sockets;
    CUnusedConnection m_connection;
    CNovatelMPIServer m_server{m_sockets, &m_commands, &m_upgrade, &m_receiverStatus};

private:
    static std::string Shortened(const std::string& answer) {
        const std::string result = R"("result":)";
        const std::string error = R"("error":{"code":)";
        const std::string message = R"(,"message":)";
        if (answer.starts_with(result)) {
            return answer.substr(result.size(), answer.size() - result.size() - 1);
        }
        const std::size_t at = answer.find(message);
        if (!answer.starts_with(error) || at == std::string::npos) {
            return "no answer: " + answer;
        }
        const std::size_t text = at + message.size() + 1;
        return "error " + answer.substr(error.size(), at - error.size()) + " " +
               answer.substr(text, answer.size() - text - 3);
    }
};
