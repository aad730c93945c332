// A server that a test scripts, on a TCP port of its own; for the tests of all clients.
#pragma once

#include <arpa/inet.h>
#include <cstdint>
#include <functional>
#include <netinet/in.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>
#include <utility>

/// A socket on an ephemeral port of 127.0.0.1. Until it listens, who connects is refused.
class CLoopbackSocket {
public:
    CLoopbackSocket() : m_descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        socklen_t length = sizeof address;
        if (bind(m_descriptor, generic, length) == 0 &&
            getsockname(m_descriptor, generic, &length) == 0) {
            m_port = ntohs(address.sin_port);
        }
    }
    ~CLoopbackSocket() { close(m_descriptor); }
    CLoopbackSocket(const CLoopbackSocket&) = delete;
    CLoopbackSocket& operator=(const CLoopbackSocket&) = delete;

    std::uint16_t Port() const { return m_port; }
    int Descriptor() const { return m_descriptor; }
    void Listen(int backlog) const { listen(m_descriptor, backlog); }

private:
    int m_descriptor;
    std::uint16_t m_port = 0;
};

/// The server's end of one connection. A client that leaves it waiting for 20 s has gone.
class CScriptedPeer {
public:
    explicit CScriptedPeer(int descriptor) : m_descriptor(descriptor) {
        const timeval patience = {20, 0};
        setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    }
    ~CScriptedPeer() { close(m_descriptor); }
    CScriptedPeer(const CScriptedPeer&) = delete;
    CScriptedPeer& operator=(const CScriptedPeer&) = delete;

    /// The next line without its end; empty once the client has gone.
    std::string ReadLine() {
        std::string line;
        char byte = 0;
        while (recv(m_descriptor, &byte, 1, 0) == 1) {
            if (byte == '\n') {
                return line;
            }
            line += byte;
        }
        return std::string();
    }

    /// False once the client has gone.
    bool Send(std::string_view text) {
        while (!text.empty()) {
            const ssize_t count = send(m_descriptor, text.data(), text.size(), MSG_NOSIGNAL);
            if (count < 0) {
                return false;
            }
            text.remove_prefix(static_cast<std::size_t>(count));
        }
        return true;
    }

    /// Waits until the client has closed.
    void AwaitEnd() {
        char dropped[4096];
        while (recv(m_descriptor, dropped, sizeof dropped, 0) > 0) {
        }
    }

private:
    int m_descriptor;
};

/// Runs the script in a thread for one connection after the other.
class CScriptedServer {
public:
    using TScript = std::function<void(CScriptedPeer&)>;

    explicit CScriptedServer(TScript script) : m_script(std::move(script)) {
        m_listener.Listen(8);
        m_thread = std::thread([this] { Serve(); });
    }
    ~CScriptedServer() {
        shutdown(m_listener.Descriptor(), SHUT_RDWR);
        m_thread.join();
    }

    std::uint16_t Port() const { return m_listener.Port(); }

private:
    void Serve() {
        int accepted = -1;
        while ((accepted = accept4(m_listener.Descriptor(), nullptr, nullptr, SOCK_CLOEXEC)) >= 0) {
            CScriptedPeer peer(accepted);
            m_script(peer);
        }
    }

    TScript m_script;
    CLoopbackSocket m_listener;
    std::thread m_thread;
};
