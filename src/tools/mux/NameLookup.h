// The addresses of a host by its name, found without waiting.
#pragma once

#include <netdb.h>
#include <string>
#include <sys/socket.h>
#include <vector>

namespace Mux {

struct SSocketAddress {
    sockaddr_storage bytes{};
    socklen_t length = 0;
};

/// The C library asks in the background; meanwhile this is only looked at.
class CNameLookup {
public:
    enum class EState { idle, pending, found, failed };

    CNameLookup() = default;
    ~CNameLookup() { Cancel(); }
    CNameLookup(const CNameLookup&) = delete;
    CNameLookup& operator=(const CNameLookup&) = delete;

    /// An address in numbers is found at once.
    void Start(const std::string& host, const std::string& port);
    EState Look();
    void Cancel();

    /// Once found; at least one.
    const std::vector<SSocketAddress>& Addresses() const { return m_addresses; }
    /// Once failed.
    const std::string& LastError() const { return m_lastError; }

private:
    struct SRequest;

    void Take(int error, addrinfo* found);

    SRequest* m_request = nullptr; ///< while pending
    EState m_state = EState::idle;
    std::vector<SSocketAddress> m_addresses;
    std::string m_lastError;
};

} // namespace Mux
