// A logical port: its device, its socket, and the clients that share the device.
#pragma once

#include "mux/Client.h"
#include "mux/Line.h"
#include "mux/Settings.h"
#include "mux/UnixListener.h"
#include "platform/SocketCollection.h"
#include "platform/Time.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Mux {

/// Every client gets every byte that the device sends. What clients write goes to the device in
/// turns: all that one has written by then, then the next one's.
class CPort : public SocketC {
public:
    /// How often a socket that another program serves, or that cannot be made, is tried again.
    static constexpr Core::Time kListenRetry = Core::Time::FromMilliseconds(10'000);
    /// How long nobody is let in when the process has no descriptors left.
    static constexpr Core::Time kAcceptRest = Core::Time::FromMilliseconds(1000);
    static constexpr std::size_t kMaxClients = 64;

    /// The settings and the collection outlive it.
    CPort(const SPort& port, const SSettings& settings, SocketCollectionC& sockets);
    ~CPort() override;
    CPort(const CPort&) = delete;
    CPort& operator=(const CPort&) = delete;

    /// Begins to serve; why it cannot for now is told on standard error, once for each reason.
    bool Listen();

    std::int32_t Number() const { return m_number; }
    const std::string& Name() const { return m_name; }
    CLine& Line() { return m_line; }
    const CLine& Line() const { return m_line; }
    std::size_t ClientCount() const { return m_clients.size(); }

    /// Hands to the device whatever clients have written by now.
    void TakeAll();

    /// One line on standard error: what it has carried.
    void TellSum() const;

    int Descriptor() const override;
    bool WantsToWrite() const override { return false; }
    void Service(bool readable, bool writable) override;
    void AfterService() override;

private:
    void Accept();
    bool AcceptOne();
    void TakeInTurn();
    std::size_t TakeFrom(CClient& client, std::size_t count);
    void RemoveEnded();
    void Tell(const CClient& client, const char* what) const;

    const std::int32_t m_number;
    const std::string m_name;
    const std::string m_label;
    const SSettings& m_settings;
    SocketCollectionC& m_sockets;
    CLine m_line;
    CUnixListener m_listener;
    Core::MonotonicTime m_nextListen;
    std::string m_toldReason;
    Core::MonotonicTime m_acceptAgain;
    std::vector<std::unique_ptr<CClient>> m_clients;
    std::size_t m_turn = 0;  ///< whose bytes go to the device next
    std::size_t m_burst = 0; ///< how many of them before the next one's
    std::uint64_t m_slowClients = 0;
};

} // namespace Mux
