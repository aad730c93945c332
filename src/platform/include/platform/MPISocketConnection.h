// One connection of remote procedure calls: whole lines in, whole lines out.
#pragma once

#include "platform/BAtom.h"
#include "platform/Time.h"

#include <cstddef>
#include <string>
#include <string_view>

/// Used by the client and the server of remote procedures. It never waits for the peer but in
/// Wait().
class MPISocketConnectionC {
public:
    /// A line, without its end, is at most 1 MiB long.
    static constexpr std::size_t kMaxLine = std::size_t{1024} * 1024;

    enum class ELine {
        whole,   ///< taken
        partial, ///< its end has not come yet
        tooLong, ///< the connection is of no further use
    };

    /// Takes over a non-blocking stream socket, which it closes in the end.
    explicit MPISocketConnectionC(int descriptor) : m_descriptor(descriptor) {}
    ~MPISocketConnectionC();
    MPISocketConnectionC(const MPISocketConnectionC&) = delete;
    MPISocketConnectionC& operator=(const MPISocketConnectionC&) = delete;

    int Descriptor() const { return m_descriptor; }

    /// Reads some of what is there. False when the peer has closed (errno 0) or on a failure.
    bool Receive();
    /// Takes the next line that has come whole, without its end.
    ELine TakeLine(std::string& line);

    /// Adds a line, given without its end, to what is to be sent.
    void Queue(std::string_view line);
    /// The same piece by piece: what others queue meanwhile comes after the end of the line.
    void QueuePart(std::string_view part);
    void EndLine();
    /// Queues a call that wants no answer.
    void PostCallback(const std::string& method, const BListC& params);

    /// Sends as much as the peer takes now. False on a failure, told by errno.
    bool Send();
    bool HasWaitingBytes() const { return m_sent < m_output.size(); }
    /// How many bytes wait to be sent.
    std::size_t WaitingBytes() const { return m_output.size() - m_sent + m_behind.size(); }
    /// How much memory its buffers take.
    std::size_t HeldBytes() const {
        return m_input.capacity() + m_output.capacity() + m_behind.capacity();
    }
    /// Gives back the memory that the buffers do not need now.
    void ReleaseMemory();
    /// The same for buffers that hold nothing, which copies nothing.
    void ReleaseEmptyBuffers();

    /// Waits for the `events` of poll(), or for the connection to fail. False when the deadline
    /// has passed instead.
    bool Wait(short events, Core::MonotonicTime deadline) const;

private:
    int m_descriptor;
    std::string m_input;
    std::size_t m_taken = 0;    ///< bytes of the input that were given out as lines
    std::size_t m_searched = 0; ///< bytes of the input before which no untaken line ends
    std::string m_output;
    std::size_t m_sent = 0; ///< bytes of the output that have left
    bool m_isInLine = false;
    std::string m_behind; ///< lines that come after the one that is made now
};
