#include "Control/ReceiverConfiguration.h"

#include "Control/ExpectedConfiguration.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

namespace {

using Commands = std::vector<std::string>;

/// The settings that the choice is made of.
SReceiverSettings SettingsOf(const SConfigurationChoice& choice) {
    SReceiverSettings settings;
    settings.specialLogs = choice.specialLogs;
    settings.gpsLoggingEnabled = choice.gpsLogging;
    settings.isPSRDiffSourceAuto = choice.isPSRDiffSourceAuto;
    settings.rtkExtraSafe = choice.rtkExtraSafe;
    settings.ionosphereMode = static_cast<std::uint32_t>(choice.ionosphereMode);
    settings.referenceFormat = choice.referenceFormat;
    settings.positionUpdate = choice.positionUpdate;
    settings.timeUpdate = choice.timeUpdate;
    settings.dynamicsType = choice.dynamicsType;
    return settings;
}

Commands CommandsOf(const SReceiverSettings& settings) {
    return ReceiverConfiguration({settings, {}});
}
Commands CommandsOf(const SConfigurationChoice& choice) {
    return CommandsOf(SettingsOf(choice));
}

std::size_t Count(const Commands& commands, const std::string& command) {
    return static_cast<std::size_t>(std::count(commands.begin(), commands.end(), command + "\r\n"));
}

using Visitor = std::function<void(SConfigurationChoice&)>;

/// Every combination of the flags and the texts, with the choice's own format and mode.
void ForEveryFlagAndText(SConfigurationChoice choice, const Visitor& visit) {
    for (unsigned bits = 0; bits < 128; ++bits) {
        const auto bit = [&](unsigned number) { return ((bits >> number) & 1U) != 0; };
        choice.specialLogs = bit(0);
        choice.gpsLogging = bit(1);
        choice.isPSRDiffSourceAuto = bit(2);
        choice.rtkExtraSafe = bit(3);
        choice.positionUpdate = bit(4) ? "0.2" : "0.05";
        choice.timeUpdate = bit(5) ? "1" : "0.05";
        choice.dynamicsType = bit(6) ? "land" : "air";
        visit(choice);
    }
}

void ForEveryChoice(const Visitor& visit) {
    for (const char* const format :
         {"VARN1", "CMR", "RTCM3", "RTCM2", "NONE", "RTCA", "varn1", "none", ""}) {
        for (int mode = 0; mode <= 3; ++mode) {
            SConfigurationChoice choice;
            choice.referenceFormat = format;
            choice.ionosphereMode = mode;
            ForEveryFlagAndText(choice, visit);
        }
    }
}

} // namespace

TEST(ReceiverConfiguration, has_every_command_in_order_for_every_combination_of_settings) {
    int count = 0;
    ForEveryChoice([&](const SConfigurationChoice& choice) {
        ++count;
        ASSERT_EQ(CommandsOf(choice), ExpectedCommands(choice))
            << "format '" << choice.referenceFormat << "' mode " << choice.ionosphereMode;
    });
    EXPECT_EQ(count, 9 * 4 * 128);
}

TEST(ReceiverConfiguration, has_61_commands_as_a_rule) {
    SConfigurationChoice choice;
    EXPECT_EQ(CommandsOf(choice).size(), 61U);
    choice.specialLogs = true;
    EXPECT_EQ(CommandsOf(choice).size(), 60U);
    choice.specialLogs = false;
    choice.gpsLogging = true;
    EXPECT_EQ(CommandsOf(choice).size(), 84U);
}

TEST(ReceiverConfiguration, begins_with_silence_on_its_own_port) {
    EXPECT_EQ(CommandsOf(SConfigurationChoice()).front(), "unlogall thisport\r\n");
}

TEST(ReceiverConfiguration, ends_every_command_once) {
    EXPECT_STREQ(kCommandEnd, "\r\n");
    SConfigurationChoice choice;
    choice.gpsLogging = true;
    for (const std::string& command : CommandsOf(choice)) {
        EXPECT_EQ(command.find("\r\n"), command.size() - 2) << command;
        EXPECT_EQ(command.find('%'), std::string::npos) << command;
    }
}

TEST(ReceiverConfiguration, is_of_engineering_mode_with_special_logs) {
    SConfigurationChoice choice;
    choice.specialLogs = true;
    const Commands commands = CommandsOf(choice);
    EXPECT_EQ(Count(commands, "psrdiffsource AUTO \"ANY\""), 1U);
    EXPECT_EQ(Count(commands, "rtkcommand reset"), 0U);
    EXPECT_EQ(Count(commands, "pdpfilter disable"), 1U);
}

TEST(ReceiverConfiguration, never_selects_a_channel_configuration) {
    EXPECT_FALSE(CanSelectChannelConfiguration());
    const SReceiverSettings settings = SettingsOf({});
    for (const std::int32_t desired : {0, 1, 5}) {
        EXPECT_EQ(ReceiverConfiguration({settings, desired}), ExpectedCommands({}));
    }
}

TEST(ReceiverConfiguration, hands_texts_to_the_receiver_as_they_stand) {
    for (const char* const text : {"", "fast", "0.050", "-1", "%s", "1 hold", "100%"}) {
        SConfigurationChoice choice;
        choice.positionUpdate = text;
        EXPECT_EQ(CommandsOf(choice), ExpectedCommands(choice)) << text;
        choice.timeUpdate = text;
        choice.dynamicsType = text;
        choice.referenceFormat = text;
        EXPECT_EQ(CommandsOf(choice), ExpectedCommands(choice)) << text;
    }
}

TEST(ReceiverConfiguration, does_not_depend_on_what_no_command_uses) {
    SReceiverSettings settings = SettingsOf({});
    settings.sbasPrn = 122;
    settings.glonassCorrections = false;
    settings.referencePosition = {true, 0.8, 0.1, 400.0};
    EXPECT_EQ(CommandsOf(settings), ExpectedCommands({}));
}

TEST(ReceiverConfiguration, names_the_interface_mode_of_a_reference_format) {
    EXPECT_EQ(CorrectionInterfaceMode("VARN1"), "CMR");
    EXPECT_EQ(CorrectionInterfaceMode("RTCM3"), "RTCMV3");
    EXPECT_EQ(CorrectionInterfaceMode("RTCM2"), "RTCM");
}

TEST(ReceiverConfiguration, never_leaves_the_correction_port_without_a_type) {
    EXPECT_EQ(CorrectionInterfaceMode("NONE"), "RTCMV3");
}

TEST(ReceiverConfiguration, takes_every_other_format_name_as_an_interface_mode) {
    for (const char* const name : {"CMR", "RTCA", "varn1", "Rtcm3", "none", "RTCMV3", "RTCM", ""}) {
        EXPECT_EQ(CorrectionInterfaceMode(name), name);
    }
}
