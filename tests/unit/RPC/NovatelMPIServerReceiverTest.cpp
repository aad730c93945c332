// The methods that ask or command the receiver, or tell what is known of it.

#include "RPC/NovatelMPIServerTesting.h"

using Sentences::Chanconfiglist;
using Sentences::Trackstat;

namespace {

using Lines = std::vector<std::string>;

class NovatelMPIServerReceiver : public CNovatelMPIServerTesting {
protected:
    std::string RequestNMEA(const std::string& arguments) {
        m_source.texts.clear();
        return Call("RequestNMEA", arguments);
    }
    /// The receiver's soft-load status.
    void Report(const std::string& status) {
        Offer(m_upgrade, Sentences::AsciiLog("SOFTLOADSTATUSA", status));
    }

    static constexpr std::uint32_t kL2 = 9U << 21; ///< of a channel's tracking status
};

} // namespace

TEST_F(NovatelMPIServerReceiver, starts_polls_and_stops_an_nmea_sentence) {
    EXPECT_EQ(RequestNMEA(R"(["GPGGA",200])"), "[1]");
    EXPECT_EQ(m_source.texts, Lines{"log GPGGA ontime 0.200\r\n"});
    EXPECT_EQ(RequestNMEA(R"(["GPGGA",-1])"), "[1]");
    EXPECT_EQ(m_source.texts, Lines{"log GPGGA\r\n"});
    EXPECT_EQ(RequestNMEA(R"(["GPGGA",0])"), "[1]");
    EXPECT_EQ(m_source.texts, Lines{"unlog GPGGA\r\n"});
    EXPECT_EQ(m_commands.Configuration(),
              (Lines{"log GPGGA ontime 0.200\r\n", "log GPGGA\r\n", "unlog GPGGA\r\n"}));
}

TEST_F(NovatelMPIServerReceiver, writes_the_period_of_an_nmea_sentence_in_seconds) {
    for (const auto& [milliseconds, seconds] : {std::pair("1", "0.001"),
                                                {"1000", "1.000"},
                                                {"1500.0", "1.500"},
                                                {"60000", "60.000"},
                                                {"2147483647", "2147483.647"}}) {
        EXPECT_EQ(RequestNMEA(R"(["GPVTG",)" + std::string(milliseconds) + "]"), "[1]");
        EXPECT_EQ(m_source.texts, Lines{"log GPVTG ontime " + std::string(seconds) + "\r\n"});
    }
}

TEST_F(NovatelMPIServerReceiver, sends_nothing_for_a_sentence_that_is_not_five_characters) {
    for (const char* name : {"GGA", "GPGGAX", ""}) {
        EXPECT_EQ(RequestNMEA("[\"" + std::string(name) + "\",200]"), "[0]") << name;
    }
    ExpectNothingDone();
}

TEST_F(NovatelMPIServerReceiver,
       answers_an_nmea_request_of_other_than_two_arguments_and_does_nothing) {
    for (const char* arguments :
         {"[]", R"(["GPGGA"])", "[200]", R"(["GPGGA",200,1])", R"([null,null,null])"}) {
        EXPECT_EQ(RequestNMEA(arguments), "[]") << arguments;
    }
    ExpectNothingDone();
}

TEST_F(NovatelMPIServerReceiver, tells_that_an_nmea_request_could_not_be_sent) {
    m_commands.SetByteSource(nullptr);
    EXPECT_EQ(RequestNMEA(R"(["GPGGA",200])"), "[0]");
}

TEST_F(NovatelMPIServerReceiver, traces_nmea_requests) {
    CNovatelMPIServer bare(m_sockets, nullptr, nullptr, nullptr);
    const std::string path = m_folder.Path("trace");
    Trace(path.c_str());
    RequestNMEA(R"(["GGA",200])");
    RequestNMEA(R"(["GPGGA",200])");
    Call(bare, "RequestNMEA", R"(["GPGGA",200])");
    Trace("off");
    EXPECT_EQ(FileText(path), "Invalid Sentence size\n"
                              "Sending command 'log GPGGA ontime 0.200\r\n'\n"
                              "CommandManager not yet initialised\n");
}

TEST_F(NovatelMPIServerReceiver, queues_the_resets_of_the_filters) {
    EXPECT_EQ(Call("novatel_ResetRTKFilter"), "[1]");
    EXPECT_EQ(Call("novatel_ResetPDPFilter"), "[]");
    EXPECT_EQ(TakePending(), (Lines{"rtkcommand reset\r\n", "pdpfilter reset\r\n"}));
    ExpectNothingDone();
}

TEST_F(NovatelMPIServerReceiver, resets_to_factory_settings_and_configures_anew) {
    m_commands.SendCommand("log com1 bestposb once\r\n");
    m_source.texts.clear();
    EXPECT_EQ(Call("novatel_SendFReset"), "[1]");
    EXPECT_EQ(m_source.texts, Lines{"FRESET STANDARD\r\n"});
    EXPECT_EQ(TakePending(), (Lines{"log com1 bestposb once\r\n", "FRESET STANDARD\r\n"}));
    EXPECT_EQ(m_commands.Configuration(), Lines{"log com1 bestposb once\r\n"});
}

TEST_F(NovatelMPIServerReceiver, asks_the_receiver_for_its_configuration_50_ms_apart) {
    EXPECT_EQ(Call("novatel_RefreshReceiverConfiguration"), "[1]");
    EXPECT_EQ(m_source.texts, (Lines{"LOG CHANCONFIGLISTB ONCE\r\n", "LOG LOGLISTB ONCE\r\n",
                                     "LOG RXCONFIGB ONCE\r\n"}));
    EXPECT_EQ(m_clock.Pauses(), std::vector<Core::Time>(3, Core::Time::FromMilliseconds(50)));
}

TEST_F(NovatelMPIServerReceiver, tells_the_channel_configurations) {
    EXPECT_EQ(Call("novatel_GetCurrentChannelConfiguration"), "[0]");
    EXPECT_EQ(Call("novatel_GetAllowableChannelConfigurations"), "[]");
    Offer(m_constellation,
          Chanconfiglist().inUse(2).set({{14, 0}}).set({{8, 0}, {6, 10}}).set({{12, 9}, {2, 4}}));
    EXPECT_EQ(Call("novatel_GetCurrentChannelConfiguration"), "[2]");
    EXPECT_EQ(Call("novatel_GetAllowableChannelConfigurations"),
              R"([[1,14,"GPSL1"],[2,8,"GPSL1",6,"GLOL1"],[3,12,"UNKNOWN 9",2,"SBASL1"]])");
}

TEST_F(NovatelMPIServerReceiver, tells_no_channel_configurations_without_who_knows_them) {
    m_commands.SetConstellationManager(nullptr);
    EXPECT_EQ(Call("novatel_GetCurrentChannelConfiguration"), "[0]");
    EXPECT_EQ(Call("novatel_GetAllowableChannelConfigurations"), "[]");
    EXPECT_EQ(Call("novatel_GetSBASEnabled"), "[0]");
    EXPECT_EQ(Call("novatel_SetSBASEnabled", "[1]"), "[]");
    EXPECT_EQ(Call("novatel_GetSBASEnabled"), "[0]");
}

TEST_F(NovatelMPIServerReceiver, tells_the_versions_of_the_receivers_card) {
    EXPECT_EQ(Call("novatel_GetVersionInformation"), R"(["","","",""])");
    Offer(m_receiverStatus, Sentences::Version()
                                .component({.type = 1,
                                            .model = "L12LV",
                                            .serialNumber = "BFN1\"0001",
                                            .hardwareVersion = std::string("M-2\0junk", 8),
                                            .softwareVersion = "L6X010201RN0000",
                                            .bootVersion = "boot",
                                            .compileDate = "2012",
                                            .compileTime = "10:11:12"})
                                .component(Novatel::CNovatelVERSION::SComponent{8, "other", "2", "",
                                                                                "", "", "", ""}));
    EXPECT_EQ(Call("novatel_GetVersionInformation"),
              R"(["L12LV","BFN1\"0001","M-2","L6X010201RN0000"])");
}

TEST_F(NovatelMPIServerReceiver, tells_what_is_tracked) {
    EXPECT_EQ(Call("novatel_GetReceiverTrackingStatus"), R"([0,0,0,0,0,"",""])");
    Offer(m_receiverStatus, Trackstat()
                                .channel({.prn = 5})
                                .channel({.prn = 5, .trackingStatus = kL2})
                                .channel({.prn = 32})
                                .channel({.prn = 32, .trackingStatus = kL2})
                                .channel({.prn = 7})
                                .channel({.prn = 8, .rejectCode = 99})
                                .channel({.prn = 38})
                                .channel({.prn = 61, .trackingStatus = kL2})
                                .channel({.prn = 39, .trackingStatus = kL2})
                                .channel({.prn = 40, .trackingStatus = kL2})
                                .channel({.prn = 122})
                                .channel({.prn = 131}));
    EXPECT_EQ(Call("novatel_GetReceiverTrackingStatus"),
              R"([3,2,1,3,9,"122 (WAAS),131 (EGNOS),","0x00000000: "])");
}

TEST_F(NovatelMPIServerReceiver, starts_a_firmware_upgrade_and_tells_how_it_goes) {
    EXPECT_EQ(Call("novatel_GetFirmwareUpgradeStatus"), "[1,0,0]");
    const std::string path = m_folder.Write("firmware", "S0\nS1\nS2\nS3\n");
    EXPECT_EQ(Call("novatel_StartFirmwareUpgrade", "[\"" + path + "\"]"), "[1]");
    const Lines triple = {"UNLOGALL\r\n", "LOG SOFTLOADSTATUSA ONCHANGED\r\n", "SOFTLOADRESET\r\n"};
    Lines expected;
    for (int i = 0; i < 3; ++i) {
        expected.insert(expected.end(), triple.begin(), triple.end());
    }
    EXPECT_EQ(m_source.texts, expected);
    EXPECT_EQ(m_clock.Pauses(), std::vector<Core::Time>(12, Core::Time::FromMilliseconds(50)));
    EXPECT_TRUE(m_upgrade.IsUpgrading());
    EXPECT_EQ(Call("novatel_GetFirmwareUpgradeStatus"), "[1,0,0]");
    Report("READY_FOR_DATA");
    m_upgrade.Service(Core::MonotonicTime::Now());
    EXPECT_EQ(Call("novatel_GetFirmwareUpgradeStatus"), "[1,0,100]");
    Report("OUT_OF_MEMORY");
    EXPECT_EQ(Call("novatel_GetFirmwareUpgradeStatus"), "[0,1,100]");
}

TEST_F(NovatelMPIServerReceiver, does_not_start_an_upgrade_without_its_file) {
    EXPECT_EQ(Call("novatel_StartFirmwareUpgrade", "[\"" + m_folder.Path("none") + "\"]"), "[0]");
    EXPECT_EQ(Call("novatel_StartFirmwareUpgrade", R"([""])"), "[0]");
    EXPECT_FALSE(m_upgrade.IsUpgrading());
    ExpectNothingDone();
}
