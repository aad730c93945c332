// What the simulator's faults do to what is said.
#include "sim/Faults.h"

#include <gmock/gmock.h>

#include <bit>

namespace {

using namespace Sim;

constexpr STime kStart = {2370, 302'400'000};

class SimFaults : public testing::Test, public CReceiverOutput {
protected:
    void Say(const SUtterance& utterance) override { m_out.push_back(utterance.bytes); }

    /// What comes out of so many logs (or answers) of a hundred bytes, one a second.
    std::vector<Bytes> Out(const SFaultSettings& settings, int count = 1000, bool isLog = true,
                           EPort port = EPort::com1, std::uint64_t seed = 1) {
        m_out.clear();
        CFaults faults(settings, seed, kStart, *this);
        for (int number = 0; number < count; ++number) {
            faults.Say({.port = port,
                        .moment = SinceGPSEpoch(kStart) + number * 1000,
                        .baud = 9600,
                        .bytes = kLog,
                        .isLog = isLog});
        }
        return m_out;
    }

    const Bytes kLog = Bytes(100, 0x55);

private:
    std::vector<Bytes> m_out;
};

} // namespace

TEST_F(SimFaults, none_change_nothing) {
    EXPECT_EQ(Out({}, 3), (std::vector<Bytes>{kLog, kLog, kLog}));
}

TEST_F(SimFaults, silence_lasts_for_its_time) {
    EXPECT_EQ(Out({.silent = SPeriod{2000, 3000}}, 10).size(), 7U);
    EXPECT_EQ(Out({.silent = SPeriod{2000, 3000}}, 10, false).size(), 7U);
    EXPECT_EQ(Out({.silent = SPeriod{2000}}, 10).size(), 2U);
}

TEST_F(SimFaults, drop_duplicate_and_cut_have_their_rates) {
    EXPECT_NEAR(static_cast<double>(Out({.drop = 0.25}).size()), 750.0, 60.0);
    EXPECT_NEAR(static_cast<double>(Out({.duplicate = 0.25}).size()), 1250.0, 60.0);
    const std::vector<Bytes> cut = Out({.cut = 0.25});
    EXPECT_EQ(cut.size(), 1000U);
    const auto shorter =
        std::count_if(cut.begin(), cut.end(), [](const Bytes& log) { return log.size() < 100; });
    EXPECT_NEAR(static_cast<double>(shorter), 250.0, 60.0);
}

TEST_F(SimFaults, noise_stands_in_front_of_logs) {
    for (const Bytes& log : Out({.noise = 1.0}, 100)) {
        ASSERT_GT(log.size(), 100U);
        ASSERT_LE(log.size(), 132U);
        EXPECT_EQ(Bytes(log.end() - 100, log.end()), kLog);
    }
}

TEST_F(SimFaults, bit_errors_have_their_rate) {
    int flipped = 0;
    for (const Bytes& log : Out({.bitErrors = 0.001})) {
        for (const std::uint8_t byte : log) {
            flipped += std::popcount(static_cast<unsigned int>(byte ^ 0x55U));
        }
    }
    EXPECT_NEAR(flipped, 800, 120); // of 800,000 bits
}

TEST_F(SimFaults, of_logs_spare_answers) {
    EXPECT_EQ(Out({.noise = 1.0, .drop = 1.0, .duplicate = 1.0, .cut = 1.0}, 2, false),
              (std::vector<Bytes>{kLog, kLog}));
}

TEST_F(SimFaults, a_wrong_speed_makes_noise_of_com_ports_alone) {
    const SFaultSettings wrong = {.wrongBaud = SPeriod{0, 1000}};
    const std::vector<Bytes> com = Out(wrong, 2);
    EXPECT_EQ(com[0].size(), kLog.size());
    EXPECT_NE(com[0], kLog);
    EXPECT_EQ(com[1], kLog);
    EXPECT_EQ(Out(wrong, 1, true, EPort::usb1), std::vector<Bytes>{kLog});
    const CFaults faults(wrong, 1, kStart, *this);
    EXPECT_TRUE(faults.IsDeaf(EPort::com2, SinceGPSEpoch(kStart) + 999));
    EXPECT_FALSE(faults.IsDeaf(EPort::com2, SinceGPSEpoch(kStart) + 1000));
    EXPECT_FALSE(faults.IsDeaf(EPort::usb2, SinceGPSEpoch(kStart)));
}

TEST_F(SimFaults, are_the_same_for_the_same_seed) {
    const SFaultSettings all = {
        .noise = 0.2, .bitErrors = 0.01, .drop = 0.2, .duplicate = 0.2, .cut = 0.2};
    EXPECT_EQ(Out(all), Out(all));
    EXPECT_NE(Out(all), Out(all, 1000, true, EPort::com1, 2));
}
