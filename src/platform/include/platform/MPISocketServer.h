// The server of remote procedure calls: JSON-RPC 2.0 over TCP, inside the main loop.
#pragma once

#include "platform/MPICallback.h"
#include "platform/MPISocketConnection.h"
#include "platform/SocketCollection.h"
#include "platform/TCPListener.h"
#include "platform/Time.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

class CServedClient;

/// Answers any number of clients, fairly and within bounds, so that none of them, however slow,
/// broken or hostile, holds up the loop or takes more than its share:
/// - a pass spends about kBudget on requests, each client having one answered in turn;
/// - a pass makes one call that pauses and one that writes a setting, by turns as well;
/// - a line longer than MPISocketConnectionC::kMaxLine is answered with an error and the connection
///   closed, that of a web browser at once;
/// - a client for which kMaxWaiting bytes wait is disconnected, and the one that holds most while
///   all of them together hold more than kMaxHeld.
/// The registered procedures and the collection outlive it.
class MPISocketServerC : public SocketC {
public:
    static constexpr Core::Time kBudget = Core::Time::FromMilliseconds(5);
    static constexpr std::size_t kMaxClients = 256;
    /// So many of the process's descriptors are left to everything else.
    static constexpr std::size_t kReservedDescriptors = 24;
    static constexpr std::size_t kMaxWaiting = std::size_t{4} * 1024 * 1024;
    /// A quarter below the 16 MiB that all clients' buffers may ever take, for what a single
    /// request adds before it is looked at again.
    static constexpr std::size_t kMaxHeld = std::size_t{12} * 1024 * 1024;
    /// How long a client that is given up may take to read why.
    static constexpr Core::Time kFarewell = Core::Time::FromMilliseconds(1000);

    explicit MPISocketServerC(SocketCollectionC& sockets);
    ~MPISocketServerC() override;
    MPISocketServerC(const MPISocketServerC&) = delete;
    MPISocketServerC& operator=(const MPISocketServerC&) = delete;

    /// Offers a procedure; of one name, the last holds.
    void Register(std::unique_ptr<MPICallbackBase> callback);

    /// As Core::IO::TCPListener::Start().
    bool StartServer(const std::string& address, std::uint16_t port, int backlog,
                     std::function<void(const std::string&)> report) {
        return m_listener.Start(address, port, backlog, std::move(report));
    }
    bool IsListening() const { return m_listener.IsListening(); }
    /// The port that it listens on; 0 when it does not.
    std::uint16_t Port() const { return m_listener.Port(); }

    /// To be called when nothing was ready: gives back memory that no client needs now.
    void Idle();

    std::size_t ClientCount() const { return m_clients.size(); }
    std::size_t HeldBytes() const;

    int Descriptor() const override { return m_listener.Descriptor(); }
    bool WantsToWrite() const override { return false; }
    void Service(bool readable, bool writable) override;
    void AfterService() override;
    void EndPass() override;

    /// Gives back what no client needs when all of them together hold too much, then gives up those
    /// that hold most. To be called whenever a client may hold more than before.
    void LimitMemory();

    /// A request was wrong, or no request at all: nothing was done for it.
    virtual void RequestRefused() {}

    /// Answers one request, or one element of a batch; empty when it wants no answer. Nothing is
    /// done, and false returned, when it must wait for a later pass.
    bool Answer(MPISocketConnectionC& caller, std::string_view text, std::string& answer);

protected:
    /// Whose call is being made; null outside of calls.
    MPISocketConnectionC* Caller() const { return m_caller; }
    /// A connection is about to be closed.
    virtual void ConnectionClosed(MPISocketConnectionC&) {}

private:
    using TClients = std::vector<std::unique_ptr<CServedClient>>;

    void Accept();
    std::size_t MaxClients() const;
    void ShareOutWork();
    bool MayCall(MPICallbackBase::ECost cost, const MPISocketConnectionC& caller);
    void ForgetTurns(const MPISocketConnectionC& caller);
    void RemoveEnded();

    SocketCollectionC& m_sockets;
    std::map<std::string, std::unique_ptr<MPICallbackBase>> m_callbacks;
    Core::IO::TCPListener m_listener;
    TClients m_clients;
    std::size_t m_nextClient = 0; ///< whose turn is first in the next pass
    MPISocketConnectionC* m_caller = nullptr;
    /// Of the calls of which a pass makes one: whether it has, and whose turn is next.
    struct STurns {
        bool isSpent = false;
        std::deque<const MPISocketConnectionC*> waiting;
    };
    STurns m_writes;
    STurns m_pauses;
};
