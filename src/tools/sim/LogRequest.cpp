#include "LogRequest.h"

#include "Words.h"

#include <algorithm>
#include <array>

namespace Sim {

namespace {

using Outcome = std::variant<std::vector<SLogRequest>, SResponse>;
using Words = std::vector<std::string>;

constexpr std::array<std::string_view, 6> kTriggers = {"ONNEW",  "ONCHANGED", "ONTIME",
                                                       "ONNEXT", "ONCE",      "ONMARK"};
constexpr std::array<Milliseconds, 5> kFractions = {50, 100, 200, 250, 500};
constexpr Milliseconds kSecond = 1000;
constexpr std::size_t kMostDetails = 4; ///< trigger, period, offset, hold

std::optional<ETrigger> TriggerOf(std::string_view word) {
    for (std::size_t number = 0; number < kTriggers.size(); ++number) {
        if (IsSameWord(word, kTriggers[number]) ||
            WholeNumber(word) == static_cast<std::int64_t>(number)) {
            return static_cast<ETrigger>(number);
        }
    }
    return std::nullopt;
}

/// Whether the receiver computes logs so often.
bool IsRate(Milliseconds period) {
    return std::find(kFractions.begin(), kFractions.end(), period) != kFractions.end() ||
           (period > 0 && period % kSecond == 0);
}

bool Suits(ETrigger trigger, ELogKind kind) {
    switch (trigger) {
    case ETrigger::onChanged:
        return kind == ELogKind::asynchronous;
    case ETrigger::onNew:
    case ETrigger::onNext:
    case ETrigger::onMark:
        return kind != ELogKind::polled;
    case ETrigger::onTime:
    case ETrigger::once:
        return true;
    }
    return false;
}

/// Takes the words behind the message one after the other; each knows its field's number.
class CDetails {
public:
    CDetails(const Words& words, std::size_t first) : m_words(words), m_next(first) {}

    SResponse Take(SLogRequest& request) {
        if (m_words.size() > m_next + kMostDetails) {
            return Invalid(m_next + kMostDetails);
        }
        SResponse response = TakeTrigger(request);
        if (response.IsOK()) {
            response = TakeTime(request.period);
        }
        if (response.IsOK()) {
            response = TakeTime(request.offset);
        }
        if (response.IsOK()) {
            response = TakeHold(request);
        }
        if (response.IsOK() && request.trigger == ETrigger::onTime && !IsRate(request.period)) {
            return {EResponse::rateInvalid};
        }
        return response;
    }

private:
    static SResponse Invalid(std::size_t index) {
        return {EResponse::invalidField, static_cast<std::int64_t>(index) + 1};
    }

    SResponse TakeTrigger(SLogRequest& request) {
        if (m_next < m_words.size()) {
            const std::optional<ETrigger> trigger = TriggerOf(m_words[m_next]);
            if (!trigger) {
                return Invalid(m_next);
            }
            request.trigger = *trigger;
            ++m_next;
        }
        if (!Suits(request.trigger, request.what.log->kind)) {
            return {EResponse::triggerInvalid, static_cast<std::int64_t>(request.trigger)};
        }
        return {};
    }

    /// A time that falls between milliseconds is no rate either.
    SResponse TakeTime(Milliseconds& time) {
        if (m_next < m_words.size()) {
            const std::optional<Milliseconds> given = WholeMilliseconds(m_words[m_next]);
            if (!given || *given < 0) {
                return {EResponse::rateInvalid};
            }
            time = *given;
            ++m_next;
        }
        return {};
    }

    SResponse TakeHold(SLogRequest& request) {
        if (m_next < m_words.size()) {
            const std::string_view word = m_words[m_next];
            request.isHeld = IsSameWord(word, "HOLD") || word == "1";
            if (!request.isHeld && !IsSameWord(word, "NOHOLD") && word != "0") {
                return Invalid(m_next);
            }
        }
        return {};
    }

    const Words& m_words;
    std::size_t m_next;
};

/// The ports and the log, and with `hasDetails` what follows them.
Outcome UnderstandWords(const Words& words, EPort thisPort, bool hasDetails) {
    std::size_t next = 0;
    std::vector<EPort> ports = {thisPort};
    if (!words.empty() && !PortsMeant(words.front(), thisPort).empty()) {
        ports = PortsMeant(words.front(), thisPort);
        ++next;
    }
    if (next == words.size()) {
        return SResponse{EResponse::missingField};
    }
    const std::optional<SNamedLog> what = FindLog(words[next]);
    if (!what) {
        return SResponse{EResponse::noSuchLog};
    }
    ++next;
    SLogRequest request{.what = *what};
    SResponse response;
    if (hasDetails) {
        response = CDetails(words, next).Take(request);
    } else if (next < words.size()) {
        response = {EResponse::invalidField, static_cast<std::int64_t>(next) + 1};
    }
    if (!response.IsOK()) {
        return response;
    }
    std::vector<SLogRequest> requests;
    for (const EPort port : ports) {
        request.port = port;
        requests.push_back(request);
    }
    return requests;
}

} // namespace

std::string_view TriggerName(ETrigger trigger) {
    return kTriggers[static_cast<std::size_t>(trigger)];
}

Outcome UnderstandLog(const Words& words, EPort thisPort) {
    return UnderstandWords(words, thisPort, true);
}

Outcome UnderstandUnlog(const Words& words, EPort thisPort) {
    return UnderstandWords(words, thisPort, false);
}

} // namespace Sim
