// When the simulated receiver says which log.
#include "ReceiverTesting.h"

namespace {

using Sim::EPort;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr std::uint16_t kRXStatus = 93;

class SimReceiverLogs : public CSimReceiver {
protected:
    using Logs = std::vector<SSaidLog>;
    using Times = std::vector<Sim::Milliseconds>;

    std::uint32_t SolutionStatus(const std::string& log) { return Word(log, 0); }
    std::uint32_t SolutionType(const std::string& log) { return Word(log, 4); }

private:
    std::uint32_t Word(const std::string& log, std::size_t offset) {
        return Bytes::ReadUInt32(BodyOf(log), offset);
    }
};

} // namespace

TEST_F(SimReceiverLogs, asked_for_once_come_right_behind_the_answer) {
    const std::string said = Ask("log bestposb once");
    EXPECT_THAT(said, StartsWith(Answer("OK") + "\xAA\x44\x12"));
    EXPECT_EQ(LogsIn(said), (Logs{{42, kStart}}));
    Pass(5000);
    EXPECT_EQ(Said(), "");
}

TEST_F(SimReceiverLogs, with_a_period_come_at_its_multiples_of_receiver_time) {
    Pass(30);
    ExpectOK("log timeb ontime 0.05");
    Pass(170);
    EXPECT_EQ(
        LogsIn(Said()),
        (Logs{{101, kStart + 50}, {101, kStart + 100}, {101, kStart + 150}, {101, kStart + 200}}));
    EXPECT_EQ(LogTimes(), (Times{50, 100, 150, 200}));
}

TEST_F(SimReceiverLogs, with_an_offset_come_so_much_later) {
    ExpectOK("log timeb ontime 2 0.5");
    Pass(5000);
    EXPECT_EQ(LogTimes(), (Times{500, 2500, 4500}));
}

TEST_F(SimReceiverLogs, of_an_epoch_have_one_time_and_come_in_the_order_of_the_requests) {
    ExpectOK("log rtkxyzb ontime 0.1");
    ExpectOK("log pdpxyzb ontime 0.05");
    ExpectOK("log timeb ontime 0.1");
    Pass(100);
    EXPECT_EQ(
        LogsIn(Said()),
        (Logs{{471, kStart + 50}, {244, kStart + 100}, {471, kStart + 100}, {101, kStart + 100}}));
}

TEST_F(SimReceiverLogs, that_are_recomputed_rarely_keep_their_time_until_then) {
    ExpectOK("log psrdopb ontime 10");
    Pass(40'000); // a whole minute comes 40 s after the start
    EXPECT_EQ(LogsIn(Said()), (Logs{{174, kStart - 20'000},
                                    {174, kStart - 20'000},
                                    {174, kStart - 20'000},
                                    {174, kStart + 40'000}}));
}

TEST_F(SimReceiverLogs, of_each_renewal_come_at_the_receivers_own_rate) {
    ExpectOK("log bestposb onnew");
    Pass(200);
    EXPECT_EQ(LogTimes(), (Times{50, 100, 150, 200}));
}

TEST_F(SimReceiverLogs, of_the_next_renewal_come_once) {
    ExpectOK("log bestposb onnext");
    Pass(1000);
    EXPECT_EQ(LogTimes(), Times{50});
}

TEST_F(SimReceiverLogs, of_changes_come_at_once_and_then_with_each_change) {
    Start({.faults = {{.at = 2000, .duration = 1000, .statusBits = 0x20}}});
    EXPECT_EQ(LogsIn(Ask("log rxstatusb onchanged")), (Logs{{kRXStatus, kStart}}));
    Pass(10'000);
    EXPECT_EQ(LogsIn(Said()), (Logs{{kRXStatus, kStart + 2000}, {kRXStatus, kStart + 3000}}));
}

TEST_F(SimReceiverLogs, of_new_events_do_not_come_at_once) {
    Start({.faults = {{.at = 2000, .statusBits = 0x20}}});
    EXPECT_EQ(Ask("log rxstatusb onnew"), Answer("OK"));
    Pass(10'000);
    EXPECT_EQ(LogsIn(Said()), (Logs{{kRXStatus, kStart + 2000}}));
}

TEST_F(SimReceiverLogs, that_wait_for_a_pulse_never_come) {
    ExpectOK("log timeb onmark");
    Pass(10'000);
    EXPECT_EQ(Said(), "");
}

TEST_F(SimReceiverLogs, go_to_the_port_that_is_named) {
    EXPECT_EQ(Ask("log usb2 timeb once"), Answer("OK"));
    const std::string said = Said(EPort::usb2);
    EXPECT_EQ(LogsIn(said), (Logs{{101, kStart}}));
    EXPECT_EQ(said[7], '\xA0') << "the address of every USB port";
    EXPECT_THAT(Ask("log all_ports timeb ontime 1"), StartsWith(Answer("OK")));
    Pass(1000);
    for (const EPort port : Sim::kPorts) {
        EXPECT_EQ(LogsIn(Said(port)).size(), 1U);
    }
}

TEST_F(SimReceiverLogs, without_an_encoder_are_accepted_and_say_nothing) {
    ExpectOK("log almanacb onchanged");
    ExpectOK("log cbithinta onchanged");
    ExpectOK("log passusb3b onnew");
    ExpectOK("log portstatsb ontime 1");
    Pass(10'000);
    EXPECT_EQ(Said(), "");
}

TEST_F(SimReceiverLogs, end_with_unlog_for_one_and_unlogall_for_all) {
    ExpectOK("log timeb ontime 1");
    ExpectOK("log bestposb ontime 1");
    ExpectOK("log usb1 timeb ontime 1");
    ExpectOK("unlog timeb");
    Pass(1000);
    EXPECT_EQ(LogsIn(Said()), (Logs{{42, kStart + 1000}}));
    EXPECT_EQ(LogsIn(Said(EPort::usb1)).size(), 1U);
    ExpectOK("unlogall thisport");
    Pass(1000);
    EXPECT_EQ(Said(), "");
    EXPECT_EQ(LogsIn(Said(EPort::usb1)).size(), 1U);
    ExpectOK("unlogall");
    Pass(1000);
    EXPECT_EQ(Said(EPort::usb1), "");
}

TEST_F(SimReceiverLogs, that_are_held_end_only_when_they_are_meant) {
    ExpectOK("log timeb ontime 1 0 hold");
    ExpectOK("unlogall");
    Pass(1000);
    EXPECT_EQ(LogsIn(Said()).size(), 1U);
    ExpectOK("unlogall thisport true");
    Pass(1000);
    EXPECT_EQ(Said(), "");
}

TEST_F(SimReceiverLogs, are_listed) {
    ExpectOK("log usb2 rangeb ontime 0.5 0.25 hold");
    ExpectOK("log versiona onchanged");
    Said();
    const Bytes::Sentence body = BodyOf("loglist");
    ASSERT_EQ(body.size(), 4U + 2U * 32U);
    EXPECT_EQ(Bytes::ReadUInt32(body, 0), 2U);
    EXPECT_EQ(Bytes::ReadUInt32(body, 4), 1696U); // USB2
    EXPECT_EQ(Bytes::ReadUInt16(body, 8), 43U);
    EXPECT_EQ(body[10], 0x00); // binary
    EXPECT_EQ(Bytes::ReadUInt32(body, 12), 2U);
    EXPECT_EQ(Bytes::ReadDouble(body, 16), 0.5);
    EXPECT_EQ(Bytes::ReadDouble(body, 24), 0.25);
    EXPECT_EQ(Bytes::ReadUInt32(body, 32), 1U);
    EXPECT_EQ(Bytes::ReadUInt32(body, 36), 32U); // COM1
    EXPECT_EQ(body[42], 0x20);                   // ASCII
    EXPECT_EQ(Bytes::ReadUInt32(body, 44), 1U);
}

TEST_F(SimReceiverLogs, are_listed_for_readers_too) {
    ExpectOK("log usb2 rangeb ontime 0.5");
    EXPECT_THAT(Ask("log loglist"),
                HasSubstr("\r\n<     1 USB2 RANGEB ONTIME 0.500000 0.000000 NOHOLD\r\n[COM1]"));
}

TEST_F(SimReceiverLogs, that_were_missed_while_it_stood_still_are_not_made_up_for) {
    ExpectOK("log timeb ontime 1");
    m_now = 3'600'000;
    m_receiver->SkipTo(Moment());
    m_receiver->Advance(Moment());
    EXPECT_EQ(LogTimes(), Times{3'600'000});
    Pass(1000);
    EXPECT_EQ(LogTimes(), Times{3'601'000});
}

TEST_F(SimReceiverLogs, have_a_float_solution_for_a_while_after_a_reset_of_the_rtk_filter) {
    EXPECT_EQ(SolutionType("rtkxyz"), 50U);
    ExpectOK("rtkcommand reset");
    EXPECT_EQ(SolutionType("rtkxyz"), 34U);
    Pass(Sim::CReceiver::kConvergenceTime);
    EXPECT_EQ(SolutionType("rtkxyz"), 50U);
    ExpectOK("rtkcommand use_defaults");
    EXPECT_EQ(SolutionType("rtkxyz"), 50U);
}

TEST_F(SimReceiverLogs, have_a_pdp_solution_only_while_its_filter_is_on) {
    EXPECT_EQ(SolutionStatus("pdpxyz"), 1U);
    ExpectOK("pdpfilter reset");
    EXPECT_EQ(SolutionStatus("pdpxyz"), 1U);
    ExpectOK("pdpfilter enable");
    EXPECT_EQ(SolutionStatus("pdpxyz"), 0U);
    ExpectOK("pdpfilter disable");
    EXPECT_EQ(SolutionStatus("pdpxyz"), 1U);
}

TEST_F(SimReceiverLogs, have_no_smoothed_position_right_after_a_reset_of_the_pdp_filter) {
    ExpectOK("pdpfilter enable");
    const auto x = [this](const std::string& log) { return Bytes::ReadDouble(BodyOf(log), 8); };
    EXPECT_NE(x("pdpxyz"), x("psrxyz"));
    ExpectOK("pdpfilter reset");
    EXPECT_EQ(x("pdpxyz"), x("psrxyz"));
    Pass(Sim::CReceiver::kConvergenceTime);
    EXPECT_NE(x("pdpxyz"), x("psrxyz"));
}

TEST_F(SimReceiverLogs, of_the_same_seed_are_the_same) {
    const auto range = [this](std::uint64_t seed) {
        Start({.seed = seed});
        ExpectOK("log rangeb ontime 1");
        Pass(3000);
        return Said();
    };
    const std::string first = range(1);
    EXPECT_EQ(first, range(1));
    EXPECT_NE(first, range(2));
}
