#include "Control/ReceiverSettings.h"

#include "platform/Maths.h"
#include "platform/Text.h"

namespace {

constexpr char kSection[] = "Corvane";
constexpr std::int32_t kMaxIonosphereMode = 3;

std::uint32_t IonosphereModeOf(std::int32_t stored) {
    return stored >= 0 && stored <= kMaxIonosphereMode ? static_cast<std::uint32_t>(stored) : 0;
}

/// "latitude,longitude,height", degrees and metres; anything else makes the position invalid.
void ReadReferencePosition(const std::string& text, SReferencePosition& position) {
    using Core::Utilities::ParseDouble;
    const auto fields = Core::Utilities::Split(text, ',', 3);
    double latitude = 0.0;
    double longitude = 0.0;
    double height = 0.0;
    position.isValid = fields.size() == 3 && ParseDouble(fields[0], latitude) &&
                       ParseDouble(fields[1], longitude) && ParseDouble(fields[2], height);
    if (position.isValid) {
        position.latitude = Core::Maths::Radians(latitude);
        position.longitude = Core::Maths::Radians(longitude);
        position.height = height;
    }
}

} // namespace

void ReadReceiverSettings(CConfig& config, SReceiverSettings& settings) {
    const auto text = [&](const char* key, const std::string& defaultValue) {
        return config.GetString(kSection, key, defaultValue);
    };
    const auto integer = [&](const char* key) { return config.GetInteger(kSection, key, 0); };

    settings.gpsLoggingEnabled = integer("gps_logging_enabled") > 0;
    // Nothing depends on it; read all the same, so that one that is no number is told.
    integer("debug_baud_rate");
    settings.specialLogs = config.GetBoolean(kSection, "special_logs", false);
    settings.ionosphereMode = IonosphereModeOf(integer("ionosphere_mode"));
    settings.sbasPrn = integer("sbas_prn");
    settings.referenceFormat = text("reference_format", "VARN1");
    settings.referenceFormat = text("reference_format_real", settings.referenceFormat);
    settings.isPSRDiffSourceAuto = text("psr_diff_source", "none") == "auto";
    ReadReferencePosition(text("reference_position", ""), settings.referencePosition);
    settings.glonassCorrections = config.GetBoolean(kSection, "glonass_corrections", true);
    settings.rtkExtraSafe = integer("rtk_extra_safe") != 0;
    settings.positionUpdate = text("position_update", "0.05");
    settings.dynamicsType = text("dynamics_type", "air");
    // Nothing depends on it; a setting that older configurations carry.
    text("psrvelocitytype", "DOPPLER");
    settings.timeUpdate = text("timeb_update", settings.positionUpdate);
}
