#include "Tools/Sim/EncoderTesting.h"

#include "Logs/CartesianLog.h"
#include "Logs/GeodeticLog.h"
#include "Logs/NovatelOEMV/NovatelBESTPOS.h"
#include "Logs/NovatelOEMV/NovatelBinary/NovatelOMNIHPPOSB.h"
#include "Logs/NovatelOEMV/NovatelPDPSTAT.h"
#include "Logs/NovatelOEMV/NovatelPSRDOP.h"
#include "Logs/NovatelOEMV/NovatelREFSTATION.h"
#include "Logs/NovatelOEMV/NovatelTIME.h"

#include <gmock/gmock.h>

#include <bit>
#include <cmath>

using namespace SimTesting;
using testing::ElementsAre;
using namespace std::string_literals;

namespace {

void ExpectSolution(const CCartesianLog& log, const Sim::SSolution& solution) {
    EXPECT_EQ(log.GetPositionStatus(), solution.status);
    EXPECT_EQ(log.GetPositionType(), solution.type);
    EXPECT_EQ(log.GetX(), solution.x);
    EXPECT_EQ(log.GetY(), solution.y);
    EXPECT_EQ(log.GetZ(), solution.z);
    EXPECT_EQ(log.GetXStandardDeviation(), solution.deviationX);
    EXPECT_EQ(log.GetYStandardDeviation(), solution.deviationY);
    EXPECT_EQ(log.GetZStandardDeviation(), solution.deviationZ);
    EXPECT_EQ(log.GetVelocityStatus(), solution.status);
    EXPECT_EQ(log.GetVelocityX(), solution.velocityX);
    EXPECT_EQ(log.GetVelocityY(), solution.velocityY);
    EXPECT_EQ(log.GetVelocityZ(), solution.velocityZ);
    EXPECT_EQ(log.GetVelocityXStandardDeviation(), solution.velocityDeviation);
    EXPECT_EQ(log.GetVelocityYStandardDeviation(), solution.velocityDeviation);
    EXPECT_EQ(log.GetVelocityZStandardDeviation(), solution.velocityDeviation);
    EXPECT_EQ(log.GetVelocityLatency(), solution.velocityLatency);
    EXPECT_EQ(log.GetDifferentialAge(), solution.differentialAge);
    EXPECT_EQ(log.GetSolutionAge(), solution.solutionAge);
    EXPECT_EQ(log.GetSatellitesTracked(), solution.satellitesTracked);
    EXPECT_EQ(log.GetSatellitesUsed(), solution.satellitesUsed);
    EXPECT_EQ(log.GetSatellitesUsedL1(), solution.satellitesUsed);
}

/// The decoder of geodetic logs reads the position logs that have no decoder of their own.
Novatel::CNovatelOMNIHPPOSB Geodetic(std::string_view name, const Sim::SState& state = State()) {
    return Novatel::CNovatelOMNIHPPOSB(Binary(name, state));
}

/// WGS-84 by its defining figures.
void ExpectPlace(const CGeodeticLog& log, const Sim::SSolution& solution) {
    const double a = 6378137.0;
    const double f = 1.0 / 298.257223563;
    const double e2 = f * (2.0 - f);
    const double latitude = log.GetLatitude() * std::acos(-1.0) / 180.0;
    const double longitude = log.GetLongitude() * std::acos(-1.0) / 180.0;
    const double height = log.GetHeight() + double{log.GetUndulation()};
    const double n = a / std::sqrt(1.0 - e2 * std::sin(latitude) * std::sin(latitude));
    EXPECT_NEAR((n + height) * std::cos(latitude) * std::cos(longitude), solution.x, 1e-7);
    EXPECT_NEAR((n + height) * std::cos(latitude) * std::sin(longitude), solution.y, 1e-7);
    EXPECT_NEAR((n * (1.0 - e2) + height) * std::sin(latitude), solution.z, 1e-7);
}

} // namespace

TEST(EncoderPositions, cartesian_logs_give_back_their_solution_to_the_last_bit) {
    const Sim::SState state = State();
    ExpectSolution(*CDecoded<CCartesianLog>("PSRXYZ"), state.pseudorange);
    ExpectSolution(*CDecoded<CCartesianLog>("RTKXYZ"), state.rtk);
    ExpectSolution(*CDecoded<CCartesianLog>("PDPXYZ"), state.pdp);
}

TEST(EncoderPositions, the_best_solution_is_rtk_while_there_is_one) {
    Sim::SState state = State();
    ExpectSolution(*CDecoded<CCartesianLog>("BESTXYZ", state), state.rtk);
    state.rtk.status = 1;
    ExpectSolution(*CDecoded<CCartesianLog>("BESTXYZ", state), state.pseudorange);
}

TEST(EncoderPositions, velocity_is_of_the_position_s_type_but_for_pseudoranges) {
    EXPECT_EQ(CDecoded<CCartesianLog>("PSRXYZ")->GetVelocityType(), 8U);
    EXPECT_EQ(CDecoded<CCartesianLog>("RTKXYZ")->GetVelocityType(), 50U);
}

TEST(EncoderPositions, the_station_is_named_where_its_corrections_are_used) {
    EXPECT_EQ(CDecoded<CCartesianLog>("RTKXYZ")->GetBaseStationID(), "0001");
    EXPECT_EQ(CDecoded<CCartesianLog>("PSRXYZ")->GetBaseStationID(), "\0\0\0\0"s);
}

TEST(EncoderPositions, the_last_bytes_tell_the_signals_used) {
    const CDecoded<CCartesianLog> integer("RTKXYZ");
    EXPECT_EQ(integer->GetSatellitesUsedMultiFrequency(), 3); // of the used ones, on two
    EXPECT_EQ(integer->GetExtendedSolutionStatus(), 0x07);    // verified, multi-frequency
    EXPECT_EQ(integer->GetGPSGLONASSMask(), 0x33);
    const CDecoded<CCartesianLog> single("PSRXYZ");
    EXPECT_EQ(single->GetExtendedSolutionStatus(), 0x06);
}

TEST(EncoderPositions, a_solution_without_satellites_uses_no_signals) {
    Sim::SState state = State();
    state.rtk = {};
    state.rtk.status = 1;
    state.rtk.satellitesTracked = 3;
    const CDecoded<CCartesianLog> log("RTKXYZ", state);
    ExpectSolution(*log, state.rtk);
    EXPECT_EQ(log->GetVelocityType(), 0U);
    EXPECT_EQ(log->GetSatellitesUsedMultiFrequency(), 0);
    EXPECT_EQ(log->GetExtendedSolutionStatus(), 0);
    EXPECT_EQ(log->GetGPSGLONASSMask(), 0);
}

TEST(EncoderPositions, geodetic_logs_tell_the_place_of_their_solution) {
    const Sim::SState state = State();
    ExpectPlace(Geodetic("PSRPOS"), state.pseudorange);
    ExpectPlace(Geodetic("RTKPOS"), state.rtk);
    ExpectPlace(Geodetic("PDPPOS"), state.pdp);
    ExpectPlace(Geodetic("BESTPOS"), state.rtk);
}

TEST(EncoderPositions, geodetic_logs_carry_the_solution_s_other_fields) {
    const Sim::SState state = State();
    const Novatel::CNovatelOMNIHPPOSB log = Geodetic("RTKPOS");
    EXPECT_EQ(log.GetSolutionStatus(), 0U);
    EXPECT_EQ(log.GetPositionType(), 50U);
    EXPECT_EQ(log.GetUndulation(), 44.5F);
    EXPECT_EQ(log.GetDatumID(), 61U);
    EXPECT_EQ(log.GetBaseStationID(), "0001");
    EXPECT_EQ(log.GetDifferentialAge(), 1.25F);
    EXPECT_EQ(log.GetSolutionAge(), state.rtk.solutionAge);
    EXPECT_EQ(log.GetSatellitesTracked(), 19);
    EXPECT_EQ(log.GetSatellitesUsed(), 17);
    EXPECT_EQ(log.GetExtendedSolutionStatus(), 0x07);
    EXPECT_EQ(log.GetGPSGLONASSMask(), 0x33);
}

TEST(EncoderPositions, deviations_are_turned_with_the_axes) {
    Sim::SState state = State();
    // On the equator, where Greenwich's meridian crosses it: up is X, east is Y, north is Z.
    state.rtk.x = 6378137.0;
    state.rtk.y = 0.0;
    state.rtk.z = 0.0;
    const Novatel::CNovatelOMNIHPPOSB log = Geodetic("RTKPOS", state);
    EXPECT_FLOAT_EQ(log.GetHeightStandardDeviation(), state.rtk.deviationX);
    EXPECT_FLOAT_EQ(log.GetLongitudeStandardDeviation(), state.rtk.deviationY);
    EXPECT_FLOAT_EQ(log.GetLatitudeStandardDeviation(), state.rtk.deviationZ);
    EXPECT_NEAR(log.GetLatitude(), 0.0, 1e-12);
    EXPECT_NEAR(log.GetLongitude(), 0.0, 1e-12);
    EXPECT_NEAR(log.GetHeight(), -44.5, 1e-8);
}

TEST(EncoderPositions, a_solution_that_does_not_exist_is_nowhere) {
    Sim::SState state = State();
    state.pseudorange = {};
    state.pseudorange.status = 1;
    const Novatel::CNovatelOMNIHPPOSB log = Geodetic("PSRPOS", state);
    EXPECT_EQ(log.GetSolutionStatus(), 1U);
    EXPECT_EQ(log.GetLatitude(), 0.0);
    EXPECT_EQ(log.GetLongitude(), 0.0);
    EXPECT_EQ(log.GetHeight(), 0.0);
    EXPECT_EQ(log.GetLatitudeStandardDeviation(), 0.0F);
}

TEST(EncoderPositions, bestpos_gives_the_daemon_undulation_and_signals) {
    const CDecoded<Novatel::CNovatelBESTPOS> log("BESTPOS");
    EXPECT_EQ(log->GetUndulation(), 44.5);
    EXPECT_EQ(log->GetExtendedSolutionStatus(), 0x07);
    EXPECT_EQ(log->GetGPSGLONASSMask(), 0x33);
}

TEST(EncoderPositions, there_is_no_l_band_position) {
    const CDecoded<CGeodeticLog> log("OMNIHPPOS");
    EXPECT_EQ(log->GetSolutionStatus(), 1U);
    EXPECT_EQ(log->GetPositionType(), 0U);
    EXPECT_EQ(log->GetSatellitesUsed(), 0);
}

TEST(EncoderPositions, pdpstat_counts_phases_while_the_filter_measures) {
    Sim::SState state = State();
    EXPECT_THAT(CDecoded<Novatel::CNovatelPDPSTAT>("PDPSTAT", state)->GetIntegers(),
                ElementsAre(19, 17, 1, 0, 17));
    EXPECT_THAT(CDecoded<Novatel::CNovatelPDPSTAT>("PDPSTAT", state)->GetReals(),
                ElementsAre(2.5, 2.75, 3.25));
    state.pdp.type = 19;
    EXPECT_THAT(CDecoded<Novatel::CNovatelPDPSTAT>("PDPSTAT", state)->GetIntegers(),
                ElementsAre(19, 0, 0, 0, 0));
}

// A satellite in the zenith and three on the horizon, a third of a turn apart: the normal equations
// are solved on paper. The decoder takes the values' bits as integers.
TEST(EncoderPositions, psrdop_tells_the_dilutions_of_the_used_satellites) {
    Sim::SState state = State();
    state.satellites.clear();
    using enum Sim::ESystem;
    state.satellites.push_back({.system = gps, .prn = 3, .elevation = 90.0, .isUsed = true});
    state.satellites.push_back({.system = gps, .prn = 4, .azimuth = 77.0, .elevation = 40.0});
    state.satellites.push_back({.system = gps, .prn = 7, .azimuth = 0.0, .isUsed = true});
    state.satellites.push_back({.system = gps, .prn = 11, .azimuth = 120.0, .isUsed = true});
    state.satellites.push_back({.system = glonass, .prn = 40, .azimuth = 240.0, .isUsed = true});

    const Bytes::Sentence log = Binary("PSRDOP", state);
    EXPECT_NEAR(Bytes::ReadFloat(log, 28), std::sqrt(3.0), 1e-6);       // GDOP
    EXPECT_NEAR(Bytes::ReadFloat(log, 32), std::sqrt(8.0 / 3.0), 1e-6); // PDOP
    EXPECT_NEAR(Bytes::ReadFloat(log, 36), std::sqrt(4.0 / 3.0), 1e-6); // HDOP
    EXPECT_NEAR(Bytes::ReadFloat(log, 40), std::sqrt(5.0 / 3.0), 1e-6); // HTDOP
    EXPECT_NEAR(Bytes::ReadFloat(log, 44), std::sqrt(1.0 / 3.0), 1e-6); // TDOP
    EXPECT_EQ(Bytes::ReadFloat(log, 48), 5.0F);                         // cut-off
    const CDecoded<Novatel::CNovatelPSRDOP> decoded("PSRDOP", state);
    EXPECT_THAT(decoded->GetPRNs(), ElementsAre(3, 7, 11, 40));
    EXPECT_EQ(decoded->GetElevationCutOff(),
              static_cast<float>(std::bit_cast<std::uint32_t>(5.0F)));
}

TEST(EncoderPositions, psrdop_without_a_position_has_no_geometry) {
    Sim::SState state = State();
    state.satellites.resize(2);
    const Bytes::Sentence log = Binary("PSRDOP", state);
    EXPECT_EQ(Bytes::ReadFloat(log, 28), 9999.0F);
    EXPECT_EQ(Bytes::ReadFloat(log, 36), 9999.0F);
}

TEST(EncoderPositions, refstation_is_where_the_base_is) {
    const CDecoded<Novatel::CNovatelREFSTATION> log("REFSTATION");
    EXPECT_EQ(log->GetX(), 4263000.5);
    EXPECT_EQ(log->GetY(), -131000.75);
    EXPECT_EQ(log->GetZ(), 4727000.125);
    EXPECT_EQ(log->GetStationType(), 4U);
    EXPECT_EQ(log->GetStationID(), "0001");
}

TEST(EncoderPositions, time_tells_clock_and_utc) {
    const CDecoded<Novatel::CNovatelTIME> log("TIME");
    EXPECT_EQ(log->GetClockStatus(), 0U);
    EXPECT_EQ(log->GetClockOffset(), 12.5e-9);
    EXPECT_EQ(log->GetUTCOffset(), -16.0);
    EXPECT_EQ(log->GetUTCYear(), 2015U);
    EXPECT_EQ(log->GetUTCMonth(), 1);
    EXPECT_EQ(log->GetUTCDay(), 23);
    EXPECT_EQ(log->GetUTCHour(), 12);
    EXPECT_EQ(log->GetUTCMinute(), 34);
    EXPECT_EQ(log->GetUTCMilliseconds(), 56250U);
    EXPECT_EQ(log->GetUTCStatus(), 1U);
}

TEST(EncoderPositions, time_is_not_valid_before_the_clock_is_steered) {
    Sim::SReceiverInfo info;
    info.timeStatus = 100;
    const CDecoded<Novatel::CNovatelTIME> log("TIME", State(), info);
    EXPECT_EQ(log->GetClockStatus(), 1U);
    EXPECT_EQ(log->GetUTCStatus(), 0U);
}
