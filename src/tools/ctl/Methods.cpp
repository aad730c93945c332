#include "Methods.h"

namespace Ctl {

namespace {

// clang-format off
constexpr SMethod kMethods[] = {
    {"DummyFunction", "", "an empty list",
     "nothing; shows that the daemon answers"},
    {"RequestNMEA", "sentence name: text, period in milliseconds: integer", "1, or 0 when not sent",
     "asks the receiver for an NMEA sentence: every period, once below 0, no more at 0"},
    {"novatel_SetSBASEnabled", "enabled: integer", "an empty list",
     "wants SBAS or not, whatever the region says, and configures the receiver anew"},
    {"novatel_GetSBASEnabled", "", "0 or 1",
     "whether SBAS is wanted"},
    {"novatel_SetSBASPRN", "PRN: integer", "an empty list",
     "stores the SBAS satellite; a change configures the receiver anew"},
    {"novatel_GetSBASPRN", "", "the PRN",
     "the SBAS satellite that is stored"},
    {"novatel_SetReferenceFormat", "format: text", "an empty list, also for an unknown name",
     "VARN1, CMR, RTCM3 or RTCM2; a change configures the receiver anew"},
    {"novatel_GetReferenceFormat", "", "the name",
     "the format of the corrections"},
    {"novatel_SetReferencePosition", "X: number, Y: number, Z: number", "1",
     "stores the reference's place (ECEF, metres) and configures the receiver anew"},
    {"novatel_GetReferencePosition", "", "X, Y, Z",
     "the reference's place; three zeros without one"},
    {"novatel_UnsetReferencePosition", "", "1, or 0 when refused",
     "forgets the reference's place and configures the receiver anew"},
    {"novatel_SetGlonassCorrectionsEnabled", "enabled: integer", "an empty list",
     "stores whether reference output has GLONASS"},
    {"novatel_GetGlonassCorrectionsEnabled", "", "0 or 1",
     "whether reference output has GLONASS"},
    {"novatel_SetGPSLoggingEnabled", "enabled: integer", "an empty list",
     "asks for more logs, for recording, or not; a change configures the receiver anew"},
    {"novatel_GetGPSLoggingEnabled", "", "0 or 1",
     "whether more logs are asked for"},
    {"novatel_RefreshRegionSettings", "", "1",
     "reads the settings and the region's anew and configures the receiver anew"},
    {"novatel_ResetRTKFilter", "", "1",
     "sends \"rtkcommand reset\""},
    {"novatel_ResetPDPFilter", "", "an empty list",
     "sends \"pdpfilter reset\""},
    {"novatel_GetIonosphereMode", "", "0 to 3",
     "the ionosphere model: 0 and 3 auto, 1 Klobuchar, 2 grid"},
    {"novatel_SetIonosphereMode", "mode: integer", "1; nothing for a mode above 3",
     "chooses the ionosphere model; a change configures the receiver anew"},
    {"novatel_GetCurrentChannelConfiguration", "", "the number, 0 when not known",
     "the channel configuration in use"},
    {"novatel_GetAllowableChannelConfigurations", "",
     "a list each: number, then channels and signal by turns",
     "the channel configurations that the receiver offers"},
    {"novatel_GetVersionInformation", "", "model, serial number, hardware, software",
     "what the receiver's card says of itself; empty texts before it has"},
    {"novatel_SendFReset", "", "1",
     "sends \"FRESET STANDARD\", which clears the receiver's memory, and configures it anew"},
    {"novatel_RefreshReceiverConfiguration", "", "1",
     "asks the receiver for its channel configurations, logs and settings"},
    {"novatel_GetReceiverTrackingStatus", "",
     "channels of GPS L1, L2, GLONASS L1, L2, satellites, SBAS, status",
     "what the receiver tracks; from then on cb_trackingStatus comes with each change"},
    {"novatel_SetReferenceOutputBandwidth", "bytes per second: integer", "",
     "nothing; accepted and ignored"},
    {"novatel_GetFirmwareUpgradeStatus", "", "1 while well, 1 when ended, percent",
     "how far the upgrade of the receiver's firmware is"},
    {"novatel_StartFirmwareUpgrade", "firmware file: text", "1, or 0 when it cannot be read",
     "loads a file of S-records, which the daemon reads, into the receiver"},
};
// clang-format on

} // namespace

std::span<const SMethod> Methods() {
    return kMethods;
}

} // namespace Ctl
