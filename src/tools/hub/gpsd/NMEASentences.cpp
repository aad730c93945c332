#include "hub/gpsd/NMEASentences.h"

#include "hub/state/Satellites.h"

#include "hub/gpsd/UTC.h"

#include <charconv>
#include <cmath>
#include <cstdarg>
#include <cstdio>

namespace Hub::GPSD {

namespace {

constexpr double kKnot = 1852.0 / 3600.0; ///< metres per second
constexpr double kKilometrePerHour = 1.0 / 3.6;

std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));

std::string Format(const char* format, ...) {
    std::array<char, 64> text{};
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    return text.data();
}

/// Never by the locale; empty when it is not known, or larger than anything that is measured here.
std::string Fixed(std::optional<double> value, int decimals) {
    std::array<char, 32> text{};
    if (!value || !std::isfinite(*value)) {
        return {};
    }
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), *value,
                                            std::chars_format::fixed, decimals);
    return error == std::errc() ? std::string(text.data(), end) : std::string();
}

/// Degrees, minutes with seven decimals (0.2 mm), hemisphere. Rounded as one number, so that
/// minutes never read 60.
std::string Angle(std::optional<double> degrees, int degreeDigits, const char* hemispheres) {
    if (!degrees || !(std::fabs(*degrees) <= 360.0)) {
        return ",";
    }
    constexpr std::int64_t kMinute = 10'000'000;
    const std::int64_t parts = std::llround(std::fabs(*degrees) * 60.0 * kMinute);
    const std::int64_t minutes = parts / kMinute;
    const bool isNegative = *degrees < 0.0 && parts > 0;
    return Format("%0*d%02d.%07d,%c", degreeDigits, static_cast<int>(minutes / 60),
                  static_cast<int>(minutes % 60), static_cast<int>(parts % kMinute),
                  hemispheres[isNegative ? 1 : 0]);
}

std::string Place(const SFix& fix) {
    const auto& navigation = fix.navigation;
    return Angle(navigation ? std::optional(navigation->latitude) : std::nullopt, 2, "NS") + "," +
           Angle(navigation ? std::optional(navigation->longitude) : std::nullopt, 3, "EW");
}

std::optional<SUTC> UTCOf(const SFix& fix) {
    return fix.navigation ? ToUTC(fix.navigation->utc, 100) : std::nullopt;
}

std::string Clock(const std::optional<SUTC>& utc) {
    return utc ? Format("%02d%02d%02d.%02d", utc->hour, utc->minute, utc->second, utc->fraction)
               : std::string();
}

std::string Date(const std::optional<SUTC>& utc) {
    return utc ? Format("%02u%02u%02d", utc->day, utc->month, utc->year % 100) : std::string();
}

/// From 0.00 to 359.99.
std::string Course(const SFix& fix) {
    if (!fix.navigation || !fix.navigation->course) {
        return {};
    }
    const std::string text = Fixed(fix.navigation->course, 2);
    return text == "360.00" ? "0.00" : text;
}

std::string Speed(const SFix& fix, double unit) {
    return fix.navigation ? Fixed(fix.navigation->speed / unit, 3) : std::string();
}

/// A positioning system's mode, of RMC and VTG.
char ModeOf(const SFix& fix) {
    constexpr std::string_view kModes = "NAD?RF"; // by GGA's quality indicator
    return kModes[static_cast<std::size_t>(fix.navigation ? FixIndicator(fix.solution) : 0)];
}

/// With what stands before and behind the text.
std::string Sentence(const std::string& text) {
    unsigned checksum = 0;
    for (const char c : text) {
        checksum ^= static_cast<unsigned char>(c);
    }
    return "$" + text + Format("*%02X", checksum);
}

} // namespace

std::string CNMEASentences::GGA(const SFix& fix) {
    const int quality = fix.navigation ? FixIndicator(fix.solution) : 0;
    std::string text = "GPGGA," + Clock(UTCOf(fix)) + "," + Place(fix) + Format(",%d,", quality);
    if (!fix.navigation) {
        return Sentence(text + "00,,,M,,M,,");
    }
    text += Format("%02d,", std::min(SatellitesUsed(fix.solution), 99)) + Fixed(fix.hdop, 1) + ",";
    text += Fixed(fix.navigation->heightAboveGeoid, 3) + ",M," + Fixed(fix.geoid, 3) + ",M,";
    text += quality >= 2 ? Fixed(fix.solution.data.differentialAge, 1) : std::string();
    return Sentence(text + ",");
}

std::string CNMEASentences::RMC(const SFix& fix) {
    const std::optional<SUTC> utc = UTCOf(fix);
    // Its last field, the navigational status, is "not valid" for equipment that does not tell one.
    return Sentence("GPRMC," + Clock(utc) + (fix.navigation ? ",A," : ",V,") + Place(fix) + "," +
                    Speed(fix, kKnot) + "," + Course(fix) + "," + Date(utc) + ",,," + ModeOf(fix) +
                    ",V");
}

std::string CNMEASentences::VTG(const SFix& fix) {
    return Sentence("GPVTG," + Course(fix) + ",T,,M," + Speed(fix, kKnot) + ",N," +
                    Speed(fix, kKilometrePerHour) + ",K," + ModeOf(fix));
}

void CNMEASentences::Received(const SSentence& sentence) {
    for (std::size_t i = 0; i < kKinds.size(); ++i) {
        if (sentence.id.ends_with(kKinds[i].name)) {
            m_receivedUntil[i] = Core::MonotonicTime::Now() + kReceiversOwn;
        }
    }
}

std::string CNMEASentences::Make(const SFix& fix) const {
    std::string sentences;
    for (std::size_t i = 0; i < kKinds.size(); ++i) {
        if (m_receivedUntil[i].HasExpired()) {
            sentences += kKinds[i].make(fix) + "\r\n";
        }
    }
    return sentences;
}

} // namespace Hub::GPSD
