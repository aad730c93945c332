#include "LogObserver/SolutionQuality.h"

#include <gtest/gtest.h>

#include <map>

using namespace SolutionQuality;

namespace {

constexpr std::uint32_t kLastType = 70;

using Table = std::map<std::uint32_t, std::int32_t>;

std::int32_t Look(const Table& table, std::uint32_t type, std::int32_t otherwise) {
    const auto row = table.find(type);
    return row == table.end() ? otherwise : row->second;
}

const Table kClasses = {{16, 4}, {17, 4}, {18, 4}, {20, 4}, {32, 5}, {33, 5}, {48, 5},
                        {66, 5}, {34, 6}, {49, 6}, {50, 6}, {51, 6}, {64, 2}, {65, 2}};

} // namespace

TEST(SolutionQuality, puts_every_position_type_into_its_class) {
    for (std::uint32_t type = 0; type <= kLastType; ++type) {
        EXPECT_EQ(SolutionClass(type), Look(kClasses, type, -1)) << type;
    }
    EXPECT_EQ(SolutionClass(0xFFFFFFFF), -1);
}

TEST(SolutionQuality, is_usable_when_computed_and_of_a_class) {
    for (std::uint32_t type = 0; type <= kLastType; ++type) {
        EXPECT_EQ(IsUsable(0, type), kClasses.contains(type)) << type;
        EXPECT_FALSE(IsUsable(1, type)) << type;
        EXPECT_FALSE(IsUsable(0xFFFFFFFF, type)) << type;
    }
}

TEST(SolutionQuality, gives_every_position_type_its_fix_quality) {
    const Table table = {{17, 2}, {18, 2}, {20, 2}, {34, 2}, {49, 2},
                         {64, 2}, {65, 2}, {66, 2}, {50, 4}};
    for (std::uint32_t type = 0; type <= kLastType; ++type) {
        EXPECT_EQ(FixQuality(type), Look(table, type, 1)) << type;
    }
}

TEST(SolutionQuality, knows_the_types_that_decide_by_themselves) {
    const Table table = {{64, 3}, {50, 3}, {65, 2}, {49, 2}, {34, 2}};
    for (std::uint32_t type = 0; type <= kLastType; ++type) {
        EXPECT_EQ(QualityOfType(type), Look(table, type, 0)) << type;
    }
}

TEST(SolutionQuality, flags_every_rtkxyz_by_its_type) {
    const Table table = {{34, 2}, {49, 2}, {50, 3}};
    for (std::uint32_t type = 0; type <= kLastType; ++type) {
        EXPECT_EQ(RTKXYZQualityFlag(type), Look(table, type, 1)) << type;
    }
}
