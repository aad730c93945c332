#include "LogObserver/PositionManagerTesting.h"

#include <map>

namespace {

using Lines = std::vector<std::string>;

constexpr std::uint16_t kRTKXYZ = 244;
constexpr std::uint16_t kPDPXYZ = 471;
constexpr std::uint32_t kLastType = 70;
constexpr std::uint32_t kPhases = 7; ///< any number but 0

const std::map<std::uint32_t, int> kClasses = {{16, 4}, {17, 4}, {18, 4}, {20, 4}, {32, 5},
                                               {33, 5}, {48, 5}, {66, 5}, {34, 6}, {49, 6},
                                               {50, 6}, {51, 6}, {64, 2}, {65, 2}};
const std::map<std::uint32_t, int> kFixQualities = {{17, 2}, {18, 2}, {20, 2}, {34, 2}, {49, 2},
                                                    {64, 2}, {65, 2}, {66, 2}, {50, 4}};
const std::map<std::uint32_t, int> kBestTypes = {{64, 3}, {50, 3}, {65, 2}, {49, 2}, {34, 2}};

int Look(const std::map<std::uint32_t, int>& table, std::uint32_t type, int otherwise) {
    const auto row = table.find(type);
    return row == table.end() ? otherwise : row->second;
}

class PositionQuality : public CPositionManagerTesting {
protected:
    struct SResult {
        int positionQuality, fixQuality, solutionClass;
        bool operator==(const SResult&) const = default;
    };

    SResult Result(std::uint16_t log, std::uint32_t type, std::uint32_t status = 0) {
        m_published.Forget();
        OfferSolution(log, type, status);
        const nlohmann::json solution = Solution();
        return {solution["positionQuality"], solution["fixQuality"], solution["solutionClass"]};
    }
    int Quality(std::uint32_t type = 16) { return Result(kPDPXYZ, type).positionQuality; }

    /// One epoch whose filter has lost all phases.
    void LosePhases() {
        OfferPDPStat(1, 0);
        OfferSolution(kPDPXYZ, 16);
    }
    int Raised() const {
        return m_published.Count(
            R"(diagnostics.raise "name":"CPositionManager","code":79141,"sub":2,"value":1)");
    }
    int Cleared() const {
        return m_published.Count(
            R"(diagnostics.clear "name":"CPositionManager","code":79141,"sub":2)");
    }
    void Advance(double seconds) { m_clock.Advance(Core::Time::FromSeconds(seconds)); }
};

} // namespace

TEST_F(PositionQuality, without_a_pdpstat_is_one_for_every_type_of_a_class) {
    for (const std::uint16_t log : {kRTKXYZ, kPDPXYZ}) {
        for (std::uint32_t type = 0; type <= kLastType; ++type) {
            const int solutionClass = Look(kClasses, type, -1);
            const int quality = solutionClass == -1 ? 0 : 1;
            EXPECT_EQ(Result(log, type), (SResult{quality, quality, solutionClass})) << type;
            EXPECT_EQ(Result(log, type, 1), (SResult{0, 0, solutionClass})) << type;
        }
    }
}

TEST_F(PositionQuality, of_an_rtkxyz_goes_by_its_type) {
    OfferPDPStat(1, kPhases);
    for (std::uint32_t type = 0; type <= kLastType; ++type) {
        const int solutionClass = Look(kClasses, type, -1);
        const SResult wanted =
            solutionClass == -1
                ? SResult{0, 0, -1}
                : SResult{Look(kBestTypes, type, 1), Look(kFixQualities, type, 1), solutionClass};
        EXPECT_EQ(Result(kRTKXYZ, type), wanted) << type;
        EXPECT_EQ(Result(kRTKXYZ, type, 1), (SResult{0, 0, solutionClass})) << type;
    }
    EXPECT_EQ(Cleared(), 0);
}

TEST_F(PositionQuality, of_a_pdpxyz_goes_by_its_type_then_by_the_smoothed_flag) {
    for (const std::uint32_t flag : {0U, 1U, 2U}) {
        OfferPDPStat(flag, kPhases);
        for (std::uint32_t type = 0; type <= kLastType; ++type) {
            const int solutionClass = Look(kClasses, type, -1);
            const SResult wanted = solutionClass == -1
                                       ? SResult{0, 0, -1}
                                       : SResult{Look(kBestTypes, type, flag == 1 ? 2 : 1),
                                                 Look(kFixQualities, type, 1), solutionClass};
            EXPECT_EQ(Result(kPDPXYZ, type), wanted) << type << " " << flag;
        }
    }
}

TEST_F(PositionQuality, is_held_down_for_thirty_seconds_from_the_last_epoch_without_phases) {
    LosePhases();
    EXPECT_EQ(Raised(), 1);
    OfferPDPStat(1, kPhases);
    EXPECT_EQ(Quality(), 1);
    Advance(29.999);
    EXPECT_EQ(Quality(), 1);
    EXPECT_EQ(Cleared(), 0);
    Advance(0.001);
    EXPECT_EQ(Quality(), 2);
    EXPECT_EQ(Cleared(), 1);
    EXPECT_EQ(Quality(), 2);
    EXPECT_EQ(Cleared(), 1); // in this epoch once more: Quality() forgets what was before
}

TEST_F(PositionQuality, starts_its_lockout_anew_with_each_epoch_without_phases) {
    LosePhases();
    Advance(20.0);
    LosePhases();
    EXPECT_EQ(Raised(), 2);
    OfferPDPStat(1, kPhases);
    Advance(29.0);
    EXPECT_EQ(Quality(), 1);
    Advance(1.0);
    EXPECT_EQ(Quality(), 2);
}

TEST_F(PositionQuality, is_not_held_down_for_the_best_types_and_for_rtkxyz_never_cleared) {
    LosePhases();
    EXPECT_EQ(Quality(50), 3);
    EXPECT_EQ(Quality(65), 2);
    Advance(31.0);
    OfferPDPStat(1, kPhases);
    EXPECT_EQ(Result(kRTKXYZ, 16).positionQuality, 1);
    EXPECT_EQ(Quality(50), 3);
    EXPECT_EQ(Cleared(), 0);
}

TEST_F(PositionQuality, warns_when_the_phases_are_gone_for_one_epoch) {
    OfferPDPStat(1, kPhases);
    OfferSolution(kPDPXYZ, 16);
    m_published.Forget();
    Offer(Sentences::Pdpstat().u32(8, 1).week(2300).milliseconds(345600500));
    OfferSolution(kPDPXYZ, 16);
    EXPECT_EQ(Raised(), 0);
    EXPECT_EQ(m_published.Count(R"("name":"NovatelPositionManager","level":"warning",)"
                                R"("text":"Glide dropped zero phase measurements: )"
                                R"(2300 345600.500000")"),
              1);
    EXPECT_EQ(Quality(), 1); // the second epoch in a row: now it is a lockout
    EXPECT_EQ(Raised(), 1);
}

TEST_F(PositionQuality, has_a_lockout_of_the_configured_seconds) {
    m_config.SetInteger("glide", "obstruction_lockout", 2);
    CPositionManager manager(m_logger, m_config);
    const auto offer = [&manager](const Bytes::Sentence& sentence) {
        const std::unique_ptr<CGPSRecord> record(CreateRecord(sentence));
        manager.NewRecord(record.get());
    };
    offer(Sentences::Pdpstat().u32(8, 1));
    offer(Sentences::Cartesian(kPDPXYZ).positionType(16));
    offer(Sentences::Pdpstat().u32(8, 1).u32(16, kPhases));
    Advance(1.999);
    offer(Sentences::Cartesian(kPDPXYZ).positionType(16));
    EXPECT_EQ(Solution()["positionQuality"], 1);
    Advance(0.001);
    offer(Sentences::Cartesian(kPDPXYZ).positionType(16));
    EXPECT_EQ(Solution()["positionQuality"], 2);
}

TEST_F(PositionQuality, knows_no_lockout_with_newer_firmware) {
    m_manager.SetReceiverStatus(&m_receiverStatus);
    for (const auto& [firmware, raised] : std::map<std::string, int>{{"L6X010099", 1},
                                                                     {"L6X010100", 1},
                                                                     {"L6X010101", 0},
                                                                     {"OEM010201RN0000", 0},
                                                                     {"3.701", 1}}) {
        SetFirmware(firmware);
        m_published.Forget();
        LosePhases();
        EXPECT_EQ(Raised(), raised) << firmware;
    }
}

TEST_F(PositionQuality, neither_warns_nor_counts_phases_with_newer_firmware) {
    m_manager.SetReceiverStatus(&m_receiverStatus);
    SetFirmware("L6X010101");
    OfferPDPStat(1, kPhases);
    OfferSolution(kPDPXYZ, 16);
    m_published.Forget();
    LosePhases();
    LosePhases();
    EXPECT_EQ(Raised(), 0);
    EXPECT_EQ(m_published.Count("logger.event"), 0);
    EXPECT_EQ(m_published.Count("message18_pdpstat"), 2);
}

TEST_F(PositionQuality, keeps_its_lockout_without_a_receiver_status_observer) {
    LosePhases();
    EXPECT_EQ(Raised(), 1);
}
