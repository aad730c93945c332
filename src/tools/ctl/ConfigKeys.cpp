#include "ConfigKeys.h"

#include <algorithm>
#include <string_view>

namespace Ctl {

namespace {

using enum SConfigKey::EType;
using enum SConfigKey::EEffect;

constexpr char kDaemon[] = "Corvane";
constexpr char kFormats[] = "VARN1|CMR|RTCM3|RTCM2|NONE";

// clang-format off
constexpr SConfigKey kKeys[] = {
    // Where the receiver is, and how it is brought to talk.
    {.section = kDaemon, .key = "io_type", .type = integer, .defaultValue = "3", .least = 0,
     .most = 3,
     .meaning = "the byte source: 0 raw file, 1 serial line, 2 recording, 3 port of the "
                "multiplexer"},
    {.section = kDaemon, .key = "input_filename", .defaultValue = "50",
     .meaning = "the file, device or recording, or the number of the multiplexer's port"},
    {.section = kDaemon, .key = "baud_rate", .type = integer, .defaultValue = "460800", .least = 1,
     .meaning = "speed of the serial line"},
    {.section = kDaemon, .key = "breakout_mode", .type = integer, .defaultValue = "3", .least = 0,
     .most = 3,
     .meaning = "how the port is brought to talk: 0 not at all, 1 zq2, 2 break, 3 softbreak"},
    {.section = kDaemon, .key = "configuration_file",
     .meaning = "a file of commands that configures the receiver instead of these settings"},
    {.section = kDaemon, .key = "serial_port_timeout", .type = integer, .defaultValue = "10",
     .least = 1,
     .meaning = "seconds of silence before the receiver is reset"},
    {.section = kDaemon, .key = "idle_delay_threshold", .type = number, .defaultValue = "0",
     .least = 0,
     .meaning = "seconds between two passes of the main loop above which a warning is published; "
                "0 for never"},

    // The receiver's configuration.
    {.section = kDaemon, .key = "position_update", .type = number, .defaultValue = "0.05",
     .least = 0.001, .effect = rebuild,
     .meaning = "seconds between positions (PDPXYZ, PDPSTAT, RTKXYZ)"},
    {.section = kDaemon, .key = "timeb_update", .type = number, .defaultKey = "position_update",
     .least = 0.001, .effect = rebuild,
     .meaning = "seconds between TIME logs"},
    {.section = kDaemon, .key = "dynamics_type", .defaultValue = "air", .effect = rebuild,
     .meaning = "how the antenna moves, as the receiver names it: air, land, foot ..."},
    {.section = kDaemon, .key = "ionosphere_mode", .type = integer, .defaultValue = "0", .least = 0,
     .most = 3, .effect = rebuild,
     .meaning = "0 and 3 auto, 1 Klobuchar, 2 grid (see \"corvanectl ionosphere\")"},
    {.section = kDaemon, .key = "psr_diff_source", .type = choice, .defaultValue = "none",
     .choices = "none|auto", .effect = rebuild,
     .meaning = "where differential corrections of code positions come from"},
    {.section = kDaemon, .key = "rtk_extra_safe", .type = flag, .defaultValue = "0",
     .effect = rebuild,
     .meaning = "RTK quality level \"extra_safe\" instead of \"normal\""},
    {.section = kDaemon, .key = "special_logs", .type = flag, .defaultValue = "0",
     .effect = rebuild,
     .meaning = "engineering: any differential source, no RTK reset, PDP filter off"},
    {.section = kDaemon, .key = "gps_logging_enabled", .type = flag, .defaultValue = "0",
     .effect = rebuild,
     .meaning = "more logs on the main port, for recording (see \"corvanectl gps-logging\")"},
    {.section = kDaemon, .key = "pdp_filter_reset", .type = flag, .defaultValue = "0",
     .meaning = "resets the PDP filter once when RTK stays without narrow-lane integers for 60 s"},

    // The reference and its corrections.
    {.section = kDaemon, .key = "reference_format", .type = choice, .defaultValue = "VARN1",
     .choices = kFormats, .effect = rebuild,
     .meaning = "format of the corrections, unless reference_format_real is set"},
    {.section = kDaemon, .key = "reference_format_real", .type = choice,
     .defaultKey = "reference_format", .choices = kFormats, .effect = rebuild,
     .meaning = "format of the corrections; written by \"corvanectl reference-format\""},
    {.section = kDaemon, .key = "reference_position", .type = place, .effect = rebuild,
     .meaning = "where the reference stands; written by \"corvanectl reference-position\""},
    {.section = kDaemon, .key = "glonass_corrections", .type = flag, .defaultValue = "1",
     .effect = rebuild,
     .meaning = "whether reference output has GLONASS (see \"corvanectl glonass-corrections\")"},
    {.section = kDaemon, .key = "sbas_prn", .type = integer, .defaultValue = "0", .least = 0,
     .most = 158, .effect = rebuild,
     .meaning = "the SBAS satellite, kept for whoever asks (see \"corvanectl sbas-prn\")"},
    {.section = kDaemon, .key = "bandwidth_limit", .type = integer, .defaultValue = "100000",
     .least = 0, .effect = none,
     .meaning = "bytes a second of the reference link"},

    // The choice of channels.
    {.section = kDaemon, .key = "force_sbas_state", .type = flag, .defaultValue = "1",
     .meaning = "whether force_sbas_on decides on SBAS, not the region; written by \"corvanectl "
                "sbas\""},
    {.section = kDaemon, .key = "force_sbas_on", .type = flag, .defaultValue = "0",
     .meaning = "whether SBAS is wanted; written by \"corvanectl sbas\""},
    {.section = kDaemon, .key = "force_glonass_state", .type = flag, .defaultValue = "0",
     .meaning = "whether force_glonass_on decides on GLONASS, not the receiver's model"},
    {.section = kDaemon, .key = "force_glonass_on", .type = flag, .defaultValue = "0",
     .meaning = "whether GLONASS is wanted"},
    {.section = kDaemon, .key = "receiver_supports_glonass", .type = flag, .defaultValue = "0",
     .meaning = "written by the daemon when it knows the receiver's model"},
    {.section = kDaemon, .key = "current_channel_configuration", .type = integer,
     .defaultValue = "0", .least = 0,
     .meaning = "written by the daemon: the one last sent to the receiver or reported by it"},
    {.section = kDaemon, .key = "receiver_is_615", .type = flag, .defaultValue = "0",
     .effect = none,
     .meaning = "kept for whoever asks"},

    // What older configurations carry.
    {.section = kDaemon, .key = "debug_baud_rate", .type = integer, .defaultValue = "0",
     .effect = none,
     .meaning = "of older configurations"},
    {.section = kDaemon, .key = "psrvelocitytype", .defaultValue = "DOPPLER", .effect = none,
     .meaning = "of older configurations"},

    {.section = "glide", .key = "obstruction_lockout", .type = integer, .defaultValue = "30",
     .least = 0,
     .meaning = "seconds for which smoothed positions are held down after the receiver lost its "
                "phases"},
    {.section = "localisation", .key = "region", .defaultValue = "none", .effect = region,
     .meaning = "north_america, europe, japan, none, or one that a section region:NAME adds"},
    {.section = "region:*", .key = "sbas", .defaultValue = "none", .effect = region,
     .meaning = "the region's SBAS: waas, egnos, msas, none"},
    {.section = "platform", .key = "rpc_listen", .type = address, .defaultValue = "127.0.0.1",
     .meaning = "the address on which the daemon listens for corvanectl; 0.0.0.0 for all of the "
                "machine"},
};
// clang-format on

bool IsSection(std::string_view pattern, std::string_view section) {
    if (!pattern.ends_with('*')) {
        return pattern == section;
    }
    pattern.remove_suffix(1);
    return section.starts_with(pattern) && section.size() > pattern.size();
}

} // namespace

std::span<const SConfigKey> ConfigKeys() {
    return kKeys;
}

const SConfigKey* FindConfigKey(const std::string& section, const std::string& key) {
    const auto* const found =
        std::find_if(std::begin(kKeys), std::end(kKeys), [&](const SConfigKey& known) {
            return known.key == key && IsSection(known.section, section);
        });
    return found == std::end(kKeys) ? nullptr : found;
}

std::vector<std::string> ConfigKeyNames(const std::string& section) {
    std::vector<std::string> names;
    for (const SConfigKey& known : kKeys) {
        if (section.empty() || IsSection(known.section, section)) {
            names.emplace_back(known.key);
        }
    }
    return names;
}

std::string EffectText(SConfigKey::EEffect effect) {
    switch (effect) {
    case start:
        return "when the daemon starts";
    case rebuild:
        return "with \"corvanectl region refresh\", with the next setting that corvanectl changes, "
               "and when the daemon starts";
    case region:
        return "with \"corvanectl region refresh\", and when the daemon starts";
    case none:
        break;
    }
    return "never: nothing depends on it yet";
}

} // namespace Ctl
