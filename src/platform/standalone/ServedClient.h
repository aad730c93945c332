// One client of a server of remote procedure calls: its connection and what it has asked for.
#pragma once

#include "RPCMessage.h"
#include "platform/MPISocketConnection.h"
#include "platform/SocketCollection.h"
#include "platform/Time.h"

#include <optional>
#include <string>

class MPISocketServerC;

/// A member of the main loop's socket collection, which does its reading and writing; its requests
/// are answered when the server says so. It reads no further while whole requests wait.
class CServedClient : public SocketC {
public:
    CServedClient(int descriptor, MPISocketServerC& server)
        : m_server(server), m_connection(descriptor) {}

    MPISocketConnectionC& Connection() { return m_connection; }

    /// Whether there may be a request to answer.
    bool HasWork() const { return m_state == EState::open && m_hasWork; }
    /// Answers one request or one element of a batch. False when it did nothing: there is no whole
    /// request, or it must wait for a later pass.
    bool Step();

    /// Sends what the client takes now.
    void Flush();

    std::size_t HeldBytes() const;
    void ReleaseMemory() { m_connection.ReleaseMemory(); }
    void GiveUp() { m_state = EState::ended; }
    bool HasEnded() const { return m_state == EState::ended; }

    int Descriptor() const override;
    bool WantsToRead() const override;
    bool WantsToWrite() const override;
    void Service(bool readable, bool writable) override;

private:
    enum class EState {
        open,
        leaving, ///< told why, and given a moment to read it
        ended,   ///< to be removed
    };

    bool TakeRequest();
    bool StepBatch();
    void BeginBatch(std::string line);
    void Dismiss(const RPCMessage::SError& error);
    void Drain();
    void EndIfDone();

    MPISocketServerC& m_server;
    MPISocketConnectionC m_connection;
    EState m_state = EState::open;
    bool m_hasWork = false;               ///< a whole line may be there
    bool m_hasInputEnded = false;         ///< the peer sends no more, but may still read
    std::optional<std::string> m_request; ///< taken, not yet answered
    std::optional<RPCMessage::CBatchReader> m_batch;
    std::optional<std::string_view> m_element; ///< of the batch, not yet answered
    bool m_isBatchAnswered = false;            ///< by one answer at least
    Core::MonotonicTime m_leaveBy;
};
