#include "Ports.h"

#include "Words.h"

#include <algorithm>

namespace Sim {

namespace {

constexpr std::array<SPortFacts, kPorts.size()> kFacts = {{
    {"COM1", 1, 32, true, 921600},
    {"COM2", 2, 64, true, 921600},
    {"COM3", 3, 96, true, 230400},
    {"USB1", 13, 1440, false, 921600},
    {"USB2", 14, 1696, false, 921600},
    {"USB3", 15, 1952, false, 921600},
}};

constexpr std::int64_t kThisPort[] = {6, 192}; ///< all its virtual ports, its own address
constexpr std::int64_t kAllPorts = 8;

} // namespace

const SPortFacts& FactsOf(EPort port) {
    return kFacts[IndexOf(port)];
}

std::optional<EPort> PortNamed(std::string_view name) {
    const auto* const port = std::find_if(kPorts.begin(), kPorts.end(), [&](EPort each) {
        return IsSameWord(FactsOf(each).name, name);
    });
    return port == kPorts.end() ? std::nullopt : std::optional(*port);
}

std::vector<EPort> PortsMeant(std::string_view word, EPort thisPort) {
    const std::optional<std::int64_t> number = WholeNumber(word);
    if (IsSameWord(word, "THISPORT") || number == kThisPort[0] || number == kThisPort[1]) {
        return {thisPort};
    }
    if (IsSameWord(word, "ALL_PORTS") || number == kAllPorts) {
        return {kPorts.begin(), kPorts.end()};
    }
    for (const EPort port : kPorts) {
        const SPortFacts& facts = FactsOf(port);
        if (IsSameWord(word, facts.name) || number == facts.number || number == facts.address) {
            return {port};
        }
    }
    return {};
}

} // namespace Sim
