#include "platform/TestHub.h"

#include <nlohmann/json.hpp>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

CTestHub::CTestHub() {
    m_listener = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    // Small buffers, so that a hub that does not read is felt soon.
    const int size = 4096;
    setsockopt(m_listener, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
    socklen_t length = sizeof address;
    if (bind(m_listener, reinterpret_cast<sockaddr*>(&address), length) == 0 &&
        listen(m_listener, 5) == 0 &&
        getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &length) == 0) {
        m_port = ntohs(address.sin_port);
    }
}

CTestHub::~CTestHub() {
    Hangup();
    StopListening();
}

void CTestHub::Serve() {
    if (m_client < 0 && m_listener >= 0) {
        m_client = accept4(m_listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        m_clientClosed = false;
    }
    char buffer[65536];
    while (m_client >= 0 && m_isReading) {
        const ssize_t count = recv(m_client, buffer, sizeof buffer, 0);
        if (count == 0) {
            m_clientClosed = true;
        }
        if (count <= 0) {
            break;
        }
        m_bytes.append(buffer, static_cast<std::size_t>(count));
    }
}

void CTestHub::Send(const std::string& line) {
    const std::string bytes = line + "\n";
    send(m_client, bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

void CTestHub::Hangup() {
    if (m_client >= 0) {
        close(m_client);
        m_client = -1;
    }
}

void CTestHub::StopListening() {
    if (m_listener >= 0) {
        close(m_listener);
        m_listener = -1;
    }
}

std::vector<std::string> CTestHub::Lines() const {
    std::vector<std::string> lines;
    std::size_t start = 0;
    for (std::size_t end = m_bytes.find('\n'); end != std::string::npos;
         end = m_bytes.find('\n', start)) {
        lines.push_back(m_bytes.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

std::vector<std::string> CTestHub::Texts(const std::string& method) const {
    std::vector<std::string> texts;
    for (const std::string& line : Lines()) {
        const auto message = nlohmann::json::parse(line);
        if (message["method"] == method) {
            const auto& params = message["params"];
            texts.push_back(params.value("value", params.value("text", std::string())));
        }
    }
    return texts;
}

int CTestHub::Count(const std::string& method) const {
    return static_cast<int>(Texts(method).size());
}
