#include "mux/Port.h"

#include "platform/DebugPrint.h"
#include "platform/Descriptor.h"

#include <algorithm>
#include <cerrno>
#include <sys/socket.h>
#include <unistd.h>

namespace Mux {

namespace {

/// So many clients are let in in one pass.
constexpr int kMaxAccepts = 16;

unsigned long long ToPrint(std::uint64_t value) {
    return value;
}

} // namespace

CPort::CPort(const SPort& port, const SSettings& settings, SocketCollectionC& sockets)
    : m_number(port.number),
      m_name(port.name),
      m_label("port " + std::to_string(port.number) + " (" + port.name + ")"),
      m_settings(settings),
      m_sockets(sockets),
      m_line(m_label, port.device, port.baud, [this](std::string_view bytes) {
          for (const auto& client : m_clients) {
              client->Send(bytes);
          }
      }) {
    m_sockets.Add(this);
    m_sockets.Add(&m_line);
}

CPort::~CPort() {
    for (const auto& client : m_clients) {
        m_sockets.Remove(client.get());
    }
    m_sockets.Remove(&m_line);
    m_sockets.Remove(this);
}

bool CPort::Listen() {
    const std::string path = m_settings.socketFolder + "/tty_socket_" + std::to_string(m_number);
    const std::string why = m_listener.Open(path, m_settings.mode, m_settings.group);
    m_nextListen = Core::MonotonicTime::Now() + kListenRetry;
    if (!why.empty() && why != m_toldReason) {
        deprintf("%s: not served: %s: %s; trying again every 10 s\n", m_label.c_str(), path.c_str(),
                 why.c_str());
    } else if (why.empty()) {
        deprintf("%s: served as %s\n", m_label.c_str(), path.c_str());
    }
    m_toldReason = why;
    return why.empty();
}

/// None while nobody is let in, or the loop would spin on who waits to be.
int CPort::Descriptor() const {
    return m_acceptAgain.HasExpired() ? m_listener.Descriptor() : -1;
}

void CPort::Service(bool readable, bool) {
    if (m_listener.Descriptor() < 0 && m_nextListen.HasExpired()) {
        Listen();
    }
    if (readable) {
        Accept();
    }
}

void CPort::Accept() {
    for (int i = 0; i < kMaxAccepts && AcceptOne(); ++i) {
    }
}

bool CPort::AcceptOne() {
    const int descriptor =
        accept4(m_listener.Descriptor(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (descriptor < 0) {
        if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
            m_acceptAgain = Core::MonotonicTime::Now() + kAcceptRest;
        }
        return errno == ECONNABORTED || errno == EINTR;
    }
    if (Core::IO::KeepSelectable(descriptor) < 0) {
        return true;
    }
    auto client = std::make_unique<CClient>(descriptor, m_line);
    if (m_clients.size() >= kMaxClients) {
        Tell(*client, "turned away: there are 64 already");
        return true;
    }
    if (m_settings.isVerbose) {
        Tell(*client, "has come");
    }
    m_sockets.Add(client.get());
    m_clients.push_back(std::move(client));
    return true;
}

void CPort::AfterService() {
    TakeInTurn();
    RemoveEnded();
}

/// Each client once, from where the pass before stopped for want of room.
void CPort::TakeInTurn() {
    for (std::size_t i = 0; i < m_clients.size(); ++i) {
        m_turn = m_turn < m_clients.size() ? m_turn : 0;
        CClient& client = *m_clients[m_turn];
        if (m_burst == 0) {
            // Also of those that were not watched while the line was congested; and the end is read
            // as a byte is.
            m_burst = std::max<std::size_t>(client.BytesThere(), client.IsReadable() ? 1 : 0);
        }
        while (m_burst > 0) {
            if (m_line.IsCongested()) {
                return;
            }
            m_burst -= TakeFrom(client, m_burst);
        }
        ++m_turn;
    }
}

/// Returns how many bytes are no longer to be taken: all, when no more are there.
std::size_t CPort::TakeFrom(CClient& client, std::size_t count) {
    const std::string piece = client.Read(count);
    if (piece.empty()) {
        return count;
    }
    m_line.Write(piece);
    return piece.size();
}

void CPort::TakeAll() {
    Accept();
    for (std::size_t i = 0; i < m_clients.size(); ++i) {
        CClient& client = *m_clients[(m_turn + i) % m_clients.size()];
        for (std::size_t left = client.BytesThere(); left > 0;) {
            left -= TakeFrom(client, left);
        }
    }
    m_burst = 0;
}

void CPort::RemoveEnded() {
    for (std::size_t i = m_clients.size(); i-- > 0;) {
        CClient& client = *m_clients[i];
        if (!client.HasEnded()) {
            continue;
        }
        if (client.LostBytes() > 0) {
            ++m_slowClients;
            Tell(client, ("disconnected: it reads too slowly, and loses " +
                          std::to_string(client.LostBytes()) +
                          " bytes; slow clients so far: " + std::to_string(m_slowClients))
                             .c_str());
        } else if (m_settings.isVerbose) {
            Tell(client, "has gone");
        }
        m_sockets.Remove(&client);
        m_clients.erase(m_clients.begin() + static_cast<std::ptrdiff_t>(i));
        if (i == m_turn) {
            m_burst = 0;
        }
        m_turn -= i < m_turn ? 1 : 0;
    }
}

void CPort::Tell(const CClient& client, const char* what) const {
    deprintf("%s: client %s %s\n", m_label.c_str(), client.Name().c_str(), what);
}

void CPort::TellSum() const {
    deprintf("%s: %llu bytes in, %llu out, %llu dropped, %llu slow clients\n", m_label.c_str(),
             ToPrint(m_line.BytesIn()), ToPrint(m_line.BytesOut()),
             ToPrint(m_line.DroppedBytes() + m_line.WaitingBytes()), ToPrint(m_slowClients));
}

} // namespace Mux
