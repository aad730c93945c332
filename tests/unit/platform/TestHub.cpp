#include "platform/TestHub.h"

#include <nlohmann/json.hpp>

#include <algorithm>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
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
        Take(buffer, static_cast<std::size_t>(count));
    }
}

void CTestHub::ServeUntilTheEnd() {
    while (!m_clientClosed) {
        pollfd watched{m_client >= 0 ? m_client : m_listener, POLLIN, 0};
        poll(&watched, 1, 1000);
        Serve();
    }
}

void CTestHub::Take(const char* bytes, std::size_t count) {
    m_partialLine.append(bytes, count);
    std::size_t start = 0;
    for (std::size_t end = m_partialLine.find('\n'); end != std::string::npos;
         end = m_partialLine.find('\n', start)) {
        m_lines.push_back(m_partialLine.substr(start, end - start));
        const auto message = nlohmann::json::parse(m_lines.back());
        const auto& params = message["params"];
        m_messages.push_back(
            {message["method"], params.value("value", params.value("text", std::string()))});
        start = end + 1;
    }
    m_partialLine.erase(0, start);
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

std::vector<std::string> CTestHub::Texts(const std::string& method) const {
    std::vector<std::string> texts;
    for (const SMessage& message : m_messages) {
        if (message.method == method) {
            texts.push_back(message.text);
        }
    }
    return texts;
}

int CTestHub::Count(const std::string& method) const {
    return static_cast<int>(
        std::count_if(m_messages.begin(), m_messages.end(),
                      [&method](const SMessage& message) { return message.method == method; }));
}
