// The daemon as commands see it: they call its methods, and what goes wrong has been told.
#pragma once

#include "Output.h"
#include "platform/BAtom.h"
#include "platform/MPISocketClient.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Ctl {

struct SDaemonOptions {
    std::string host = "127.0.0.1"; ///< a name or an address
    std::uint16_t port = 5314;
    double timeout = 15.0; ///< seconds, of connecting and of each call
};

/// Connects with the first call. Each operation that gives nothing has failed and has told the
/// output why.
class CDaemon {
public:
    /// Both outlive it; the options are read when they are needed.
    CDaemon(const SDaemonOptions& options, COutput& output)
        : m_options(options), m_output(output) {}

    /// Whatever the daemon answers.
    std::optional<BAtomC> Call(const std::string& method, const BListC& arguments = {});
    /// An answer of at least so many values. None at all, which is what the daemon answers to what
    /// it does not do, is a failure.
    std::optional<BListC> CallForList(const std::string& method, const BListC& arguments = {},
                                      std::size_t count = 0);
    /// An answer that begins with a value of the kind.
    std::optional<std::int32_t> CallForInteger(const std::string& method,
                                               const BListC& arguments = {});
    std::optional<std::string> CallForText(const std::string& method, const BListC& arguments = {});
    /// An answer that says that it is done.
    bool CallForSuccess(const std::string& method, const BListC& arguments = {});

    /// What the daemon calls of itself, waited for at most so long; false when the connection has
    /// ended. `callback` gets none when none came.
    bool NextCallback(Core::Time timeout, std::optional<MPISocketClientC::SCallback>& callback);

    /// What answered nonsense is not the daemon: to be told with what was wrong about it.
    void FailForNonsense(const std::string& method, const std::string& what);

    /// Whether it runs on this machine, so that both see the same files. No host at all is told.
    std::optional<bool> IsLocal();
    std::string Address() const;

private:
    bool Resolve();
    bool Connect();
    void FailToConnect(const std::string& error);
    void FailToAnswer(const std::string& method, const std::string& error, Core::Time waited);
    bool IsLocalAddress() const;

    const SDaemonOptions& m_options;
    COutput& m_output;
    std::vector<std::string> m_addresses; ///< in numbers
    MPISocketClientC m_client;
    bool m_hasToldOfWaiting = false;
};

} // namespace Ctl
