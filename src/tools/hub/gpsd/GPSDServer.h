// Serves clients of gpsd: cgps, gpspipe, navigation programs, time servers' monitors.
#pragma once

#include "hub/Observer.h"
#include "hub/gpsd/Client.h"
#include "hub/gpsd/Device.h"
#include "hub/gpsd/RawText.h"
#include "hub/gpsd/Request.h"
#include "platform/SocketCollection.h"
#include "platform/TCPListener.h"
#include "platform/Time.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Hub {

/// Speaks the JSON protocol of gpsd 3.22 (docs/gpsd.md) within bounds, so that no client, however
/// slow, broken or hostile, holds up the main loop or another client:
/// - a pass spends about kBudget on requests, each client having one answered in turn;
/// - a client for which GPSD::CClient::kMaxWaiting bytes wait is disconnected, and the one that
///   holds most while all of them together hold more than kMaxHeld;
/// - one more than kMaxClients is accepted and closed at once.
/// The collection outlives it.
class CGPSDServer : public SocketC, public CHubObserver {
public:
    static constexpr Core::Time kBudget = Core::Time::FromMilliseconds(5);
    static constexpr std::size_t kMaxClients = 256;
    static constexpr std::size_t kMaxHeld = std::size_t{16} * 1024 * 1024;
    /// How often clients are told that there is no position when no solution comes.
    static constexpr Core::Time kSilencePeriod = Core::Time::FromMilliseconds(1000);
    /// Ports whose raw blocks are turned into text; those of more are not told in that mode.
    static constexpr std::size_t kMaxPorts = 16;

    explicit CGPSDServer(SocketCollectionC& sockets) : m_sockets(sockets) {}
    ~CGPSDServer() override;
    CGPSDServer(const CGPSDServer&) = delete;
    CGPSDServer& operator=(const CGPSDServer&) = delete;

    /// Listens on an IPv4 address in numbers; port 0 lets the system choose.
    void Start(const std::string& address, std::uint16_t port);
    bool IsListening() const { return m_listener.IsListening(); }
    std::uint16_t Port() const { return m_listener.Port(); }
    std::size_t ClientCount() const { return m_clients.size(); }

    /// What a client is told on its request, line ends and all; may change its policy.
    std::string Answer(const GPSD::SRequest& request, GPSD::SPolicy& policy) const;

    int Descriptor() const override { return m_listener.Descriptor(); }
    bool WantsToWrite() const override { return false; }
    void Service(bool readable, bool writable) override;
    void AfterService() override;
    /// At the end of each pass, for the collection as for the hub's messages.
    void EndPass() override;

    using CHubObserver::NewMessage;
    void NewMessage(const SSolution& solution) override;
    void NewMessage(const SSky& sky) override;
    void NewMessage(const SSentence& sentence) override;
    void NewMessage(const SGeoid& geoid) override { m_device.Take(geoid); }
    void NewMessage(const SRawBlock& block) override;
    void ProcessGone(TProcess process) override;

private:
    void Accept();
    void ShareOutWork();
    void LimitMemory();
    void RemoveEnded();
    void TellSilence();
    void TellReport(const std::optional<GPSD::TReport>& report);
    void TellSentences();
    template <class TCondition>
    bool AnyPolicy(const TCondition& condition) const;
    bool AnyWatchesJSON() const;

    SocketCollectionC& m_sockets;
    Core::IO::TCPListener m_listener;
    std::vector<std::unique_ptr<GPSD::CClient>> m_clients;
    std::size_t m_nextClient = 0; ///< whose turn is first in the next pass
    GPSD::CDevice m_device;
    std::map<std::string, GPSD::CRawText> m_rawTexts; ///< by port
    Core::MonotonicTime m_nextSilence;
};

} // namespace Hub
