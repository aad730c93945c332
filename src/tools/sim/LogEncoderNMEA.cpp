// NMEA 0183 sentences of the best solution, with the talker GP as the receiver's factory setting
// has it.
#include "DilutionOfPrecision.h"
#include "LocalFrame.h"
#include "LogBodies.h"
#include "UTC.h"

#include "Logs/NovatelOEMV/PositionType.h"

#include "platform/Maths.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>

namespace Sim {

namespace {

using namespace Novatel::PositionType;
using Core::Maths::Degrees;

constexpr double kKnots = 3600.0 / 1852.0; ///< of a metre per second
constexpr double kKilometresPerHour = 3.6;

[[gnu::format(printf, 1, 2)]] std::string Format(const char* format, ...) {
    char text[96];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return text;
}

std::string Sentence(const std::string& text) {
    unsigned sum = 0;
    for (const char character : text) {
        sum ^= static_cast<std::uint8_t>(character);
    }
    return "$" + text + Format("*%02X\r\n", sum);
}

/// What the sentences tell of the best solution.
struct SFix {
    explicit SFix(const SState& state)
        : solution(BestSolution(state)),
          isValid(solution.status == 0 && solution.type != 0),
          utc(UTCOf(state.time)) {
        if (isValid) {
            place = Core::Maths::ToGeodetic({solution.x, solution.y, solution.z});
            dilution = DilutionOf(state.satellites);
        }
    }

    const SSolution& solution;
    bool isValid;
    SUTC utc;
    SGeodetic place;
    std::optional<SDilution> dilution;
};

std::string Clock(const SUTC& utc) {
    return Format("%02u%02u%02u.%02u", unsigned{utc.hour}, unsigned{utc.minute},
                  utc.milliseconds / 1000, utc.milliseconds % 1000 / 10);
}

/// Degrees and minutes; counted in the last digit, so that minutes never round up to 60.
std::string Angle(double radians, int width, char positive, char negative) {
    constexpr long long kPerMinute = 10'000;
    constexpr long long kPerDegree = 60 * kPerMinute;
    const long long count = std::llround(std::abs(Degrees(radians)) * kPerDegree);
    const long long minutes = count % kPerDegree;
    return Format("%0*lld%02lld.%04lld,%c", width, count / kPerDegree, minutes / kPerMinute,
                  minutes % kPerMinute, radians < 0.0 ? negative : positive);
}

std::string LatitudeAndLongitude(const SFix& fix) {
    return fix.isValid ? Angle(fix.place.latitude, 2, 'N', 'S') + "," +
                             Angle(fix.place.longitude, 3, 'E', 'W')
                       : ",,,";
}

unsigned Quality(const SFix& fix) {
    if (!fix.isValid) {
        return 0;
    }
    switch (fix.solution.type) {
    case kPseudorangeDifferential:
    case kSBAS:
        return 2;
    case kNarrowInteger:
        return 4;
    case kNarrowFloat:
        return 5;
    case kPropagated:
        return 6;
    default:
        return 1;
    }
}

char Mode(const SFix& fix) {
    static constexpr char kModes[] = {'N', 'A', 'D', 'P', 'R', 'F', 'E'};
    return kModes[Quality(fix)];
}

SVector LocalVelocity(const SFix& fix) {
    const SSolution& solution = fix.solution;
    return CLocalFrame(fix.place).ToLocalDirection(
        {solution.velocityX, solution.velocityY, solution.velocityZ});
}

/// Metres per second.
double Speed(const SFix& fix) {
    const SVector velocity = LocalVelocity(fix);
    return std::hypot(velocity.x, velocity.y);
}

/// Degrees with three decimals; what would round up to 360 is 0.
double Course(const SFix& fix) {
    const SVector velocity = LocalVelocity(fix);
    const double angle = Degrees(std::atan2(velocity.x, velocity.y));
    return std::fmod(std::round((angle + 360.0) * 1000.0) / 1000.0, 360.0);
}

std::string GPGGA(const SState& state) {
    const SFix fix(state);
    std::string text = "GPGGA," + Clock(fix.utc) + "," + LatitudeAndLongitude(fix);
    text += Format(",%u,%02u,", Quality(fix), unsigned{fix.solution.satellitesUsed});
    if (!fix.isValid) {
        return Sentence(text + ",,M,,M,,");
    }
    const double undulation = double{state.undulation};
    text += fix.dilution ? Format("%.1f", fix.dilution->horizontal) : "";
    text += Format(",%.2f,M,%.2f,M,", fix.place.height - undulation, undulation);
    if (fix.solution.differentialAge > 0.0F) {
        text += Format("%02.0f,%s", double{fix.solution.differentialAge}, kStationID.data());
    } else {
        text += ",";
    }
    return Sentence(text);
}

std::string GPRMC(const SState& state) {
    const SFix fix(state);
    std::string text = "GPRMC," + Clock(fix.utc) + (fix.isValid ? ",A," : ",V,");
    text += LatitudeAndLongitude(fix);
    text += fix.isValid ? Format(",%.3f,%.3f", Speed(fix) * kKnots, Course(fix)) : ",,";
    text += Format(",%02u%02u%02u,,,%c", unsigned{fix.utc.day}, unsigned{fix.utc.month},
                   fix.utc.year % 100, Mode(fix));
    return Sentence(text);
}

std::string GPVTG(const SState& state) {
    const SFix fix(state);
    if (!fix.isValid) {
        return Sentence("GPVTG,,T,,M,,N,,K,N");
    }
    const double speed = Speed(fix);
    return Sentence(Format("GPVTG,%.3f,T,,M,%.3f,N,%.3f,K,%c", Course(fix), speed * kKnots,
                           speed * kKilometresPerHour, Mode(fix)));
}

/// NMEA's numbers: GPS 1 to 32, SBAS 33 to 64, GLONASS 65 to 96.
unsigned NumberOf(const SSatellite& satellite) {
    switch (satellite.system) {
    case ESystem::gps:
        return satellite.prn;
    case ESystem::glonass:
        return satellite.prn + 27U;
    case ESystem::sbas:
        return satellite.prn - 87U;
    }
    return 0;
}

std::string GPGSV(const SState& state) {
    constexpr std::size_t kPerSentence = 4;
    const std::vector<SSatellite>& satellites = state.satellites;
    const std::size_t sentences =
        std::max<std::size_t>(1, (satellites.size() + kPerSentence - 1) / kPerSentence);
    std::string lines;
    for (std::size_t sentence = 0; sentence < sentences; ++sentence) {
        std::string text =
            Format("GPGSV,%zu,%zu,%02zu", sentences, sentence + 1, satellites.size());
        const std::size_t end = std::min(satellites.size(), (sentence + 1) * kPerSentence);
        for (std::size_t i = sentence * kPerSentence; i < end; ++i) {
            const SSatellite& satellite = satellites[i];
            text += Format(",%02u,%02.0f,%03ld,", NumberOf(satellite), satellite.elevation,
                           std::lround(satellite.azimuth) % 360);
            text += satellite.cn0L1 > 0.0F ? Format("%02.0f", double{satellite.cn0L1}) : "";
        }
        lines += Sentence(text);
    }
    return lines;
}

std::string GPGSA(const SState& state) {
    constexpr std::size_t kPlaces = 12;
    const SFix fix(state);
    std::string text = fix.isValid ? "GPGSA,A,3" : "GPGSA,A,1";
    std::size_t place = 0;
    for (const SSatellite& satellite : state.satellites) {
        if (fix.isValid && satellite.isUsed && place < kPlaces) {
            text += Format(",%02u", NumberOf(satellite));
            ++place;
        }
    }
    text.append(kPlaces - place, ',');
    text += fix.dilution ? Format(",%.1f,%.1f,%.1f", fix.dilution->position,
                                  fix.dilution->horizontal, fix.dilution->vertical)
                         : ",,,";
    return Sentence(text);
}

/// The error ellipse of a position whose errors along the Earth's axes are independent.
struct SErrorEllipse {
    double major = 0.0;
    double minor = 0.0;
    double orientation = 0.0; ///< of the major axis, degrees from north
    SVector deviations;       ///< east, north, up
};

SErrorEllipse ErrorEllipse(const SFix& fix) {
    const double x = double{fix.solution.deviationX};
    const double y = double{fix.solution.deviationY};
    const double z = double{fix.solution.deviationZ};
    const SVector variances = {x * x, y * y, z * z};
    const CLocalFrame frame(fix.place);
    const SVector local = frame.ToLocalVariances(variances);
    const SVector& east = frame.East();
    const SVector& north = frame.North();
    const double covariance = east.x * north.x * variances.x + east.y * north.y * variances.y +
                              east.z * north.z * variances.z;
    const double mean = (local.x + local.y) / 2.0;
    const double spread = std::hypot((local.x - local.y) / 2.0, covariance);
    const double angle = Degrees(std::atan2(2.0 * covariance, local.y - local.x)) / 2.0;
    return {.major = std::sqrt(mean + spread),
            .minor = std::sqrt(std::max(0.0, mean - spread)),
            .orientation = angle < 0.0 ? angle + 180.0 : angle,
            .deviations = {std::sqrt(local.x), std::sqrt(local.y), std::sqrt(local.z)}};
}

std::string GPGST(const SState& state) {
    const SFix fix(state);
    const std::string text = "GPGST," + Clock(fix.utc);
    if (!fix.isValid) {
        return Sentence(text + ",,,,,,,");
    }
    const SErrorEllipse ellipse = ErrorEllipse(fix);
    const double rms = fix.dilution ? Length(ellipse.deviations) / fix.dilution->position
                                    : Length(ellipse.deviations);
    return Sentence(text + Format(",%.3f,%.3f,%.3f,%.1f,%.3f,%.3f,%.3f", rms, ellipse.major,
                                  ellipse.minor, ellipse.orientation, ellipse.deviations.y,
                                  ellipse.deviations.x, ellipse.deviations.z));
}

std::string GPZDA(const SState& state) {
    const SUTC utc = UTCOf(state.time);
    return Sentence("GPZDA," + Clock(utc) +
                    Format(",%02u,%02u,%04u,,", unsigned{utc.day}, unsigned{utc.month}, utc.year));
}

struct SSentence {
    std::string_view name;
    std::string (*encode)(const SState&);
};

constexpr SSentence kSentences[] = {
    {"GPGGA", GPGGA}, {"GPRMC", GPRMC}, {"GPVTG", GPVTG}, {"GPGSV", GPGSV},
    {"GPGSA", GPGSA}, {"GPGST", GPGST}, {"GPZDA", GPZDA},
};

} // namespace

std::optional<std::string> EncodeNMEA(std::string_view name, const SState& state) {
    const auto* const sentence = std::ranges::find(kSentences, name, &SSentence::name);
    if (sentence == std::end(kSentences)) {
        return std::nullopt;
    }
    return sentence->encode(state);
}

} // namespace Sim
