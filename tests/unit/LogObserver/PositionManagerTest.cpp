#include "LogObserver/PositionManagerTesting.h"
#include "Support/TextSentences.h"

#include <cmath>
#include <csignal>
#include <limits>

namespace {

using Lines = std::vector<std::string>;
using nlohmann::json;

constexpr std::uint16_t kPSRXYZ = 243;
constexpr std::uint16_t kRTKXYZ = 244;
constexpr std::uint16_t kPDPXYZ = 471;
constexpr std::uint16_t kPSRSATS = 1162;
constexpr std::uint16_t kRTKSATS = 1174;
constexpr std::uint16_t kPDPSATS = 1234;

class PositionManager : public CPositionManagerTesting {};

/// A solution with a value of its own in every field.
Sentences::Cartesian FullSolution(std::uint16_t log) {
    return Sentences::Cartesian(log)
        .u32(0, 0)
        .u32(4, 50)
        .position(-2694045.125, -4297222.75, 3854482.5)
        .f32(32, 0.5F)
        .f32(36, 0.25F)
        .f32(40, 0.125F)
        .u32(44, 1)
        .u32(48, 8)
        .f64(52, 1.5)
        .f64(60, -2.5)
        .f64(68, 3.5)
        .f32(92, 0.15625F)
        .f32(96, 2.0F)
        .f32(100, 0.75F)
        .u8(104, 14)
        .u8(105, 11)
        .u8(106, 10)
        .u8(107, 9)
        .u8(108, 77)
        .u8(109, 0x0B)
        .u8(110, 0x55)
        .u8(111, 0x33);
}

constexpr char kFullLine[] = "0,50,1,8,0.156250,2.000000,0.750000,14,11,10,9,1,5,0,0x33";

Novatel::CNovatelSatsLog::SSatellite Satellite(std::uint32_t system, std::uint32_t mask) {
    return {.system = system, .id = 5, .status = 0, .signalMask = mask};
}

/// Three GPS and two GLONASS satellites used on L1, and others.
Sentences::Sats SomeSatellites(std::uint16_t log) {
    Sentences::Sats sats(log);
    sats.satellite(Satellite(0, 1)).satellite(Satellite(0, 3)).satellite(Satellite(0, 7));
    sats.satellite(Satellite(1, 1)).satellite(Satellite(1, 5));
    sats.satellite(Satellite(0, 2)).satellite(Satellite(1, 6)).satellite(Satellite(2, 1));
    return sats;
}

class CWithoutClient : public CPositionManager {
public:
    using CPositionManager::CPositionManager;
    void LoseClient() { m_positionAPI.reset(); }
};

} // namespace

TEST_F(PositionManager, begins_with_a_solution_that_says_there_is_none) {
    m_published.Forget();
    const CPositionManager another(m_logger, m_config);
    ASSERT_EQ(m_published.Count("position.ecef"), 1);
    json solution = Solution();
    EXPECT_GT(solution["hostTime"], 1.7e9);
    solution.erase("hostTime");
    EXPECT_EQ(solution, json::parse(R"({"name":"CPositionAPI","x":0,"y":0,"z":0,"vx":0,"vy":0,
        "vz":0,"sx":1e9,"sy":1e9,"sz":1e9,"week":0,"seconds":0,"positionQuality":0,"fixQuality":0,
        "differentialAge":0,"satellites":[0,0,0],"hdop":100,"vdop":100,"solutionClass":4,
        "velocityLatency":0})"));
}

TEST_F(PositionManager, publishes_every_field_of_a_solution) {
    Offer(FullSolution(kRTKXYZ).week(2300).milliseconds(345600250));
    json solution = Solution();
    EXPECT_GT(solution["hostTime"], 1.7e9);
    solution.erase("hostTime");
    EXPECT_EQ(solution, json::parse(R"({"name":"CPositionAPI","x":-2694045.125,"y":-4297222.75,
        "z":3854482.5,"vx":1.5,"vy":-2.5,"vz":3.5,"sx":0.5,"sy":0.25,"sz":0.125,"week":2300,
        "seconds":345600.25,"positionQuality":1,"fixQuality":1,"differentialAge":2.0,
        "satellites":[11,0,0],"hdop":100,"vdop":100,"solutionClass":6,
        "velocityLatency":0.15625})"));
    EXPECT_EQ(m_published.Count("position.ecef"), 1);
}

TEST_F(PositionManager, tells_of_an_rtkxyz_in_status_lines) {
    Offer(FullSolution(kRTKXYZ));
    OfferSolution(kRTKXYZ, 34);
    EXPECT_EQ(Essential("rtkxyz"), (Lines{"1", "2"}));
    EXPECT_EQ(Essential("rtkxyz_info")[0], kFullLine);
    EXPECT_EQ(Essential("rtkxyz_quality_flag"), (Lines{"3", "2"}));
    EXPECT_EQ(Essential("pos_messages"), (Lines{"1", "2"}));
    EXPECT_EQ(m_published.Count("message18"), 0);
}

TEST_F(PositionManager, tells_of_a_pdpxyz_without_a_pdpstat_only_its_count) {
    OfferSolution(kPDPXYZ, 16);
    EXPECT_EQ(Essential("message18"), (Lines{"1"}));
    EXPECT_EQ(m_published.Count("message18_info"), 0);
    EXPECT_EQ(m_published.Count("message18_pdpstat"), 0);
    EXPECT_EQ(Essential("pos_messages"), (Lines{"1"}));
    EXPECT_EQ(Solution()["positionQuality"], 1);
    EXPECT_EQ(Solution()["fixQuality"], 1);
}

TEST_F(PositionManager, tells_of_a_pdpxyz_and_the_pdpstat_before_it) {
    Offer(Sentences::Pdpstat()
              .u32(0, 1)
              .u32(4, 2)
              .u32(8, 3)
              .u32(12, 4294967295U)
              .u32(16, 5)
              .f64(20, 1.25)
              .f64(28, 0.1234567)
              .f64(36, 123.5));
    m_published.Forget();
    Offer(FullSolution(kPDPXYZ));
    EXPECT_EQ(Essential("message18_info"), (Lines{kFullLine}));
    EXPECT_EQ(Essential("message18_pdpstat"), (Lines{"1,2,3,-1,5, 1.25,0.12346,123.50000"}));
}

TEST_F(PositionManager, publishes_nothing_for_a_pdpstat_itself) {
    OfferPDPStat(1, 0);
    EXPECT_EQ(m_published.All(), Lines{});
}

TEST_F(PositionManager, shows_psrxyz_but_makes_no_solution_of_it) {
    Offer(FullSolution(kPSRXYZ).u32(0, 1));
    EXPECT_EQ(Essential("psrxyz_info").size(), 1U);
    EXPECT_EQ(m_published.Messages().size(), 1U);
    m_published.Forget();
    Offer(FullSolution(kPSRXYZ).position(6378137.0, 0.0, 0.0));
    EXPECT_EQ(Essential("psrxyz_info"), (Lines{kFullLine}));
    EXPECT_EQ(Essential("psrxyz_pos"),
              (Lines{"6378137.0000,0.0000,0.0000,0.000000000000,0.000000000000,0.0000"}));
    EXPECT_EQ(m_published.Messages().size(), 2U);
}

TEST_F(PositionManager, converts_psrxyz_to_degrees_and_metres) {
    // 37.5 N, 122.25 W, 12.5 m, by the closed formulas.
    Offer(FullSolution(kPSRXYZ).position(-2703436.6149, -4284824.5446, 3861424.1519));
    const Lines lines = Essential("psrxyz_pos");
    ASSERT_EQ(lines.size(), 1U);
    double x = 0, y = 0, z = 0, latitude = 0, longitude = 0, height = 0;
    ASSERT_EQ(std::sscanf(lines[0].c_str(), "%lf,%lf,%lf,%lf,%lf,%lf", &x, &y, &z, &latitude,
                          &longitude, &height),
              6);
    const double sine = std::sin(latitude * std::acos(-1.0) / 180.0);
    const double radius = 6378137.0 / std::sqrt(1.0 - 6.69437999014e-3 * sine * sine);
    EXPECT_NEAR(z, (radius * (1.0 - 6.69437999014e-3) + height) * sine, 2e-4);
    EXPECT_NEAR(std::hypot(x, y), (radius + height) * std::sqrt(1.0 - sine * sine), 2e-4);
    EXPECT_NEAR(std::tan(longitude * std::acos(-1.0) / 180.0), y / x, 1e-11);
}

TEST_F(PositionManager, feeds_the_reference_manager_with_computed_psrxyz_positions) {
    ReferenceManagerAPI referenceManager;
    m_manager.SetReferenceManager(&referenceManager);
    Offer(SomeSatellites(kPSRSATS));
    Offer(FullSolution(kPSRXYZ).week(2300).milliseconds(100));
    ASSERT_EQ(m_published.Count("reference.gps"), 1);
    EXPECT_EQ(Last("reference.gps"),
              json::parse(R"({"name":"ReferenceManagerAPI","week":2300,"seconds":0.1,
                  "x":-2694045.125,"y":-4297222.75,"z":3854482.5,"gps":3,"glonass":2,"other":0})"));
    Offer(FullSolution(kPSRXYZ).u32(0, 1));
    EXPECT_EQ(m_published.Count("reference.gps"), 1);
}

TEST_F(PositionManager, counts_psrdops_and_makes_the_two_dops_of_the_last) {
    // What the receiver sends as 1.5 and 2.0 is kept as the integers of its bits.
    Offer(Sentences::Psrdop().f32(4, 1.5F).f32(8, 2.0F));
    EXPECT_EQ(Status("info", "psrdop_messages"), (Lines{"1"}));
    OfferSolution(kRTKXYZ, 16);
    EXPECT_EQ(Solution()["hdop"], 1073741824.0);
    EXPECT_DOUBLE_EQ(Solution()["vdop"], std::hypot(1069547520.0, 1073741824.0));
    Offer(Sentences::Psrdop().u32(4, 3).u32(8, 4));
    OfferSolution(kRTKXYZ, 16);
    EXPECT_EQ(Solution()["hdop"], 4.0);
    EXPECT_EQ(Solution()["vdop"], 5.0);
    EXPECT_EQ(Status("info", "psrdop_messages"), (Lines{"1", "2"}));
}

TEST_F(PositionManager, takes_the_satellites_of_each_solution_from_its_own_list) {
    Offer(SomeSatellites(kRTKSATS));
    Offer(SomeSatellites(kPSRSATS));
    OfferSolution(kPDPXYZ, 16);
    EXPECT_EQ(Solution()["satellites"], json::parse("[9,0,0]"));
    OfferSolution(kRTKXYZ, 16);
    EXPECT_EQ(Solution()["satellites"], json::parse("[3,2,0]"));
    Offer(SomeSatellites(kPDPSATS).satellite(Satellite(0, 1)));
    OfferSolution(kPDPXYZ, 16);
    EXPECT_EQ(Solution()["satellites"], json::parse("[4,2,0]"));
}

TEST_F(PositionManager, takes_its_own_count_when_the_list_has_no_gps_satellite) {
    Offer(Sentences::Sats(kPDPSATS).satellite(Satellite(1, 1)).satellite(Satellite(0, 2)));
    Offer(Sentences::Sats(kRTKSATS).satellite(Satellite(1, 1)));
    OfferSolution(kPDPXYZ, 16);
    EXPECT_EQ(Solution()["satellites"], json::parse("[9,0,0]"));
    OfferSolution(kRTKXYZ, 16);
    EXPECT_EQ(Solution()["satellites"], json::parse("[9,0,0]"));
}

TEST_F(PositionManager, forgets_the_satellites_of_the_list_before) {
    Offer(SomeSatellites(kRTKSATS));
    Offer(Sentences::Sats(kRTKSATS));
    OfferSolution(kRTKXYZ, 16);
    EXPECT_EQ(Solution()["satellites"], json::parse("[9,0,0]"));
}

TEST_F(PositionManager, hands_on_the_base_station) {
    Offer(Sentences::Refstation().f64(4, 1.0625).f64(12, -2.5).f64(20, 3.0));
    EXPECT_EQ(Essential("reference_position_ecef"), (Lines{"1.062,-2.500,3.000"}));
    EXPECT_EQ(Last("position.base"),
              json::parse(R"({"name":"CPositionAPI","x":1.0625,"y":-2.5,"z":3})"));
}

TEST_F(PositionManager, hands_on_the_geoid_of_a_bestpos) {
    Offer(Sentences::Bestpos().undulation(-29.25F).extendedStatus(0x0B).gpsGlonassMask(0x0F));
    EXPECT_EQ(Essential("novatel_undulation"), (Lines{"-29.250000"}));
    EXPECT_EQ(Essential("bestpos_extended_solution_info"), (Lines{"1,5,0x0F"}));
    EXPECT_EQ(Last("nmea.geoid"), json::parse(R"({"name":"CNMEAHandlerAPI","separation":-29.25})"));
    m_published.Forget();
    Offer(Sentences::Bestpos().extendedStatus(0xF4).gpsGlonassMask(0xAB));
    EXPECT_EQ(Essential("bestpos_extended_solution_info"), (Lines{"0,2,0xAB"}));
}

TEST_F(PositionManager, passes_over_everything_else) {
    m_manager.NewRecord(nullptr);
    Offer(Sentences::Nmea("GPGSV,1"));
    Offer(Sentences::Cartesian(241));
    Offer(Sentences::BinaryLog(999));
    for (const std::uint16_t log : {42, 174, 175, 243, 244, 471, 1085, 1162, 1174, 1234}) {
        Offer(Sentences::Response(log));
    }
    EXPECT_EQ(m_published.All(), Lines{});
}

TEST_F(PositionManager, lets_no_number_of_a_log_end_it) {
    for (const double number :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
          -std::numeric_limits<double>::infinity()}) {
        const auto single = static_cast<float>(number);
        const std::string text = std::isnan(number) ? "nan" : number > 0 ? "inf" : "-inf";
        m_published.Forget();
        for (const std::uint16_t log : {kPSRXYZ, kRTKXYZ, kPDPXYZ}) {
            Sentences::Cartesian sentence = FullSolution(log);
            for (const std::size_t offset : {8, 16, 24, 52, 60, 68}) {
                sentence.f64(offset, number);
            }
            for (const std::size_t offset : {32, 36, 40, 76, 80, 84, 92, 96, 100}) {
                sentence.f32(offset, single);
            }
            Offer(sentence);
        }
        EXPECT_EQ(Essential("rtkxyz_info")[0],
                  "0,50,1,8," + text + "," + text + "," + text + ",14,11,10,9,1,5,0,0x33");
        EXPECT_EQ(Essential("psrxyz_pos")[0].find(text + "," + text + "," + text), 0U);
        for (const char* key : {"x", "y", "z", "vx", "vy", "vz", "sx", "sy", "sz",
                                "differentialAge", "velocityLatency"}) {
            EXPECT_TRUE(Solution()[key].is_null()) << key;
        }
        Offer(Sentences::Refstation().f64(4, number).f64(12, number).f64(20, number));
        EXPECT_TRUE(Last("position.base")["y"].is_null());
        EXPECT_EQ(Essential("reference_position_ecef")[0], text + "," + text + "," + text);
        Offer(Sentences::Bestpos().undulation(single));
        EXPECT_TRUE(Last("nmea.geoid")["separation"].is_null());
        EXPECT_EQ(Essential("novatel_undulation")[0], text);
        Offer(Sentences::Pdpstat().u32(16, 1).f64(20, number).f64(28, number).f64(36, number));
        OfferSolution(kPDPXYZ, 16);
        const std::string padded = std::string(5 - std::min<std::size_t>(5, text.size()), ' ');
        EXPECT_EQ(Essential("message18_pdpstat").back(),
                  "0,0,0,0,1," + padded + text + "," + text + "," + text);
    }
}

TEST_F(PositionManager, without_its_client_ends_by_assertion) {
    CWithoutClient manager(m_logger, m_config);
    manager.LoseClient();
    const std::unique_ptr<CGPSRecord> record(CreateRecord(FullSolution(kPDPXYZ)));
    EXPECT_EXIT(manager.NewRecord(record.get()), testing::KilledBySignal(SIGABRT),
                "void CPositionManager::NewPositionPacket\\(Novatel::CNovatelCartesianLog\\*\\): "
                "Assertion `m_positionAPI' failed");
}
