// A server of remote procedure calls, the loop that serves it and its clients, in a test's hands.
#pragma once

#include "Support/FakeClock.h"
#include "platform/MPISocketServer.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>
#include <vector>

/// The main loop's part for sockets, pass by pass.
class CServerLoop {
public:
    SocketCollectionC sockets;

    void Pass(int milliseconds = 0) {
        fd_set readSet;
        fd_set writeSet;
        if (Select(readSet, writeSet, milliseconds) >= 0) {
            sockets.Service(readSet, writeSet);
            sockets.EndPass();
        }
    }
    /// Whether the next pass would begin at once.
    bool IsReady() const {
        fd_set readSet;
        fd_set writeSet;
        return Select(readSet, writeSet, 0) > 0;
    }
    /// Makes passes until `isDone`; false when that has not come after ten seconds.
    template <class TCondition>
    bool PassUntil(const TCondition& isDone) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!isDone()) {
            if (std::chrono::steady_clock::now() > deadline) {
                return false;
            }
            Pass(1);
        }
        return true;
    }

private:
    int Select(fd_set& readSet, fd_set& writeSet, int milliseconds) const {
        FD_ZERO(&readSet);
        FD_ZERO(&writeSet);
        const int highest = sockets.AddToSets(readSet, writeSet);
        timeval timeout{0, milliseconds * 1000};
        return select(highest + 1, &readSet, &writeSet, nullptr, &timeout);
    }
};

/// A client that never waits: what it sends leaves, and what it is sent comes, with Transfer().
class CTestClient {
public:
    /// With a receive buffer of its own size the peer is soon left with what it sends.
    explicit CTestClient(std::uint16_t port, int receiveBuffer = 0)
        : m_descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        if (receiveBuffer > 0) {
            setsockopt(m_descriptor, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
        }
        const int on = 1; // or a line in pieces would wait for acknowledgements
        setsockopt(m_descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        m_isConnected =
            m_descriptor >= 0 &&
            connect(m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }
    ~CTestClient() { Close(); }
    CTestClient(const CTestClient&) = delete;
    CTestClient& operator=(const CTestClient&) = delete;

    bool IsConnected() const { return m_isConnected; }
    void Send(std::string_view bytes) {
        m_toSend += bytes;
        TrySending();
    }
    void SendLine(std::string_view line) { Send(std::string(line) + "\n"); }
    void EndSending() { shutdown(m_descriptor, SHUT_WR); }
    void Close() {
        if (m_descriptor >= 0) {
            close(m_descriptor);
        }
        m_descriptor = -1;
    }
    void Transfer() {
        TrySending();
        char chunk[65536];
        ssize_t count = 0;
        while ((count = recv(m_descriptor, chunk, sizeof chunk, MSG_DONTWAIT)) > 0) {
            m_received.append(chunk, static_cast<std::size_t>(count));
        }
        m_hasEnded = m_hasEnded || count == 0 || (errno != EAGAIN && errno != EINTR);
        m_wasReset = m_wasReset || (count < 0 && errno == ECONNRESET);
    }

    bool HasSentAll() const { return m_toSend.empty(); }
    /// The server has closed the connection.
    bool HasEnded() const { return m_hasEnded; }
    bool WasReset() const { return m_wasReset; }
    const std::string& Received() const { return m_received; }
    /// Whole lines, without their ends.
    std::vector<std::string> Lines() const {
        std::vector<std::string> lines;
        for (std::size_t begin = 0, end = 0;
             (end = m_received.find('\n', begin)) != std::string::npos; begin = end + 1) {
            lines.push_back(m_received.substr(begin, end - begin));
        }
        return lines;
    }
    std::size_t LineCount() const {
        return static_cast<std::size_t>(std::count(m_received.begin(), m_received.end(), '\n'));
    }

private:
    void TrySending() {
        const ssize_t count =
            send(m_descriptor, m_toSend.data(), m_toSend.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        m_toSend.erase(0, count > 0 ? static_cast<std::size_t>(count) : 0);
    }

    int m_descriptor;
    bool m_isConnected = false;
    bool m_hasEnded = false;
    bool m_wasReset = false;
    std::string m_toSend;
    std::string m_received;
};

/// A procedure that is a function of the test, with any arguments.
class CTestMethod : public MPICallbackBase {
public:
    using TFunction = std::function<std::unique_ptr<BListC>(const BListC&)>;

    CTestMethod(const std::string& name, ECost cost, TFunction function,
                std::vector<SArgument> arguments = {})
        : MPICallbackBase(name, std::move(arguments), cost), m_function(std::move(function)) {}

    BAtomC Call(const BListC& arguments) override { return ResultOf(m_function(arguments)); }
    std::string WhyNotNow() const override { return whyNotNow; }

    std::string whyNotNow;

private:
    TFunction m_function;
};

/// Keeps whose connections were closed and how many requests were refused, and tells whose call is
/// being made.
class CTestServer : public MPISocketServerC {
public:
    using MPISocketServerC::Caller;
    using MPISocketServerC::MPISocketServerC;

    void RequestRefused() override { ++refused; }

    std::vector<const MPISocketConnectionC*> closed;
    int refused = 0;

protected:
    void ConnectionClosed(MPISocketConnectionC& connection) override {
        closed.push_back(&connection);
    }
};

/// Sets how many descriptors the process may have, for as long as it lives.
class CDescriptorLimit {
public:
    explicit CDescriptorLimit(rlim_t limit) {
        getrlimit(RLIMIT_NOFILE, &m_before);
        rlimit changed = m_before;
        changed.rlim_cur = std::min(limit, changed.rlim_max);
        m_isSet = setrlimit(RLIMIT_NOFILE, &changed) == 0 && changed.rlim_cur == limit;
    }
    ~CDescriptorLimit() { setrlimit(RLIMIT_NOFILE, &m_before); }
    CDescriptorLimit(const CDescriptorLimit&) = delete;
    CDescriptorLimit& operator=(const CDescriptorLimit&) = delete;

    /// False where the machine does not allow so many.
    bool IsSet() const { return m_isSet; }

private:
    rlimit m_before{};
    bool m_isSet = false;
};

/// A server with "Echo", which returns its arguments, and whatever else a test offers.
class CMPIServerTesting : public testing::Test {
protected:
    using ECost = MPICallbackBase::ECost;
    using Lines = std::vector<std::string>;
    using TReply = std::unique_ptr<BListC>;

    CMPIServerTesting() {
        m_loop.sockets.Add(&m_server);
        Offer("Echo", ECost::light,
              [](const BListC& arguments) { return std::make_unique<BListC>(arguments); });
    }

    CTestMethod& Offer(const std::string& name, ECost cost, CTestMethod::TFunction function) {
        auto method = std::make_unique<CTestMethod>(name, cost, std::move(function));
        CTestMethod& offered = *method;
        m_server.Register(std::move(method));
        return offered;
    }
    /// A procedure that appends the text it is called with to `m_calls`, and returns nothing.
    void OfferRecording(const std::string& name, ECost cost,
                        Core::Time duration = Core::Time::FromMilliseconds(0)) {
        Offer(name, cost, [this, duration](const BListC& arguments) {
            m_calls.push_back(arguments.GetString(0));
            m_clock.Advance(duration);
            return nullptr;
        });
    }

    void Listen(int backlog = 5) {
        ASSERT_TRUE(m_server.StartServer(
            "127.0.0.1", 0, backlog, [this](const std::string& why) { m_reports.push_back(why); }));
    }
    /// A client that the server has accepted.
    std::unique_ptr<CTestClient> Connect(int receiveBuffer = 0) {
        const std::size_t before = m_server.ClientCount();
        auto client = std::make_unique<CTestClient>(m_server.Port(), receiveBuffer);
        EXPECT_TRUE(client->IsConnected());
        EXPECT_TRUE(m_loop.PassUntil([&] { return m_server.ClientCount() == before + 1; }));
        return client;
    }

    /// Serves until so many lines have come.
    void AwaitLines(CTestClient& client, std::size_t count) {
        EXPECT_TRUE(m_loop.PassUntil([&] {
            client.Transfer();
            return client.LineCount() >= count;
        })) << client.LineCount()
            << " of " << count << " lines have come";
    }
    /// Serves until the server has closed the connection.
    void AwaitEnd(CTestClient& client) {
        EXPECT_TRUE(m_loop.PassUntil([&] {
            client.Transfer();
            return client.HasEnded();
        })) << "the connection has not ended";
    }
    /// Serves until the server has taken in everything that the client has sent.
    void AwaitSent(CTestClient& client) {
        EXPECT_TRUE(m_loop.PassUntil([&] {
            client.Transfer();
            return client.HasSentAll();
        }));
        for (int i = 0; i < 3; ++i) {
            while (m_loop.IsReady()) {
                m_loop.Pass();
            }
            m_loop.Pass(1);
        }
    }
    Lines AnswersTo(CTestClient& client, const std::string& bytes, std::size_t count) {
        const std::size_t before = client.LineCount();
        client.Send(bytes);
        AwaitLines(client, before + count);
        Lines lines = client.Lines();
        lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(before));
        return lines;
    }

    /// A request without its line end; its argument is a text, unless it is none.
    static std::string Request(const std::string& id, const std::string& method,
                               const std::string& argument = "") {
        return R"({"jsonrpc":"2.0","id":)" + id + R"(,"method":")" + method + R"(","params":[)" +
               (argument.empty() ? "" : "\"" + argument + "\"") + "]}";
    }
    static std::string Notification(const std::string& method, const std::string& argument = "") {
        return R"({"jsonrpc":"2.0","method":")" + method + R"(","params":[)" +
               (argument.empty() ? "" : "\"" + argument + "\"") + "]}";
    }
    static std::string Result(const std::string& id, const std::string& result) {
        return R"({"jsonrpc":"2.0","id":)" + id + R"(,"result":)" + result + "}";
    }
    static std::string Error(const std::string& id, int code, const std::string& message) {
        return R"({"jsonrpc":"2.0","id":)" + id + R"(,"error":{"code":)" + std::to_string(code) +
               R"(,"message":")" + message + "\"}}";
    }

    CFakeClock m_clock;
    Lines m_calls;
    Lines m_reports;
    CServerLoop m_loop;
    CTestServer m_server{m_loop.sockets};
};
