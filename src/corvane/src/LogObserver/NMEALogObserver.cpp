#include "LogObserver/NMEALogObserver.h"

#include "LogObserver/ReceiverStatusObserver.h"
#include "Logs/LogCast.h"
#include "Logs/NMEARecord.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace {

using namespace std::string_view_literals;

/// Of each the service wants the whole epoch: the time of week is cut to full seconds.
constexpr std::array kWholeSecondSentences = {"GPGSV"sv, "GPGST"sv, "GPZDA"sv, "GPGSA"sv};
constexpr std::array kAcceptedSentences = {"GPGSA"sv, "GPGSV"sv, "GPZDA"sv, "GPGST"sv};

bool Contains(const auto& sentences, std::string_view identifier) {
    return std::ranges::find(sentences, identifier) != sentences.end();
}

} // namespace

void CNMEALogObserver::NewRecord(CGPSRecord* record) {
    if (record == nullptr) {
        return;
    }
    const auto* const nmea = CLogCast(*record).As<CNMEARecord>();
    if (nmea == nullptr) {
        return;
    }
    const std::string sentence(nmea->GetSentence().begin(), nmea->GetSentence().end());
    constexpr std::size_t kIdentifierLength = 5;
    if (sentence.size() < 1 + kIdentifierLength) {
        return;
    }
    const std::string identifier = sentence.substr(1, kIdentifierLength);
    if (!Contains(kAcceptedSentences, identifier)) {
        return;
    }
    auto time =
        static_cast<unsigned long>(std::llround(m_receiverStatus.LastTimeSeconds() * 1000.0));
    if (Contains(kWholeSecondSentences, identifier)) {
        time = time / 1000 * 1000;
    }
    m_nmeaHandler.SetNMEAString(identifier, time, sentence);
}
