// The receiver in real time, with a device for each of its ports.
#pragma once

#include "LineCapture.h"
#include "Options.h"
#include "PortLink.h"

#include "platform/Time.h"

#include <csignal>
#include <memory>
#include <vector>

namespace Sim {

/// One thread, one poll loop, which sleeps until a log is due or something arrives.
class CSimulation : public CReceiverOutput {
public:
    explicit CSimulation(const SOptions& options);
    ~CSimulation() override;

    /// Runs until a signal ends it, or its time is over. The program's exit status; a failure is
    /// told on standard error.
    int Run(const std::vector<std::string>& commands);

    void Say(const SUtterance& utterance) override;

private:
    struct SPort {
        explicit SPort(EPort which) : port(which) {}

        EPort port;
        CPortLink link;
        CLineCapture capture;
        std::uint64_t lostLogs = 0;
        std::uint64_t toldLogs = 0; ///< of these
        std::uint32_t toldSpeed = 0;
    };

    bool MakePorts();
    bool MakePort(EPort which);
    bool ClaimFolder();
    void Serve(Milliseconds now);
    void Listen(SPort& port, Milliseconds now);
    bool Wait();
    Milliseconds Now() const;
    Core::Time TimeUntil(Milliseconds moment) const;
    bool IsAtSpeed(SPort& port, std::uint32_t baud);
    Bytes AsReadAtOtherSpeed(const SPort& port, const SUtterance& utterance);
    void TellLosses();
    void Tell(const SPort& port, const char* arrow, std::string_view text) const;

    SOptions m_options;
    CFaults m_faults;
    CReceiver m_receiver;
    CRandom m_noise;
    std::vector<std::unique_ptr<SPort>> m_ports;
    int m_folder = -1;
    bool m_isFolderOurs = false; ///< made by this run
    sigset_t m_usualSignals{};
    Core::MonotonicTime m_begin;
    Core::MonotonicTime m_nextTelling;
};

} // namespace Sim
