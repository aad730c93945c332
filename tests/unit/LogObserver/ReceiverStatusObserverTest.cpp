#include "LogObserver/ReceiverStatusTesting.h"
#include "Support/TextSentences.h"

#include <gmock/gmock.h>

using Sentences::BinaryLog;
using Sentences::Comconfig;
using Sentences::Rxstatus;
using Sentences::Time;
using Sentences::Version;

namespace {

class ReceiverStatusObserver : public CReceiverStatusTesting {};
class ReceiverStatusHeader : public CReceiverStatusTesting {};

class ReceiverStatusVersion : public CReceiverStatusTesting {
protected:
    ReceiverStatusVersion() { Settle(); }
};

class ReceiverStatusPorts : public CReceiverStatusTesting {
protected:
    ReceiverStatusPorts() { Settle(); }

    /// What a COMCONFIG publishes behind its counter.
    Lines Ports(const Comconfig& log) {
        Lines lines = PublishedAt(log);
        EXPECT_THAT(lines.at(0), testing::HasSubstr("comconfig_messages"));
        lines.erase(lines.begin());
        return lines;
    }
};

class ReceiverStatusCounters : public CReceiverStatusTesting {
protected:
    ReceiverStatusCounters() { Settle(); }
};

constexpr char kWarning[] =
    "CReceiverStatusObserver::TranslateReceiverVersion: got sw_version_int ";

/// Texts that do not matter are empty.
Novatel::CNovatelVERSION::SComponent Component(std::uint32_t type, const std::string& software = "",
                                               const std::string& model = "") {
    Novatel::CNovatelVERSION::SComponent component;
    component.type = type;
    component.model = model;
    component.softwareVersion = software;
    return component;
}

/// The binary logs that the observer takes.
constexpr std::uint16_t kTakenLogs[] = {37, 93, 317, 83, 43, 1085, 1148, 101};

} // namespace

TEST_F(ReceiverStatusObserver, registers_its_logger_and_publishes_an_empty_sky_at_first) {
    EXPECT_EQ(m_published.Count(R"(logger.register "name":"NovatelReceiverStatus")"), 1);
    EXPECT_EQ(m_published.All().back(), Sky(""));
    EXPECT_EQ(m_published.Count("position.sky"), 1);
    EXPECT_EQ(m_published.Messages().size(), 2U);
}

TEST_F(ReceiverStatusObserver, knows_neither_firmware_nor_time_at_first) {
    EXPECT_EQ(m_observer.FirmwareVersion(), -1);
    EXPECT_EQ(m_observer.LastTimeSeconds(), 0.0);
}

TEST_F(ReceiverStatusObserver, passes_over_null_records_and_nmea_sentences) {
    m_published.Forget();
    m_observer.NewRecord(nullptr);
    Offer(Sentences::Nmea("GPGSV,1"));
    EXPECT_EQ(m_published.All(), Lines{});
}

TEST_F(ReceiverStatusObserver, takes_only_the_header_of_other_logs) {
    EXPECT_EQ(PublishedAt(Sentences::Bestpos()),
              (Lines{Essential("ReceiverStatus", "0x00000000: "),
                     Info("ReceiverCPUIdlePercentage", "66.5"), Cleared("79195", "0")}));
}

TEST_F(ReceiverStatusObserver, does_not_take_a_response_for_the_log_of_its_identifier) {
    Settle();
    for (const std::uint16_t identifier : kTakenLogs) {
        EXPECT_EQ(PublishedAt(Sentences::Response(identifier).responseID(1).responseText("OK")),
                  Lines{})
            << identifier;
    }
    EXPECT_EQ(m_observer.FirmwareVersion(), -1);
    EXPECT_EQ(m_observer.LastTimeSeconds(), 0.0);
}

TEST_F(ReceiverStatusHeader, publishes_the_status_word_of_the_first_record_also_when_it_is_zero) {
    EXPECT_EQ(PublishedAt(BinaryLog(999).idleTime(0)),
              Lines{Essential("ReceiverStatus", "0x00000000: ")});
}

TEST_F(ReceiverStatusHeader, publishes_a_status_word_with_the_names_of_its_bits) {
    EXPECT_EQ(PublishedAt(BinaryLog(999).idleTime(0).receiverStatus(0x5)),
              Lines{Essential("ReceiverStatus", "0x00000005: Error,Voltage supply warning,")});
    EXPECT_EQ(PublishedAt(BinaryLog(999).idleTime(0).receiverStatus(0x800A0000)),
              Lines{Essential("ReceiverStatus", "0x800A0000: L2 AGC error,"
                                                "Position solution invalid,"
                                                "Auxiliary 1 status event,")});
}

TEST_F(ReceiverStatusHeader, publishes_a_status_word_only_when_it_changes) {
    Offer(BinaryLog(999).receiverStatus(1));
    EXPECT_EQ(PublishedAt(BinaryLog(998).receiverStatus(1)), Lines{});
    EXPECT_EQ(PublishedAt(BinaryLog(998).receiverStatus(2)),
              Lines{Essential("ReceiverStatus", "0x00000002: Temperature warning,")});
    EXPECT_EQ(PublishedAt(BinaryLog(998).receiverStatus(1)),
              Lines{Essential("ReceiverStatus", "0x00000001: Error,")});
}

TEST_F(ReceiverStatusHeader, publishes_no_idle_time_while_it_is_zero_from_the_start) {
    for (int i = 0; i < 3; ++i) {
        Offer(BinaryLog(999).idleTime(0));
    }
    EXPECT_EQ(m_published.Count("ReceiverCPUIdlePercentage"), 0);
    EXPECT_EQ(m_published.Count("diagnostics."), 0);
}

TEST_F(ReceiverStatusHeader, publishes_the_idle_time_as_a_percentage_when_it_changes) {
    Settle();
    EXPECT_EQ(PublishedAt(BinaryLog(999).idleTime(200)),
              (Lines{Info("ReceiverCPUIdlePercentage", "100.0"), Cleared("79195", "0")}));
    EXPECT_EQ(PublishedAt(BinaryLog(999).idleTime(200)), Lines{});
    EXPECT_EQ(PublishedAt(BinaryLog(999).idleTime(255)),
              (Lines{Info("ReceiverCPUIdlePercentage", "127.5"), Cleared("79195", "0")}));
}

TEST_F(ReceiverStatusHeader, raises_an_overload_up_to_an_idle_time_of_five) {
    Settle();
    EXPECT_EQ(PublishedAt(BinaryLog(999).idleTime(5)),
              (Lines{Info("ReceiverCPUIdlePercentage", "2.5"), Raised("79195", "0")}));
    EXPECT_EQ(PublishedAt(BinaryLog(999).idleTime(5)), Lines{});
    EXPECT_EQ(PublishedAt(BinaryLog(999).idleTime(6)),
              (Lines{Info("ReceiverCPUIdlePercentage", "3.0"), Cleared("79195", "0")}));
    EXPECT_EQ(PublishedAt(BinaryLog(999).idleTime(0)),
              (Lines{Info("ReceiverCPUIdlePercentage", "0.0"), Raised("79195", "0")}));
}

TEST_F(ReceiverStatusHeader, raises_or_clears_the_overload_again_at_every_change) {
    Settle();
    Offer(BinaryLog(999).idleTime(4));
    EXPECT_EQ(PublishedAt(BinaryLog(999).idleTime(3)),
              (Lines{Info("ReceiverCPUIdlePercentage", "1.5"), Raised("79195", "0")}));
    Offer(BinaryLog(999).idleTime(7));
    EXPECT_EQ(PublishedAt(BinaryLog(999).idleTime(8)),
              (Lines{Info("ReceiverCPUIdlePercentage", "4.0"), Cleared("79195", "0")}));
}

TEST_F(ReceiverStatusHeader, counts_that_of_a_response) {
    EXPECT_EQ(PublishedAt(Sentences::Response(1).receiverStatus(0x80).idleTime(2)),
              (Lines{Essential("ReceiverStatus", "0x00000080: CPU overload,"),
                     Info("ReceiverCPUIdlePercentage", "1.0"), Raised("79195", "0")}));
}

TEST_F(ReceiverStatusHeader, counts_the_zeros_of_an_ascii_record) {
    const Bytes::Sentence ascii = Sentences::AsciiLog("SOFTLOADSTATUSA", "COMPLETE");
    EXPECT_EQ(PublishedAt(ascii), Lines{Essential("ReceiverStatus", "0x00000000: ")});
    Offer(BinaryLog(999).receiverStatus(1).idleTime(100));
    EXPECT_EQ(PublishedAt(ascii),
              (Lines{Essential("ReceiverStatus", "0x00000000: "),
                     Info("ReceiverCPUIdlePercentage", "0.0"), Raised("79195", "0")}));
}

TEST_F(ReceiverStatusHeader, comes_before_the_log_itself) {
    EXPECT_EQ(PublishedAt(Rxstatus().receiverStatus(8).idleTime(10).week(0).milliseconds(1500)),
              (Lines{Essential("ReceiverStatus", "0x00000008: Antenna not powered,"),
                     Info("ReceiverCPUIdlePercentage", "5.0"), Cleared("79195", "0"),
                     Info("rxstatus_messages", "1,1.500000"),
                     Essential("ReceiverError", "0x00000000: No Errors")}));
}

TEST_F(ReceiverStatusVersion, publishes_each_component_under_its_index) {
    auto card = Component(1, "3.701", "L12GRV");
    card.serialNumber = "DAB11000001";
    card.hardwareVersion = "OEMV3G-5.01-X2T";
    auto display = Component(3, "OEM000007", "CDU");
    display.serialNumber = "S2";
    display.hardwareVersion = "H2";
    EXPECT_EQ(
        PublishedAt(Version().component(card).component(display)),
        (Lines{Info("version_messages", "1"), Essential("component_00.componentType", "1"),
               Essential("component_00.model", "L12GRV"),
               Essential("component_00.psn", "DAB11000001"),
               Essential("component_00.hardwareVersion", "OEMV3G-5.01-X2T"),
               Essential("component_00.softwareVersion", "3.701"),
               Warning(kWarning + std::string("-1 from version 3.701")),
               Essential("component_01.componentType", "3"), Essential("component_01.model", "CDU"),
               Essential("component_01.psn", "S2"), Essential("component_01.hardwareVersion", "H2"),
               Essential("component_01.softwareVersion", "OEM000007")}));
    EXPECT_EQ(m_observer.FirmwareVersion(), -1);
}

TEST_F(ReceiverStatusVersion, counts_a_log_without_components) {
    EXPECT_EQ(PublishedAt(Version()), Lines{Info("version_messages", "1")});
    EXPECT_EQ(PublishedAt(Version()), Lines{Info("version_messages", "2")});
}

TEST_F(ReceiverStatusVersion, numbers_components_with_at_least_two_digits) {
    Version log;
    for (std::uint32_t i = 0; i <= 100; ++i) {
        log.component(Component(1000 + i));
    }
    Offer(log);
    for (const auto& [key, type] : {std::pair{"component_09", "1009"},
                                    {"component_10", "1010"},
                                    {"component_99", "1099"},
                                    {"component_100", "1100"}}) {
        EXPECT_EQ(m_published.Texts(std::string("\"") + key + ".componentType\""), Lines{type});
    }
}

TEST_F(ReceiverStatusVersion, ends_texts_at_their_first_zero_byte) {
    Offer(Version().component(Component(2, "", std::string("AB\0CD", 5))));
    EXPECT_EQ(m_published.Texts("component_00.model"), Lines{"AB"});
}

TEST_F(ReceiverStatusVersion, reads_the_number_behind_the_prefixes_that_it_knows) {
    const std::pair<const char*, int> kVersions[] = {
        {"L6X010201RN0000", 10201},
        {"OEM060200RN0000", 60200},
        {"OEM0", 0},
        {"L6X7", 7},
        {"OEM", -1},
        {"L6X", -1},
        {"OEMX", -1},
        {"L6XRN1", -1},
        {"3.701", -1},
        {"", -1},
        {"OE", -1},
        {"oem060200RN0000", -1},
        {"XOEM060200", -1},
        {"060200", -1},
        {"OEX060200", -1},
        {"L6Y010201", -1},
        {"OEM99999999999", -1},
    };
    for (const auto& [text, number] : kVersions) {
        // A number before, so that -1 is seen to replace it.
        Offer(Version().component(Component(1, "OEM4711")));
        ASSERT_EQ(m_observer.FirmwareVersion(), 4711);
        const Lines lines = PublishedAt(Version().component(Component(1, text)));
        EXPECT_EQ(m_observer.FirmwareVersion(), number) << text;
        EXPECT_EQ(lines.back(),
                  Warning(kWarning + std::to_string(number) + " from version " + text));
    }
}

TEST_F(ReceiverStatusVersion, translates_no_component_but_the_receiver_card) {
    Offer(Version().component(Component(1, "OEM4711")));
    m_published.Forget();
    for (const std::uint32_t type : {0U, 2U, 3U, 257U, 0x01000000U}) {
        Offer(Version().component(Component(type, "OEM5")));
    }
    EXPECT_EQ(m_published.Count("logger.event"), 0);
    EXPECT_EQ(m_observer.FirmwareVersion(), 4711);
}

TEST_F(ReceiverStatusVersion, keeps_the_last_of_several_receiver_cards) {
    Offer(Version()
              .component(Component(2, "OEM1"))
              .component(Component(1, "OEM2"))
              .component(Component(1, "L6X3")));
    EXPECT_EQ(m_published.Count("logger.event"), 2);
    EXPECT_EQ(m_observer.FirmwareVersion(), 3);
}

TEST_F(ReceiverStatusObserver, publishes_the_error_word_with_the_names_of_its_bits) {
    Settle();
    EXPECT_EQ(
        PublishedAt(Rxstatus().errorWord(0x80000005)).back(),
        Essential("ReceiverError", "0x80000005: DRAM Error,ROM error,Component hardware failure,"));
    EXPECT_EQ(PublishedAt(Rxstatus().errorWord(0x8)).back(),
              Essential("ReceiverError", "0x00000008: "));
    EXPECT_EQ(PublishedAt(Rxstatus().errorWord(0).status({.status = 1})).back(),
              Essential("ReceiverError", "0x00000000: No Errors"));
}

TEST_F(ReceiverStatusPorts, are_published_in_their_own_order_with_transmit_before_receive) {
    const auto lines =
        Ports(Comconfig()
                  .port({.port = 15, .baudRate = 230400, .receiveMode = 15, .transmitMode = 20})
                  .port({.port = 3, .baudRate = 1200, .receiveMode = 1, .transmitMode = 1})
                  .port({.port = 14, .baudRate = 57600, .receiveMode = 0, .transmitMode = 11})
                  .port({.port = 13, .baudRate = 19200, .receiveMode = 12, .transmitMode = 10})
                  .port({.port = 2, .baudRate = 300, .receiveMode = 16, .transmitMode = 4})
                  .port({.port = 1, .baudRate = 115200, .receiveMode = 1, .transmitMode = 2}));
    EXPECT_EQ(lines, (Lines{Info("COM1_Config", "115200,RTCM,NOVATEL"),
                            Info("COM2_Config", "300,CMR,UNKNOWN (16)"),
                            Info("USB1_Config", "19200,TCOM1,TCOM2"),
                            Info("USB2_Config", "57600,UNKNOWN (11),NONE"),
                            Info("USB3_Config", "230400,MRTCA,NOVATELBINARY")}));
}

TEST_F(ReceiverStatusPorts, without_an_entry_are_not_published) {
    EXPECT_EQ(Ports(Comconfig()), Lines{});
    EXPECT_EQ(Ports(Comconfig()
                        .port({.port = 14, .baudRate = 9600, .receiveMode = 2, .transmitMode = 1})
                        .port({.port = 16, .baudRate = 9600})),
              Lines{Info("USB2_Config", "9600,NOVATEL,RTCM")});
}

TEST_F(ReceiverStatusPorts, that_come_twice_are_published_as_their_first_entry_says) {
    EXPECT_EQ(Ports(Comconfig()
                        .port({.port = 1, .baudRate = 9600, .receiveMode = 1, .transmitMode = 1})
                        .port({.port = 1, .baudRate = 4800, .receiveMode = 2, .transmitMode = 2})),
              Lines{Info("COM1_Config", "9600,NOVATEL,NOVATEL")});
}

TEST_F(ReceiverStatusCounters, report_the_first_interval_since_the_beginning_of_gps_time) {
    // 1800 weeks of 604800 s and 345600.5 s.
    const std::string first = "1,1088985600.500000";
    EXPECT_EQ(PublishedAt(Rxstatus()).front(), Info("rxstatus_messages", first));
    EXPECT_EQ(PublishedAt(Comconfig()), Lines{Info("comconfig_messages", first)});
    EXPECT_EQ(PublishedAt(Sentences::Trackstat()).front(), Info("trackstat_messages", first));
    EXPECT_EQ(PublishedAt(Sentences::Range()), Lines{Info("range_messages", first)});
    EXPECT_EQ(PublishedAt(Sentences::Pdpstat()), Lines{Info("pdpstat_messages", first)});
}

TEST_F(ReceiverStatusCounters, report_the_interval_since_the_previous_log_of_their_kind) {
    Offer(Rxstatus());
    Offer(Comconfig());
    Offer(Sentences::Trackstat());
    Offer(Sentences::Range());
    Offer(Sentences::Pdpstat());
    const std::uint32_t then = 345600500;
    EXPECT_EQ(PublishedAt(Rxstatus().milliseconds(then + 1000)).front(),
              Info("rxstatus_messages", "2,1.000000"));
    EXPECT_EQ(PublishedAt(Comconfig().milliseconds(then + 2)),
              Lines{Info("comconfig_messages", "2,0.002000")});
    EXPECT_EQ(PublishedAt(Sentences::Trackstat().milliseconds(then)).front(),
              Info("trackstat_messages", "2,0.000000"));
    EXPECT_EQ(PublishedAt(Sentences::Range().week(1801).milliseconds(0)),
              Lines{Info("range_messages", "2,259199.500000")});
    EXPECT_EQ(PublishedAt(Sentences::Pdpstat().milliseconds(then + 250)),
              Lines{Info("pdpstat_messages", "2,0.250000")});
}

TEST_F(ReceiverStatusCounters, report_a_negative_interval_when_time_steps_back) {
    Offer(Sentences::Range());
    EXPECT_EQ(PublishedAt(Sentences::Range().milliseconds(345600250)),
              Lines{Info("range_messages", "2,-0.250000")});
    EXPECT_EQ(PublishedAt(Sentences::Range().week(0).milliseconds(0)),
              Lines{Info("range_messages", "3,-1088985600.250000")});
    EXPECT_EQ(PublishedAt(Sentences::Range().week(0).milliseconds(1)),
              Lines{Info("range_messages", "4,0.001000")});
}

TEST_F(ReceiverStatusCounters, count_the_channel_configurations_without_a_rate) {
    EXPECT_EQ(PublishedAt(Sentences::Chanconfiglist()),
              Lines{Info("chanconfiglist_messages", "1")});
    EXPECT_EQ(PublishedAt(Sentences::Chanconfiglist()),
              Lines{Info("chanconfiglist_messages", "2")});
}

TEST_F(ReceiverStatusCounters, count_the_times_without_a_rate_and_publish_them) {
    EXPECT_EQ(PublishedAt(Time()),
              (Lines{Info("time_messages", "1"), Essential("gps_time", "1800,345600.500")}));
    EXPECT_EQ(PublishedAt(Time().week(65535).milliseconds(7)),
              (Lines{Info("time_messages", "2"), Essential("gps_time", "65535,0.007")}));
}

TEST_F(ReceiverStatusCounters, keep_the_seconds_of_the_last_time_log_alone) {
    Offer(Time().milliseconds(345600999));
    EXPECT_EQ(m_observer.LastTimeSeconds(), 345600.999);
    Offer(Sentences::Range().milliseconds(1000));
    EXPECT_EQ(m_observer.LastTimeSeconds(), 345600.999);
    Offer(Time().milliseconds(250));
    EXPECT_EQ(m_observer.LastTimeSeconds(), 0.25);
}
