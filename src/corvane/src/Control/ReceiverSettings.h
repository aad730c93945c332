// The settings that decide how the receiver is configured, as the configuration database has them.
#pragma once

#include "platform/Config.h"

#include <cstdint>
#include <string>

/// Where the reference station stands: WGS-84, radians and metres above the ellipsoid.
struct SReferencePosition {
    bool isValid = false;
    double latitude = 0.0;
    double longitude = 0.0;
    double height = 0.0;
};

/// The values here are those of a daemon that has read no settings yet.
struct SReceiverSettings {
    bool gpsLoggingEnabled = false;   ///< asks for the logs of the upper-case block as well
    bool specialLogs = false;         ///< engineering mode
    std::uint32_t ionosphereMode = 0; ///< 0 to 3
    std::int32_t sbasPrn = 0;
    std::string referenceFormat = "VARN1";
    bool isPSRDiffSourceAuto = false;
    SReferencePosition referencePosition;
    bool glonassCorrections = true; ///< whether reference output has GLONASS
    bool rtkExtraSafe = true;
    std::string positionUpdate; ///< seconds, handed to the receiver as it stands
    std::string dynamicsType;
    std::string timeUpdate; ///< seconds, handed to the receiver as it stands
};

/// Reads every value of section "Corvane" anew, with the defaults of a section without keys. Only
/// the position of an invalid reference keeps what it was.
void ReadReceiverSettings(CConfig& config, SReceiverSettings& settings);
