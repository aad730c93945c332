#include "Simulation.h"

#include "platform/EndSignals.h"
#include "platform/Text.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <sys/file.h>
#include <unistd.h>

namespace Sim {

namespace {

constexpr std::uint64_t kNoiseSeed = 0x11E501CE;
/// How often a device that nobody has open is looked at: it cannot be waited for.
constexpr Core::Time kLookPeriod = Core::Time::FromMilliseconds(20);
constexpr Core::Time kLongestSleep = Core::Time::FromMilliseconds(60'000);
constexpr Core::Time kTellingPeriod = Core::Time::FromMilliseconds(1000);
/// Of real time. What is later than this is not made up for: the machine has been asleep.
constexpr double kLongestLag = 2.0;
constexpr std::size_t kMostNoise = 4096;

timespec AsTimespec(Core::Time span) {
    constexpr std::int64_t kSecond = 1'000'000'000;
    timespec time{};
    time.tv_sec = static_cast<std::time_t>(span.AsNanoseconds() / kSecond);
    time.tv_nsec = static_cast<decltype(time.tv_nsec)>(span.AsNanoseconds() % kSecond);
    return time;
}

bool Fail(const std::string& what, const std::string& reason) {
    std::fprintf(stderr, "corvane-sim: %s: %s\n", what.c_str(), reason.c_str());
    return false;
}

/// What nobody could have typed shows as a dot.
std::string Readable(std::string_view text) {
    std::string line(text);
    std::replace_if(
        line.begin(), line.end(), [](char byte) { return byte < ' ' || byte > '~'; }, '.');
    return line;
}

std::string LinkName(EPort port) {
    std::string name(FactsOf(port).name);
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char letter) { return static_cast<char>(std::tolower(letter)); });
    return name;
}

} // namespace

CSimulation::CSimulation(const SOptions& options)
    : m_options(options),
      m_faults(options.faults, options.receiver.seed, options.receiver.start, *this),
      m_receiver(options.receiver, m_faults),
      m_noise(options.receiver.seed ^ kNoiseSeed) {
}

CSimulation::~CSimulation() {
    m_ports.clear();
    if (m_isFolderOurs) {
        ::rmdir(m_options.folder.c_str());
    }
    if (m_folder >= 0) {
        ::close(m_folder);
    }
}

/// Two simulators would take each other's names away.
bool CSimulation::ClaimFolder() {
    std::error_code error;
    m_isFolderOurs = std::filesystem::create_directories(m_options.folder, error);
    m_folder = ::open(m_options.folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (m_folder < 0) {
        return Fail(m_options.folder, error ? error.message() : std::strerror(errno));
    }
    if (::flock(m_folder, LOCK_EX | LOCK_NB) != 0) {
        return Fail(m_options.folder, errno == EWOULDBLOCK ? "another simulator is at work there"
                                                           : std::strerror(errno));
    }
    return true;
}

bool CSimulation::MakePorts() {
    if (!ClaimFolder()) {
        return false;
    }
    for (const EPort port : m_options.ports) {
        if (!MakePort(port)) {
            return false;
        }
    }
    std::fflush(stdout);
    return true;
}

bool CSimulation::MakePort(EPort which) {
    SPort& port = *m_ports.emplace_back(std::make_unique<SPort>(which));
    if (!m_options.captureFolder.empty()) {
        const std::string file = m_options.captureFolder + "/" + LinkName(which);
        const std::string reason = port.capture.Open(file);
        if (!reason.empty()) {
            return Fail(file, reason);
        }
    }
    const std::string link = m_options.folder + "/" + LinkName(which);
    const std::string reason = port.link.Open(link, m_receiver.Baud(which));
    if (!reason.empty()) {
        return Fail(link, reason);
    }
    if (m_options.verbosity > 0) {
        std::printf("%s\n", link.c_str());
    }
    return true;
}

int CSimulation::Run(const std::vector<std::string>& commands) {
    m_usualSignals = Core::Utilities::CatchEndSignals();
    if (!MakePorts()) {
        return 1;
    }
    m_begin = Core::MonotonicTime::Now();
    const Milliseconds start = SinceGPSEpoch(m_options.receiver.start);
    for (const std::string& command : commands) {
        m_receiver.Hear(EPort::com1, command + "\r\n", start);
    }
    const Milliseconds end = m_options.duration ? start + *m_options.duration : kNever;
    while (!Core::Utilities::IsAskedToEnd() && Now() < end) {
        Serve(std::min(Now(), end));
        if (!Wait()) {
            return 1;
        }
    }
    return 0;
}

Milliseconds CSimulation::Now() const {
    const double seconds = (Core::MonotonicTime::Now() - m_begin).AsSeconds();
    return SinceGPSEpoch(m_options.receiver.start) +
           static_cast<Milliseconds>(seconds * m_options.speed * 1000.0);
}

/// In real time, and never too short.
Core::Time CSimulation::TimeUntil(Milliseconds moment) const {
    if (moment == kNever) {
        return kLongestSleep;
    }
    const auto sinceStart = static_cast<double>(moment - SinceGPSEpoch(m_options.receiver.start));
    const Core::Time span = Core::Time::FromSeconds(sinceStart / 1000.0 / m_options.speed) +
                            Core::Time::FromNanoseconds(1000);
    const Core::Time left = span - (Core::MonotonicTime::Now() - m_begin);
    return left.IsNegative() ? Core::Time() : std::min(left, kLongestSleep);
}

void CSimulation::Serve(Milliseconds now) {
    const auto lag = static_cast<double>(now - std::min(now, m_receiver.NextEvent()));
    if (lag / 1000.0 / m_options.speed > kLongestLag) {
        m_receiver.SkipTo(now);
    }
    m_receiver.Advance(now);
    for (const std::unique_ptr<SPort>& port : m_ports) {
        port->link.LookForPeer();
        port->link.ContinueWriting();
        Listen(*port, now);
    }
    TellLosses();
}

void CSimulation::Listen(SPort& port, Milliseconds now) {
    const std::string bytes = port.link.Read();
    if (bytes.empty()) {
        return;
    }
    const bool isUnderstood =
        IsAtSpeed(port, m_receiver.Baud(port.port)) && !m_faults.IsDeaf(port.port, now);
    Tell(port, isUnderstood ? "<" : "< (noise)", bytes);
    if (isUnderstood) {
        m_receiver.Hear(port.port, bytes, now);
    } else {
        m_receiver.HearNoise(port.port, now);
    }
}

bool CSimulation::IsAtSpeed(SPort& port, std::uint32_t baud) {
    if (!FactsOf(port.port).hasLineSpeed) {
        return true;
    }
    const std::uint32_t speed = port.link.Speed();
    if (port.toldSpeed != speed) {
        port.toldSpeed = speed;
        Tell(port, "is read at", std::to_string(speed) + " baud");
    }
    return speed == baud;
}

void CSimulation::Say(const SUtterance& utterance) {
    const auto port =
        std::find_if(m_ports.begin(), m_ports.end(), [&](const std::unique_ptr<SPort>& each) {
            return each->port == utterance.port;
        });
    if (port == m_ports.end() || !(*port)->link.LookForPeer()) {
        return;
    }
    const bool isAtSpeed = IsAtSpeed(**port, utterance.baud);
    if (!utterance.isLog) {
        Tell(**port, isAtSpeed ? ">" : "> (as noise)",
             {reinterpret_cast<const char*>(utterance.bytes.data()), utterance.bytes.size()});
    }
    const Bytes bytes = isAtSpeed ? utterance.bytes : AsReadAtOtherSpeed(**port, utterance);
    if (!(*port)->link.Write(bytes)) {
        ++(*port)->lostLogs;
    } else if (!(*port)->capture.Add(bytes)) {
        Fail(m_options.captureFolder + "/" + LinkName(utterance.port), std::strerror(errno));
    }
}

/// A faster reader sees several bytes in one, a slower one the reverse.
Bytes CSimulation::AsReadAtOtherSpeed(const SPort& port, const SUtterance& utterance) {
    const double ratio = static_cast<double>(port.link.Speed()) / utterance.baud;
    const auto count = static_cast<double>(utterance.bytes.size()) * ratio;
    return Noise(m_noise, std::clamp<std::size_t>(static_cast<std::size_t>(count), 1, kMostNoise));
}

/// Sleeps until something is to be done. False when that is impossible.
bool CSimulation::Wait() {
    std::vector<pollfd> watched;
    Core::Time timeout = TimeUntil(m_receiver.NextEvent());
    for (const std::unique_ptr<SPort>& port : m_ports) {
        if (!port->link.HasPeer()) {
            timeout = std::min(timeout, kLookPeriod);
            continue;
        }
        const int events = POLLIN | (port->link.HasUnsent() ? POLLOUT : 0);
        watched.push_back({port->link.Descriptor(), static_cast<short>(events), 0});
    }
    if (m_options.duration) {
        timeout = std::min(
            timeout, TimeUntil(SinceGPSEpoch(m_options.receiver.start) + *m_options.duration));
    }
    const timespec time = AsTimespec(timeout);
    if (::ppoll(watched.data(), watched.size(), &time, &m_usualSignals) < 0 && errno != EINTR) {
        return Fail("poll", std::strerror(errno));
    }
    return true;
}

void CSimulation::Tell(const SPort& port, const char* arrow, std::string_view text) const {
    if (m_options.verbosity < 2) {
        return;
    }
    for (const std::string_view line : Core::Utilities::Split(text, '\n')) {
        const std::string_view words = Core::Utilities::Trim(line);
        if (!words.empty()) {
            std::fprintf(stderr, "%s %s %s\n", LinkName(port.port).c_str(), arrow,
                         Readable(words).c_str());
        }
    }
}

void CSimulation::TellLosses() {
    if (!m_nextTelling.HasExpired()) {
        return;
    }
    m_nextTelling = Core::MonotonicTime::Now() + kTellingPeriod;
    for (const std::unique_ptr<SPort>& port : m_ports) {
        if (port->lostLogs != port->toldLogs) {
            port->toldLogs = port->lostLogs;
            Tell(*port, "has lost",
                 std::to_string(port->lostLogs) + " logs, for nobody reads so fast");
        }
    }
}

} // namespace Sim
