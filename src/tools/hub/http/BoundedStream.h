// A connection of a web client that may take neither more time nor more memory than it needs.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <httplib.h>
#include <utility>

namespace Hub {

/// Fails once a request has brought more bytes or taken more time to arrive than any that is
/// served here, when the client takes nothing of its answer, or when the server ends.
class CBoundedStream : public httplib::Stream {
public:
    static constexpr std::size_t kLongestRequest = std::size_t{32} * 1024;
    static constexpr std::chrono::milliseconds kRequestTime{5000};
    static constexpr std::chrono::milliseconds kWriteStall{5000};
    static constexpr std::chrono::seconds kIdleTime{15};
    /// So long a client may wait with its request also when others want its place.
    static constexpr std::chrono::milliseconds kCrowdedIdleTime{1000};
    static constexpr std::chrono::milliseconds kFarewell{1000};

    using TQuestion = std::function<bool()>;

    /// The descriptor stays the caller's. Nothing is waited for any more once `shallEnd` says so.
    CBoundedStream(int descriptor, TQuestion shallEnd)
        : m_descriptor(descriptor), m_shallEnd(std::move(shallEnd)) {}

    /// Waits for the next request to begin. False when none comes in time, which is less while it
    /// `isCrowded`.
    bool WaitForRequest(const TQuestion& isCrowded);

    /// Lets the client read its answer before the connection is closed: unread bytes of its own
    /// would take that away from it.
    void BidFarewell();

    bool is_readable() const override;
    bool is_writable() const override;
    ssize_t read(char* bytes, std::size_t size) override;
    ssize_t write(const char* bytes, std::size_t size) override;
    void get_remote_ip_and_port(std::string& address, int& port) const override;
    void get_local_ip_and_port(std::string& address, int& port) const override;
    socket_t socket() const override { return m_descriptor; }

private:
    using TMoment = std::chrono::steady_clock::time_point;

    bool WaitFor(short events, TMoment end) const;
    ssize_t ReceiveInto(char* bytes, std::size_t size);

    int m_descriptor;
    TQuestion m_shallEnd;
    TMoment m_deadline;
    std::size_t m_received = 0; ///< of the present request
    char m_buffer[4096]{};      ///< lines are asked for byte by byte
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
};

} // namespace Hub
