// What LOG and UNLOG ask for.
#pragma once

#include "LogCatalog.h"
#include "Ports.h"
#include "Response.h"

#include <string>
#include <variant>
#include <vector>

namespace Sim {

/// The receiver's own numbers.
enum class ETrigger : std::uint32_t { onNew, onChanged, onTime, onNext, once, onMark };

std::string_view TriggerName(ETrigger trigger);

struct SLogRequest {
    EPort port = EPort::com1;
    SNamedLog what{};
    ETrigger trigger = ETrigger::once;
    Milliseconds period = 0;
    Milliseconds offset = 0;
    bool isHeld = false;

    /// The same log on the same port: one replaces the other.
    bool IsSameLog(const SLogRequest& other) const {
        return port == other.port && what.log == other.what.log && what.format == other.what.format;
    }
};

/// One request for each port that is meant; or why the command is refused. `words` are those behind
/// LOG: [port] message [trigger [period [offset [hold]]]].
std::variant<std::vector<SLogRequest>, SResponse>
UnderstandLog(const std::vector<std::string>& words, EPort thisPort);

/// The same for UNLOG: [port] message.
std::variant<std::vector<SLogRequest>, SResponse>
UnderstandUnlog(const std::vector<std::string>& words, EPort thisPort);

} // namespace Sim
