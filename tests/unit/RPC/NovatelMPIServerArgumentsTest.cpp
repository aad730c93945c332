// What the service refuses: wrong arguments, too many commands, calls that nothing stands behind.

#include "RPC/NovatelMPIServerTesting.h"

namespace {

enum class EKind { integer, number, text };

/// A method's argument that must be there, with arguments that are right; the one at `position` is
/// written as {}.
struct SArgument {
    const char* method;
    const char* before;
    const char* after;
    int position;
    const char* name;
    EKind kind;
};

constexpr SArgument kArguments[] = {
    {"novatel_SetSBASEnabled", "", "", 0, "enabled", EKind::integer},
    {"novatel_SetSBASPRN", "", "", 0, "PRN", EKind::integer},
    {"novatel_SetReferenceFormat", "", "", 0, "format", EKind::text},
    {"novatel_SetReferencePosition", "", ",2,3", 0, "X", EKind::number},
    {"novatel_SetReferencePosition", "1,", ",3", 1, "Y", EKind::number},
    {"novatel_SetReferencePosition", "1,2,", "", 2, "Z", EKind::number},
    {"novatel_SetGlonassCorrectionsEnabled", "", "", 0, "enabled", EKind::integer},
    {"novatel_SetGPSLoggingEnabled", "", "", 0, "enabled", EKind::integer},
    {"novatel_StartFirmwareUpgrade", "", "", 0, "firmware file", EKind::text},
};
/// Those that are looked at only when all of them are there.
constexpr SArgument kOptionalArguments[] = {
    {"RequestNMEA", "", ",200", 0, "sentence name", EKind::text},
    {"RequestNMEA", "\"GPGGA\",", "", 1, "period in milliseconds", EKind::integer},
    {"novatel_SetIonosphereMode", "", "", 0, "mode", EKind::integer},
};

const char* Describe(EKind kind) {
    switch (kind) {
    case EKind::integer:
        return "a whole number within 32 bits";
    case EKind::number:
        return "a number";
    default:
        return "a text";
    }
}

std::vector<std::string> WrongValues(EKind kind) {
    switch (kind) {
    case EKind::integer:
        return {"5.5",         "true",         "false", "\"5\"", "null", "2147483648",
                "-2147483649", "4294967296.0", "1e300", "[5]",   "{}"};
    case EKind::number:
        return {"true", "false", "\"5\"", "null", "[5]", "{}"};
    default:
        return {"5", "5.5", "true", "false", "null", "[\"x\"]", "{}"};
    }
}

class NovatelMPIServerArguments : public CNovatelMPIServerTesting {
protected:
    void ExpectRefused(const SArgument& argument, const std::string& value) {
        const std::string params =
            "[" + std::string(argument.before) + value + argument.after + "]";
        EXPECT_EQ(Call(argument.method, params),
                  "error -32602 argument " + std::to_string(argument.position) + " (" +
                      argument.name + ") must be " + Describe(argument.kind))
            << argument.method << params;
    }
    /// Fills the list of commands that are kept, as calls do.
    void Keep(std::size_t count) {
        while (m_commands.Configuration().size() < count) {
            m_commands.SendCommand("log bestposb once\r\n");
        }
        m_source.texts.clear();
        m_source.done.clear();
    }
    void Queue(std::size_t count) {
        while (m_commands.PendingCount() < count) {
            m_commands.QueueCommand("unlog bestposb\r\n");
        }
    }

    static inline const std::string kTooManyKept =
        "error -32603 10000 commands are kept to be sent again after a reset; changing a setting "
        "or starting the daemon again begins anew";
};

} // namespace

TEST_F(NovatelMPIServerArguments, are_named_when_they_are_of_the_wrong_type) {
    for (const SArgument& argument : kArguments) {
        for (const std::string& value : WrongValues(argument.kind)) {
            ExpectRefused(argument, value);
        }
    }
    for (const SArgument& argument : kOptionalArguments) {
        for (const std::string& value : WrongValues(argument.kind)) {
            ExpectRefused(argument, value);
        }
    }
    ExpectNothingDone();
}

TEST_F(NovatelMPIServerArguments, are_named_when_they_are_missing) {
    for (const SArgument& argument : kArguments) {
        std::string before = argument.before;
        before = before.substr(0, before.empty() ? 0 : before.size() - 1);
        EXPECT_EQ(Call(argument.method, "[" + before + "]"),
                  "error -32602 argument " + std::to_string(argument.position) + " (" +
                      argument.name + ") is missing: " + Describe(argument.kind))
            << argument.method;
    }
    ExpectNothingDone();
}

TEST_F(NovatelMPIServerArguments, are_an_array) {
    for (const char* method : {"DummyFunction", "RequestNMEA", "novatel_GetSBASPRN",
                               "novatel_SetSBASPRN", "novatel_SetReferenceOutputBandwidth"}) {
        EXPECT_EQ(Call(method, R"({"PRN":133})"),
                  "error -32602 the arguments of this method are an array")
            << method;
    }
    ExpectNothingDone();
}

TEST_F(NovatelMPIServerArguments, may_be_whole_numbers_with_a_fraction_of_zero) {
    EXPECT_EQ(Call("novatel_SetSBASPRN", "[133.0]"), "[]");
    EXPECT_EQ(Call("novatel_GetSBASPRN"), "[133]");
    EXPECT_EQ(Call("novatel_SetIonosphereMode", "[2.0]"), "[1]");
    EXPECT_EQ(Call("novatel_GetIonosphereMode"), "[2]");
}

TEST_F(NovatelMPIServerArguments, may_be_more_than_are_needed) {
    EXPECT_EQ(Call("novatel_SetSBASPRN", R"([133,"more"])"), "[]");
    EXPECT_EQ(Call("novatel_GetSBASPRN", "[1,2]"), "[133]");
}

TEST_F(NovatelMPIServerArguments, are_refused_also_while_managers_are_missing) {
    CNovatelMPIServer bare(m_sockets, nullptr, nullptr, nullptr);
    EXPECT_EQ(Call(bare, "novatel_SetSBASPRN", "[5.5]"),
              "error -32602 argument 0 (PRN) must be a whole number within 32 bits");
}

TEST_F(NovatelMPIServerArguments, reach_nobody_while_managers_are_missing) {
    CNovatelMPIServer bare(m_sockets, nullptr, nullptr, nullptr);
    constexpr struct {
        const char* method;
        const char* params;
        const char* result;
    } kCalls[] = {
        {"DummyFunction", "[]", "[]"},
        {"RequestNMEA", R"(["GPGGA",200])", "[1]"},
        {"RequestNMEA", R"(["GGA",200])", "[0]"},
        {"RequestNMEA", "[]", "[]"},
        {"novatel_SetSBASEnabled", "[1]", "null"},
        {"novatel_GetSBASEnabled", "[]", "null"},
        {"novatel_SetSBASPRN", "[133]", "null"},
        {"novatel_GetSBASPRN", "[]", "null"},
        {"novatel_SetReferenceFormat", R"(["CMR"])", "null"},
        {"novatel_GetReferenceFormat", "[]", "null"},
        {"novatel_SetReferencePosition", "[1,2,3]", "null"},
        {"novatel_GetReferencePosition", "[]", "null"},
        {"novatel_UnsetReferencePosition", "[]", "[0]"},
        {"novatel_SetGlonassCorrectionsEnabled", "[1]", "null"},
        {"novatel_GetGlonassCorrectionsEnabled", "[]", "null"},
        {"novatel_SetGPSLoggingEnabled", "[1]", "null"},
        {"novatel_GetGPSLoggingEnabled", "[]", "null"},
        {"novatel_RefreshRegionSettings", "[]", "null"},
        {"novatel_ResetRTKFilter", "[]", "null"},
        {"novatel_ResetPDPFilter", "[]", "null"},
        {"novatel_GetIonosphereMode", "[]", "null"},
        {"novatel_SetIonosphereMode", "[1]", "null"},
        {"novatel_GetCurrentChannelConfiguration", "[]", "null"},
        {"novatel_GetAllowableChannelConfigurations", "[]", "null"},
        {"novatel_GetVersionInformation", "[]", "null"},
        {"novatel_SendFReset", "[]", "null"},
        {"novatel_RefreshReceiverConfiguration", "[]", "null"},
        {"novatel_GetReceiverTrackingStatus", "[]", "null"},
        {"novatel_SetReferenceOutputBandwidth", "[1]", "null"},
        {"novatel_GetFirmwareUpgradeStatus", "[]", "null"},
        {"novatel_StartFirmwareUpgrade", R"(["x"])", "null"},
    };
    for (const auto& [method, params, result] : kCalls) {
        EXPECT_EQ(Call(bare, method, params), result) << method;
    }
}

TEST_F(NovatelMPIServerArguments, reach_whoever_is_there_while_another_is_missing) {
    CNovatelMPIServer commandsOnly(m_sockets, &m_commands, nullptr, nullptr);
    EXPECT_EQ(Call(commandsOnly, "novatel_GetSBASPRN"), "[0]");
    EXPECT_EQ(Call(commandsOnly, "novatel_GetFirmwareUpgradeStatus"), "null");
    CNovatelMPIServer upgradeOnly(m_sockets, nullptr, &m_upgrade, nullptr);
    EXPECT_EQ(Call(upgradeOnly, "novatel_GetSBASPRN"), "null");
    EXPECT_EQ(Call(upgradeOnly, "novatel_GetFirmwareUpgradeStatus"), "[1,0,0]");
    CNovatelMPIServer statusOnly(m_sockets, nullptr, nullptr, &m_receiverStatus);
    EXPECT_EQ(Call(statusOnly, "novatel_GetVersionInformation"), R"(["","","",""])");
    EXPECT_EQ(Call(statusOnly, "novatel_GetCurrentChannelConfiguration"), "null");
}

TEST_F(NovatelMPIServerArguments, of_calls_that_send_are_refused_when_10000_commands_are_kept) {
    Keep(10'000);
    for (const auto& [method, params] : {std::pair("RequestNMEA", R"(["GPGGA",200])"),
                                         {"novatel_RefreshReceiverConfiguration", "[]"},
                                         {"novatel_SendFReset", "[]"}}) {
        EXPECT_EQ(Call(method, params).substr(0, 12), "error -32603") << method;
    }
    EXPECT_EQ(Call("RequestNMEA", R"(["GPGGA",200])"), kTooManyKept);
    EXPECT_EQ(m_source.texts, Lines{});
    EXPECT_EQ(m_commands.Configuration().size(), 10'000U);
    EXPECT_EQ(m_commands.PendingCount(), 0U);
    EXPECT_EQ(Call("novatel_GetSBASPRN"), "[0]");
}

TEST_F(NovatelMPIServerArguments, of_calls_that_send_are_taken_up_to_10000_commands) {
    Keep(9'997);
    EXPECT_EQ(Call("novatel_RefreshReceiverConfiguration"), "[1]");
    EXPECT_EQ(m_commands.Configuration().size(), 10'000U);
    EXPECT_EQ(Call("novatel_RefreshReceiverConfiguration"), kTooManyKept);
    EXPECT_EQ(m_source.texts.size(), 3U);
}

TEST_F(NovatelMPIServerArguments, of_a_call_that_would_send_too_much_send_nothing) {
    Keep(9'998);
    EXPECT_EQ(Call("novatel_RefreshReceiverConfiguration"), kTooManyKept);
    EXPECT_EQ(m_source.texts, Lines{});
}

TEST_F(NovatelMPIServerArguments, of_an_nmea_request_are_taken_while_one_command_more_is_allowed) {
    Keep(9'999);
    EXPECT_EQ(Call("RequestNMEA", R"(["GPGGA",200])"), "[1]");
    EXPECT_EQ(Call("RequestNMEA", R"(["GPGGA",200])"), kTooManyKept);
}

TEST_F(NovatelMPIServerArguments, of_calls_that_queue_are_refused_when_10000_commands_wait) {
    Queue(9'999);
    EXPECT_EQ(Call("novatel_ResetRTKFilter"), "[1]");
    for (const char* method : {"novatel_ResetRTKFilter", "novatel_ResetPDPFilter"}) {
        EXPECT_EQ(Call(method),
                  "error -32603 10000 commands wait to be sent to the receiver already");
    }
    EXPECT_EQ(m_commands.PendingCount(), 10'000U);
}

TEST_F(NovatelMPIServerArguments, of_a_reset_are_refused_when_its_replay_would_wait_with_10000) {
    Keep(100);
    Queue(9'900);
    EXPECT_EQ(Call("novatel_SendFReset"),
              "error -32603 10000 commands would wait to be sent to the receiver");
    EXPECT_EQ(m_source.texts, Lines{});
    m_commands.NextCommand();
    EXPECT_EQ(Call("novatel_SendFReset"), "[1]");
    EXPECT_EQ(m_commands.PendingCount(), 10'000U);
}

TEST_F(NovatelMPIServerArguments, are_taken_again_when_a_setting_has_changed) {
    Keep(10'000);
    Queue(10'000);
    EXPECT_EQ(Call("novatel_SetIonosphereMode", "[1]"), "[1]");
    ExpectReplayed("setionotype klobuchar");
    EXPECT_EQ(Call("RequestNMEA", R"(["GPGGA",200])"), "[1]");
    EXPECT_EQ(Call("novatel_ResetRTKFilter"), "[1]");
}

TEST_F(NovatelMPIServerArguments, of_a_notification_are_taken_and_never_answered) {
    for (const char* call :
         {R"("method":"novatel_SetSBASPRN","params":[133])",
          R"("method":"novatel_SetSBASPRN","params":["x"])", R"("method":"novatel_None")"}) {
        std::string answer;
        m_server.AfterService();
        EXPECT_TRUE(m_server.Answer(m_connection, R"({"jsonrpc":"2.0",)" + std::string(call) + "}",
                                    answer));
        EXPECT_EQ(answer, "");
    }
    EXPECT_EQ(Call("novatel_GetSBASPRN"), "[133]");
}
