// One client of the gpsd server: its connection, its requests and what it watches.
#pragma once

#include "hub/gpsd/Policy.h"
#include "platform/SocketCollection.h"
#include "platform/Time.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace Hub {
class CGPSDServer;
}

namespace Hub::GPSD {

/// A member of the main loop's socket collection, which does its reading and writing; its requests
/// are answered when the server says so. It reads no further while whole requests wait, and none is
/// answered while many answers wait.
class CClient : public SocketC {
public:
    /// Without its end.
    static constexpr std::size_t kMaxLine = 4096;
    /// A client for which more than this waits is disconnected.
    static constexpr std::size_t kMaxWaiting = std::size_t{1024} * 1024;
    /// Past this, its requests wait until it has read.
    static constexpr std::size_t kManyAnswers = std::size_t{64} * 1024;
    /// How long a client that is given up may take to read why.
    static constexpr Core::Time kFarewell = Core::Time::FromMilliseconds(1000);

    /// Takes over a non-blocking stream socket, which it closes in the end.
    CClient(int descriptor, CGPSDServer& server) : m_descriptor(descriptor), m_server(server) {}
    ~CClient() override;
    CClient(const CClient&) = delete;
    CClient& operator=(const CClient&) = delete;

    const SPolicy& Policy() const { return m_policy; }

    /// Queues what it is told.
    void Tell(std::string_view text);
    /// Sends what it takes now.
    void Flush();

    /// Whether there may be a request to answer.
    bool HasWork() const;
    /// Answers one request; false when none was there.
    bool Step();

    std::size_t HeldBytes() const { return m_input.capacity() + m_output.capacity(); }
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

    void Receive();
    bool IsLineTooLong(std::string_view rest) const;
    void Dismiss();
    void Drain();
    void EndIfDone();
    std::size_t WaitingBytes() const { return m_output.size() - m_sent; }

    int m_descriptor;
    CGPSDServer& m_server;
    SPolicy m_policy;
    EState m_state = EState::open;
    std::string m_input;
    std::size_t m_lineTaken = 0;  ///< bytes of the line that were requests already
    bool m_hasWork = false;       ///< a whole request may be there
    bool m_hasInputEnded = false; ///< the peer sends no more, but may still read
    std::string m_output;
    std::size_t m_sent = 0; ///< bytes of the output that have left
    Core::MonotonicTime m_leaveBy;
};

} // namespace Hub::GPSD
