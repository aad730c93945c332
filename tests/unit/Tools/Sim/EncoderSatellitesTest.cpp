#include "Tools/Sim/EncoderTesting.h"

#include "Logs/NovatelOEMV/NovatelRANGE.h"
#include "Logs/NovatelOEMV/NovatelSatsLog.h"
#include "Logs/NovatelOEMV/NovatelTRACKSTAT.h"

#include <gmock/gmock.h>

#include <map>

using namespace SimTesting;
using Novatel::CNovatelRANGE;
using Novatel::CNovatelSatsLog;
using Novatel::CNovatelTRACKSTAT;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr double kLight = 299792458.0;

using Observations = std::vector<CNovatelRANGE::SObservation>;
using Channels = std::vector<CNovatelTRACKSTAT::SChannel>;

Observations RangeOf(const Sim::SState& state, const Sim::SReceiverInfo& info = {}) {
    return CDecoded<CNovatelRANGE>("RANGE", state, info)->GetObservations();
}

Channels TrackstatOf(const Sim::SState& state, const Sim::SReceiverInfo& info = {}) {
    return CDecoded<CNovatelTRACKSTAT>("TRACKSTAT", state, info)->GetChannels();
}

template <class TItem>
std::vector<int> PRNs(const std::vector<TItem>& items) {
    std::vector<int> prns;
    for (const TItem& item : items) {
        prns.push_back(item.prn);
    }
    return prns;
}

/// The ideal receiver's: the clock is 12.5 ns ahead.
double Pseudorange(double range) {
    return range + kLight * 12.5e-9;
}

} // namespace

TEST(EncoderSatellites, range_has_an_observation_for_each_tracked_signal) {
    EXPECT_THAT(PRNs(RangeOf(State())), ElementsAre(5, 5, 32, 32, 124, 47, 47));
    EXPECT_EQ(CDecoded<CNovatelRANGE>("RANGE")->GetNumberOfObservations(), 7U);
}

TEST(EncoderSatellites, pseudoranges_are_range_and_clock_within_their_deviations) {
    const std::map<int, double> ranges = {{5, 21.5e6}, {32, 20.25e6}, {47, 20.75e6}, {124, 38.5e6}};
    for (const auto& each : RangeOf(State())) {
        SCOPED_TRACE(each.prn);
        EXPECT_GT(each.pseudorangeDeviation, 0.02F);
        EXPECT_LT(each.pseudorangeDeviation, 0.6F);
        EXPECT_NEAR(each.pseudorange, Pseudorange(ranges.at(each.prn)),
                    3.001 * each.pseudorangeDeviation);
    }
}

TEST(EncoderSatellites, pseudorange_noise_is_as_large_as_its_deviation_says) {
    Sim::SState state = State();
    double sum = 0.0;
    constexpr int kCount = 2000;
    for (int i = 0; i < kCount; ++i) {
        state.time.milliseconds += 50;
        const auto observation = RangeOf(state)[0];
        const double error = (observation.pseudorange - Pseudorange(21.5e6)) /
                             double{observation.pseudorangeDeviation};
        sum += error * error;
    }
    EXPECT_NEAR(sum / kCount, 1.0, 0.1);
}

TEST(EncoderSatellites, phases_count_down_the_wavelengths_of_the_way) {
    const Observations observations = RangeOf(State());
    const double l1 = kLight / 1575.42e6;
    const double l2 = kLight / 1227.60e6;
    const double glonassL1 = kLight / (1602e6 - 7 * 562500.0);
    const double glonassL2 = kLight / (1246e6 - 7 * 437500.0);
    EXPECT_NEAR(observations[0].carrierPhase, -Pseudorange(21.5e6) / l1, 0.1);
    EXPECT_NEAR(observations[1].carrierPhase, -Pseudorange(21.5e6) / l2, 0.1);
    EXPECT_NEAR(observations[4].carrierPhase, -Pseudorange(38.5e6) / l1, 0.1);
    EXPECT_NEAR(observations[5].carrierPhase, -Pseudorange(20.75e6) / glonassL1, 0.1);
    EXPECT_NEAR(observations[6].carrierPhase, -Pseudorange(20.75e6) / glonassL2, 0.1);
    EXPECT_FLOAT_EQ(observations[0].doppler, static_cast<float>(350.5 / l1));
    EXPECT_FLOAT_EQ(observations[6].doppler, static_cast<float>(-700.25 / glonassL2));
}

TEST(EncoderSatellites, observations_carry_strength_lock_time_and_frequency) {
    const Observations observations = RangeOf(State());
    EXPECT_EQ(observations[0].carrierToNoise, 45.5F);
    EXPECT_EQ(observations[1].carrierToNoise, 38.25F);
    EXPECT_EQ(observations[0].lockTime, 60.25F);
    EXPECT_EQ(observations[0].glonassFrequency, 0);
    EXPECT_EQ(observations[5].glonassFrequency, 0); // -7
    Sim::SState state = State();
    state.satellites[3].glonassFrequency = 6;
    EXPECT_EQ(RangeOf(state)[5].glonassFrequency, 13);
}

// The words are those of a receiver: GPS on channels 0 and 1, SBAS from 14, GLONASS from 16.
TEST(EncoderSatellites, tracking_status_words_are_those_of_a_receiver) {
    const Observations observations = RangeOf(State());
    EXPECT_EQ(observations[0].trackingStatus, 0x08109C04U);
    EXPECT_EQ(observations[1].trackingStatus, 0x01309C0BU);
    EXPECT_EQ(observations[2].trackingStatus, 0x08109C24U);
    EXPECT_EQ(observations[5].trackingStatus, 0x08119E04U);
    EXPECT_EQ(observations[6].trackingStatus, 0x00B19E0BU);
    EXPECT_EQ(observations[4].trackingStatus >> 5 & 0x1F, 14U); // channel
    EXPECT_EQ(observations[4].trackingStatus >> 16 & 0x7, 2U);  // SBAS
    EXPECT_EQ(observations[4].trackingStatus >> 21 & 0x1F, 0U); // L1
    EXPECT_EQ(observations[4].trackingStatus & 0x1F, 4U);       // phase lock loop
}

TEST(EncoderSatellites, trackstat_lists_every_channel_of_the_full_model) {
    const Channels channels = TrackstatOf(State());
    ASSERT_EQ(channels.size(), 55U); // 14 x 2 GPS, 2 SBAS, 12 x 2 GLONASS, L band
    EXPECT_EQ(channels[0].prn, 5);
    EXPECT_EQ(channels[2].prn, 32);
    EXPECT_EQ(channels[28].prn, 124);
    EXPECT_EQ(channels[30].prn, 47);
    EXPECT_EQ(channels[54].prn, 0);
    EXPECT_EQ(channels[54].trackingStatus, 0x0AE70380U); // idle L-band channel 28
}

TEST(EncoderSatellites, trackstat_tells_the_solution_it_belongs_to) {
    Sim::SState state = State();
    state.pseudorange.status = 1;
    state.pseudorange.type = 0;
    const CDecoded<CNovatelTRACKSTAT> log("TRACKSTAT", state);
    EXPECT_EQ(log->GetSolutionStatus(), 1U);
    EXPECT_EQ(log->GetPositionType(), 0U);
    EXPECT_EQ(log->GetElevationCutOff(), 5.0F);
}

TEST(EncoderSatellites, trackstat_and_range_measure_the_same) {
    const Channels channels = TrackstatOf(State());
    const Observations observations = RangeOf(State());
    const std::size_t places[] = {0, 1, 2, 3, 28, 30, 31};
    for (std::size_t i = 0; i < observations.size(); ++i) {
        const auto& channel = channels[places[i]];
        EXPECT_EQ(channel.prn, observations[i].prn);
        EXPECT_EQ(channel.glonassFrequency, observations[i].glonassFrequency);
        EXPECT_EQ(channel.trackingStatus, observations[i].trackingStatus);
        EXPECT_EQ(channel.pseudorange, observations[i].pseudorange);
        EXPECT_EQ(channel.doppler, observations[i].doppler);
        EXPECT_EQ(channel.carrierToNoise, observations[i].carrierToNoise);
        EXPECT_EQ(channel.lockTime, observations[i].lockTime);
    }
    EXPECT_NEAR(channels[0].pseudorange - double{channels[0].pseudorangeResidual},
                Pseudorange(21.5e6), 1e-6);
}

TEST(EncoderSatellites, channels_tell_why_a_measurement_is_not_used) {
    const Channels channels = TrackstatOf(State());
    EXPECT_EQ(channels[0].rejectCode, 0U);   // used
    EXPECT_EQ(channels[1].rejectCode, 13U);  // second frequency
    EXPECT_EQ(channels[4].rejectCode, 99U);  // searching for GPS 9
    EXPECT_EQ(channels[6].rejectCode, 99U);  // idle
    EXPECT_EQ(channels[28].rejectCode, 17U); // SBAS, not used
    EXPECT_GT(channels[0].pseudorangeWeight, 0.0F);
    EXPECT_EQ(channels[28].pseudorangeWeight, 0.0F);
}

TEST(EncoderSatellites, a_channel_that_searches_measures_nothing) {
    const Channels channels = TrackstatOf(State());
    EXPECT_EQ(channels[4].prn, 9);
    EXPECT_EQ(channels[4].trackingStatus, 0x08008042U); // sky search on channel 2
    EXPECT_EQ(channels[4].pseudorange, 0.0);
    EXPECT_EQ(channels[4].doppler, 0.0F);
    EXPECT_EQ(channels[4].carrierToNoise, 0.0F);
    EXPECT_EQ(channels[4].lockTime, 0.0F);
}

TEST(EncoderSatellites, a_channel_without_satellite_is_idle) {
    Sim::SState state = State();
    state.satellites.clear();
    const Channels channels = TrackstatOf(state);
    EXPECT_EQ(channels[12].prn, 0);
    EXPECT_EQ(channels[12].trackingStatus, 0x080080C0U); // L1 of channel 6
    EXPECT_EQ(channels[13].trackingStatus, 0x012080C8U); // its L2
    EXPECT_EQ(channels[28].trackingStatus, 0x0C0221C0U); // SBAS, channel 14
    EXPECT_THAT(RangeOf(state), IsEmpty());
}

TEST(EncoderSatellites, the_channel_configuration_in_use_shares_the_channels) {
    Sim::SReceiverInfo info;
    info.channelConfigurations = {{{14, 1}}, {{1, 0}, {1, 10}, {1, 9}}};
    info.channelConfigurationInUse = 2;
    const Channels channels = TrackstatOf(State(), info);
    EXPECT_THAT(PRNs(channels), ElementsAre(5, 47, 0));
    EXPECT_EQ(channels[0].trackingStatus, 0x08009C04U); // L1 alone: not grouped
    EXPECT_THAT(PRNs(RangeOf(State(), info)), ElementsAre(5, 47));
    info.channelConfigurationInUse = 1;
    EXPECT_EQ(TrackstatOf(State(), info).size(), 28U);
}

TEST(EncoderSatellites, tracked_satellites_come_before_those_that_are_searched_for) {
    Sim::SReceiverInfo info;
    info.channelConfigurations = {{{2, 0}}};
    Sim::SState state = State();
    std::swap(state.satellites[0], state.satellites[1]);
    EXPECT_THAT(PRNs(TrackstatOf(state, info)), ElementsAre(5, 32));
}

TEST(EncoderSatellites, satellite_lists_number_glonass_by_slot_and_signed_frequency) {
    const auto satellites = CDecoded<CNovatelSatsLog>("PSRSATS")->GetSatellites();
    ASSERT_EQ(satellites.size(), 4U);
    EXPECT_EQ(satellites[0].system, 0U);
    EXPECT_EQ(satellites[0].id, 5U);
    EXPECT_EQ(satellites[0].glonassFrequency, 0);
    EXPECT_EQ(satellites[2].system, 1U);
    EXPECT_EQ(satellites[2].id, 10U);
    EXPECT_EQ(satellites[2].glonassFrequency, -7);
    EXPECT_EQ(satellites[3].system, 2U);
    EXPECT_EQ(satellites[3].id, 124U);
}

TEST(EncoderSatellites, satellite_lists_tell_which_signals_are_used) {
    const auto satellites = CDecoded<CNovatelSatsLog>("RTKSATS")->GetSatellites();
    ASSERT_EQ(satellites.size(), 4U);
    EXPECT_EQ(satellites[0].status, 0U);
    EXPECT_EQ(satellites[0].signalMask, 3U);
    EXPECT_EQ(satellites[3].status, 17U);
    EXPECT_EQ(satellites[3].signalMask, 0U);
}

TEST(EncoderSatellites, each_satellite_list_is_that_of_its_own_solution) {
    const std::map<std::string, Sim::SSolution Sim::SState::*> solutions = {
        {"PSRSATS", &Sim::SState::pseudorange},
        {"RTKSATS", &Sim::SState::rtk},
        {"PDPSATS", &Sim::SState::pdp},
    };
    for (const auto& [emptied, solution] : solutions) {
        Sim::SState state = State();
        (state.*solution).satellitesUsed = 0;
        for (const auto& [name, ignored] : solutions) {
            const auto satellites = CDecoded<CNovatelSatsLog>(name, state)->GetSatellites();
            EXPECT_EQ(satellites.at(0).status, name == emptied ? 17U : 0U) << name;
        }
    }
}
