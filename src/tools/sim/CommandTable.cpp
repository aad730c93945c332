#include "CommandTable.h"

#include "Words.h"

#include <algorithm>

namespace Sim {

namespace {

// clang-format off
constexpr SChoice kSwitch[] = {{"DISABLE", 0}, {"ENABLE", 1}};
constexpr SChoice kOffOn[] = {{"OFF", 0}, {"ON", 1}};
constexpr SChoice kFalseTrue[] = {{"FALSE", 0}, {"TRUE", 1}};
constexpr SChoice kParity[] = {{"N", 0}, {"E", 1}, {"O", 2}};
constexpr SChoice kHandshake[] = {{"N", 0}, {"XON", 1}, {"CTS", 2}};
// 6 is reserved in the published list: this receiver's private mode.
constexpr SChoice kModes[] = {
    {"NONE", 0}, {"NOVATEL", 1}, {"RTCM", 2}, {"RTCA", 3}, {"CMR", 4}, {"OMNISTAR", 5},
    {"ZQ2", 6}, {"IMU", 7}, {"RTCMNOCR", 8}, {"CDGPS", 9}, {"TCOM1", 10}, {"TCOM2", 11},
    {"TCOM3", 12}, {"TAUX", 13}, {"RTCMV3", 14}, {"NOVATELBINARY", 15}, {"GENERIC", 18},
    {"IMARIMU", 19}, {"MRTCA", 20}};
constexpr SChoice kFactoryParts[] = {
    {"STANDARD", 0}, {"COMMAND", 1}, {"GPSALMANAC", 2}, {"GPSEPHEM", 3}, {"GLOEPHEM", 4},
    {"MODEL", 5}, {"CLKCALIBRATION", 11}, {"SBASALMANAC", 20}, {"LAST_POSITION", 21},
    {"GLOALMANAC", 31}, {"LBAND_TCXO_OFFSET", 38}};
constexpr SChoice kAssignStates[] = {{"IDLE", 0}, {"ACTIVE", 1}, {"AUTO", 2}};
constexpr SChoice kDynamics[] = {{"AIR", 0}, {"LAND", 1}, {"FOOT", 2}, {"AUTO", 3}};
constexpr SChoice kSources[] = {
    {"RTCM", 0}, {"RTCA", 1}, {"CMR", 2}, {"OMNISTAR", 3}, {"CDGPS", 4}, {"SBAS", 5},
    {"AUTO", 10}, {"NONE", 11}, {"RTCMV3", 13}, {"NOVATELX", 14}};
constexpr SChoice kMotion[] = {{"AUTO", 0}, {"STATIC", 1}, {"DYNAMIC", 2}};
constexpr SChoice kNetworks[] = {
    {"DISABLE", 0}, {"VRS", 1}, {"IMAX", 2}, {"FKP", 3}, {"MAX", 4}, {"AUTO", 10}};
constexpr SChoice kQualities[] = {{"NORMAL", 1}, {"EXTRA_SAFE", 4}};
constexpr SChoice kRTKActions[] = {{"USE_DEFAULTS", 0}, {"RESET", 1}};
constexpr SChoice kSBASSystems[] = {
    {"NONE", 0}, {"AUTO", 1}, {"ANY", 2}, {"WAAS", 3}, {"EGNOS", 4}, {"MSAS", 5}, {"GAGAN", 6}};
constexpr SChoice kNoPRN[] = {{"0", 0}};
constexpr SChoice kTestModes[] = {{"NONE", 0}, {"ZEROTOTWO", 1}, {"IGNOREZERO", 2}};
constexpr SChoice kIonosphere[] = {
    {"NONE", 0}, {"KLOBUCHAR", 1}, {"GRID", 2}, {"L1L2", 3}, {"AUTO", 4}};
constexpr SChoice kPDPActions[] = {{"DISABLE", 0}, {"ENABLE", 1}, {"RESET", 2}};
constexpr SChoice kPDPModes[] = {{"NORMAL", 0}, {"RELATIVE", 1}};

constexpr std::int64_t kLongestDelay = 86'400; // seconds
constexpr std::int64_t kSpeeds[] = {
    300, 600, 900, 1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200, 230400, 460800, 921600};
constexpr std::int64_t kLastChannel = 30; // of 14 GPS with two signals, 2 SBAS and the L band

constexpr SParameter kCom[] = {
    {.lowest = 300, .highest = 921'600, .refusal = EResponse::baudInvalid},
    {.choices = kParity, .isOptional = true},
    {.lowest = 7, .highest = 8, .isOptional = true},
    {.lowest = 1, .highest = 2, .isOptional = true},
    {.choices = kHandshake, .isOptional = true},
    {.choices = kOffOn, .isOptional = true},
    {.choices = kOffOn, .isOptional = true}};
constexpr SParameter kInterfaceMode[] = {
    {.choices = kModes}, {.choices = kModes}, {.choices = kOffOn, .isOptional = true}};
constexpr SParameter kReset[] = {{.lowest = 0, .highest = kLongestDelay, .isOptional = true}};
constexpr SParameter kFactoryReset[] = {{.choices = kFactoryParts, .isOptional = true}};
constexpr SParameter kUnlogAll[] = {{.choices = kFalseTrue, .isOptional = true}};
constexpr SParameter kAssign[] = {
    {.lowest = 0, .highest = kLastChannel, .refusal = EResponse::channelInvalid},
    {.choices = kAssignStates, .isOptional = true},
    {.lowest = 0, .highest = 138, .isOptional = true},
    {.lowest = -100'000, .highest = 100'000, .isFraction = true, .isOptional = true},
    {.lowest = 0, .highest = 10'000, .isOptional = true}};
constexpr SParameter kElevation[] = {{.lowest = -90, .highest = 90, .isFraction = true}};
constexpr SParameter kDynamicsType[] = {{.choices = kDynamics}};
constexpr SParameter kSource[] = {{.choices = kSources}, {.isText = true, .isOptional = true}};
constexpr SParameter kMotionMode[] = {{.choices = kMotion}};
constexpr SParameter kNetworkMode[] = {{.choices = kNetworks}};
constexpr SParameter kQuality[] = {{.choices = kQualities}};
constexpr SParameter kTimeout[] = {{.lowest = 5, .highest = 60}};
constexpr SParameter kRTKAction[] = {{.choices = kRTKActions}};
constexpr SParameter kSBASControl[] = {
    {.choices = kSwitch},
    {.choices = kSBASSystems, .isOptional = true},
    {.choices = kNoPRN, .lowest = 120, .highest = 138, .isOptional = true},
    {.choices = kTestModes, .isOptional = true}};
constexpr SParameter kIonosphereModel[] = {{.choices = kIonosphere}};
constexpr SParameter kPDPAction[] = {{.choices = kPDPActions}};
constexpr SParameter kPDPMode[] = {{.choices = kPDPModes}, {.choices = kMotion}};
constexpr SParameter kChannelSet[] = {{.lowest = 1, .highest = 99}};
constexpr SParameter kText[] = {{.isText = true}};

// LOG and UNLOG have a grammar of their own: LogRequest.h.
constexpr SCommandFacts kCommands[] = {
    {"LOG", {}, 1},
    {"INTERFACEMODE", kInterfaceMode, 3, true},
    {"COM", kCom, 4, true},
    {"RESET", kReset, 18},
    {"SAVECONFIG", {}, 19},
    {"FRESET", kFactoryReset, 20},
    {"ASSIGN", kAssign, 27},
    {"UNLOG", {}, 36},
    {"UNLOGALL", kUnlogAll, 38, true},
    {"ECUTOFF", kElevation, 50},
    {"RTKCOMMAND", kRTKAction, 97, false, true},
    {"RTKDYNAMICS", kMotionMode, 183, false, true},
    {"DYNAMICS", kDynamicsType, 258},
    {"PDPFILTER", kPDPAction, 424},
    {"SOFTLOADCOMMIT", {}, 475},
    {"SOFTLOADRESET", {}, 476},
    {"SOFTLOADSREC", kText, 477},
    {"PSRDIFFSOURCE", kSource, 493},
    {"RTKSOURCE", kSource, 494, false, true},
    {"SBASCONTROL", kSBASControl, 652},
    {"SETIONOTYPE", kIonosphereModel, 711},
    {"RTKQUALITYLEVEL", kQuality, 844, false, true},
    {"RTKTIMEOUT", kTimeout, 910, false, true},
    {"RTKNETWORK", kNetworkMode, 951, false, true},
    {"PDPMODE", kPDPMode, 970},
    {"SELECTCHANCONFIG", kChannelSet, 1149},
};
// clang-format on

template <class Matches>
const SCommandFacts* Find(Matches matches) {
    const auto* const command = std::find_if(std::begin(kCommands), std::end(kCommands), matches);
    return command == std::end(kCommands) ? nullptr : command;
}

const SChoice* FindChoice(const SParameter& parameter, std::string_view word) {
    const std::optional<std::int64_t> number = WholeNumber(word);
    const auto choice =
        std::find_if(parameter.choices.begin(), parameter.choices.end(), [&](const SChoice& each) {
            return IsSameWord(each.name, word) || each.number == number;
        });
    return choice == parameter.choices.end() ? nullptr : &*choice;
}

/// `field` counts from 1, as the receiver's answers do.
SResponse TakeWord(const SParameter& parameter, const std::string& word, std::int64_t field,
                   std::int64_t& value) {
    value = 0;
    if (parameter.isText) {
        return {};
    }
    if (const SChoice* choice = FindChoice(parameter, word)) {
        value = choice->number;
        return {};
    }
    const std::optional<std::int64_t> number =
        WholeNumber(parameter.isFraction ? word.substr(0, word.find('.')) : word);
    if (!number) {
        return {EResponse::invalidField, field};
    }
    if (*number < parameter.lowest || *number > parameter.highest) {
        return {parameter.refusal, field};
    }
    value = *number;
    return {};
}

bool LooksLikePort(std::string_view word) {
    const std::string capitals = Capitals(word);
    return capitals.starts_with("COM") || capitals.starts_with("USB") ||
           capitals.starts_with("XCOM") || capitals == "AUX";
}

/// Whether the first word is the port. A number may be one only where more follows than fits.
bool IsPortGiven(const SCommandFacts& command, const std::vector<std::string>& words,
                 EPort thisPort) {
    if (!command.takesPort || words.empty() || PortsMeant(words.front(), thisPort).empty()) {
        return false;
    }
    const auto required = static_cast<std::size_t>(
        std::count_if(command.parameters.begin(), command.parameters.end(),
                      [](const SParameter& parameter) { return !parameter.isOptional; }));
    const bool isNumber = WholeNumber(words.front()).has_value();
    return !isNumber || words.size() > std::max<std::size_t>(required, 1);
}

} // namespace

const SCommandFacts* FindCommand(std::string_view name) {
    return Find([&](const SCommandFacts& command) { return command.name == name; });
}

const SCommandFacts* FindCommand(std::uint16_t identifier) {
    return Find([&](const SCommandFacts& command) { return command.identifier == identifier; });
}

bool IsLineSpeed(std::int64_t baud) {
    return std::find(std::begin(kSpeeds), std::end(kSpeeds), baud) != std::end(kSpeeds);
}

SArguments Understand(const SCommandFacts& command, const std::vector<std::string>& words,
                      EPort thisPort) {
    SArguments arguments;
    arguments.isPortNamed = IsPortGiven(command, words, thisPort);
    if (!arguments.isPortNamed && command.takesPort && !words.empty() &&
        LooksLikePort(words.front())) {
        arguments.response = {EResponse::unknownPort};
        return arguments;
    }
    arguments.ports = {thisPort};
    if (arguments.isPortNamed) {
        arguments.ports = PortsMeant(words.front(), thisPort);
    }
    const std::size_t first = arguments.isPortNamed ? 1 : 0;
    for (std::size_t index = 0; first + index < words.size(); ++index) {
        const auto field = static_cast<std::int64_t>(first + index + 1);
        if (index == command.parameters.size()) {
            arguments.response = {EResponse::invalidField, field};
            return arguments;
        }
        const std::string& word = words[first + index];
        arguments.texts.push_back(word);
        arguments.response =
            TakeWord(command.parameters[index], word, field, arguments.values.emplace_back());
        if (!arguments.response.IsOK()) {
            return arguments;
        }
    }
    const std::size_t given = arguments.values.size();
    if (given < command.parameters.size() && !command.parameters[given].isOptional) {
        arguments.response = {EResponse::missingField};
    }
    return arguments;
}

} // namespace Sim
