#include "mux/NameLookup.h"

#include <cstring>
#include <memory>

namespace Mux {

/// Everything that the C library looks at until it has finished.
struct CNameLookup::SRequest {
    std::string host;
    std::string port;
    addrinfo hints{};
    gaicb call{};
};

void CNameLookup::Start(const std::string& host, const std::string& port) {
    Cancel();
    m_addresses.clear();
    auto request = std::make_unique<SRequest>();
    request->host = host;
    request->port = port;
    request->hints.ai_socktype = SOCK_STREAM;
    request->hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
    addrinfo* found = nullptr;
    if (getaddrinfo(host.c_str(), port.c_str(), &request->hints, &found) == 0) {
        Take(0, found);
        return;
    }
    request->hints.ai_flags = AI_NUMERICSERV;
    request->call.ar_name = request->host.c_str();
    request->call.ar_service = request->port.c_str();
    request->call.ar_request = &request->hints;
    gaicb* calls[] = {&request->call};
    if (const int error = getaddrinfo_a(GAI_NOWAIT, calls, 1, nullptr); error != 0) {
        Take(error, nullptr);
        return;
    }
    m_request = request.release();
    m_state = EState::pending;
}

CNameLookup::EState CNameLookup::Look() {
    if (m_request != nullptr) {
        if (const int error = gai_error(&m_request->call); error != EAI_INPROGRESS) {
            const std::unique_ptr<SRequest> request(m_request);
            m_request = nullptr;
            Take(error, request->call.ar_result);
        }
    }
    return m_state;
}

void CNameLookup::Take(int error, addrinfo* found) {
    for (const addrinfo* each = found; each != nullptr; each = each->ai_next) {
        SSocketAddress address;
        std::memcpy(&address.bytes, each->ai_addr, each->ai_addrlen);
        address.length = each->ai_addrlen;
        m_addresses.push_back(address);
    }
    if (found != nullptr) {
        freeaddrinfo(found);
    }
    m_state = m_addresses.empty() ? EState::failed : EState::found;
    m_lastError = m_addresses.empty() ? gai_strerror(error) : "";
}

void CNameLookup::Cancel() {
    // One that cannot be cancelled any more is still being written to: it is left alone for ever.
    if (m_request != nullptr && gai_cancel(&m_request->call) != EAI_NOTCANCELED) {
        delete m_request;
    }
    m_request = nullptr;
    m_state = EState::idle;
}

} // namespace Mux
