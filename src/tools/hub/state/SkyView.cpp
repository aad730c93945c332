#include "hub/state/SkyView.h"

#include "platform/Text.h"

#include <algorithm>
#include <charconv>

namespace Hub {

namespace {

constexpr std::size_t kViewHead = 3; ///< fields before the satellites: parts, part, count
constexpr std::size_t kSatelliteFields = 4;
constexpr std::size_t kMostParts = 9;
constexpr std::size_t kUsePRNs = 12; ///< GSA has room for so many

std::optional<std::int32_t> Number(std::string_view field, std::int32_t lowest,
                                   std::int32_t highest) {
    std::int32_t value = 0;
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), value);
    if (field.empty() || error != std::errc() || end != field.data() + field.size() ||
        value < lowest || value > highest) {
        return std::nullopt;
    }
    return value;
}

std::optional<double> Dilution(std::string_view field) {
    double value = 0.0;
    if (!Core::Utilities::ParseDouble(field, value) || value < 0.0) {
        return std::nullopt;
    }
    return value;
}

int DigitOf(char c) {
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'A' && c <= 'F' ? c - 'A' + 10
           : c >= 'a' && c <= 'f' ? c - 'a' + 10
                                  : -1;
}

} // namespace

bool IsSentence(std::string_view sentence) {
    const std::size_t star = sentence.rfind('*');
    if (sentence.size() < 4 || sentence[0] != '$' || star == std::string_view::npos ||
        star + 3 != sentence.size()) {
        return false;
    }
    unsigned sum = 0;
    for (const char c : sentence.substr(1, star - 1)) {
        sum ^= static_cast<unsigned char>(c);
    }
    const int high = DigitOf(sentence[star + 1]);
    const int low = DigitOf(sentence[star + 2]);
    return high >= 0 && low >= 0 && sum == static_cast<unsigned>(high * 16 + low);
}

std::vector<std::string_view> FieldsOf(std::string_view sentence) {
    std::vector<std::string_view> fields =
        Core::Utilities::Split(sentence.substr(0, sentence.rfind('*')), ',');
    fields.erase(fields.begin());
    return fields;
}

void CSkyView::Add(const SSentence& sentence) {
    if (!IsSentence(sentence.sentence)) {
        return;
    }
    if (sentence.id == "GPGSV") {
        AddView(sentence);
    } else if (sentence.id == "GPGSA") {
        AddUse(sentence);
    }
}

/// A part that is not the next one ends the view: the satellites that are missing would look gone.
void CSkyView::AddView(const SSentence& sentence) {
    const std::vector<std::string_view> fields = FieldsOf(sentence.sentence);
    if (fields.size() < kViewHead) {
        return;
    }
    const auto parts = Number(fields[0], 1, kMostParts);
    const auto part = Number(fields[1], 1, kMostParts);
    if (!parts || !part || *part > *parts) {
        return;
    }
    if (*part == 1) {
        m_parts.clear();
        m_partCount = *parts;
        m_nextPart = 1;
    }
    if (*part != m_nextPart || *parts != m_partCount) {
        m_nextPart = 0; // nothing fits until a first part comes
        return;
    }
    for (std::size_t i = kViewHead; i + kSatelliteFields <= fields.size(); i += kSatelliteFields) {
        if (const auto prn = Number(fields[i], 1, 999)) {
            m_parts.push_back({*prn, Number(fields[i + 1], 0, 90), Number(fields[i + 2], 0, 359),
                               Number(fields[i + 3], 0, 99), false});
        }
    }
    ++m_nextPart;
    if (*part == *parts) {
        m_satellites = m_parts;
        std::sort(m_satellites.begin(), m_satellites.end(),
                  [](const SSatellite& a, const SSatellite& b) { return a.prn < b.prn; });
        m_time = sentence.time;
        m_nextPart = 0;
        MarkUsed();
    }
}

void CSkyView::AddUse(const SSentence& sentence) {
    const std::vector<std::string_view> fields = FieldsOf(sentence.sentence);
    constexpr std::size_t kDilutions = 2 + kUsePRNs;
    if (fields.size() < kDilutions + 3) {
        return;
    }
    SUse use;
    use.time = sentence.time;
    use.mode = Number(fields[1], 1, 3).value_or(1);
    for (std::size_t i = 2; i < kDilutions; ++i) {
        if (const auto prn = Number(fields[i], 1, 999)) {
            use.prns.insert(*prn);
        }
    }
    use.pdop = Dilution(fields[kDilutions]);
    use.hdop = Dilution(fields[kDilutions + 1]);
    use.vdop = Dilution(fields[kDilutions + 2]);
    m_use = use;
    MarkUsed();
}

void CSkyView::MarkUsed() {
    for (SSatellite& satellite : m_satellites) {
        satellite.isUsed = m_use && m_use->prns.contains(satellite.prn);
    }
}

} // namespace Hub
