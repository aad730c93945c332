#include "hub/gpsd/UTC.h"

#include <gtest/gtest.h>
#include <limits>

using Hub::GPSD::ISO8601;
using Hub::GPSD::ToUTC;

TEST(UTC, is_written_as_iso_8601_with_milliseconds) {
    EXPECT_EQ(ISO8601(0.0), "1970-01-01T00:00:00.000Z");
    EXPECT_EQ(ISO8601(1763834800.0), "2025-11-22T18:06:40.000Z");
    EXPECT_EQ(ISO8601(951827696.125), "2000-02-29T12:34:56.125Z");
}

TEST(UTC, carries_a_rounding_through_to_the_year) {
    EXPECT_EQ(ISO8601(1767225599.9994), "2025-12-31T23:59:59.999Z");
    EXPECT_EQ(ISO8601(1767225599.9996), "2026-01-01T00:00:00.000Z");
}

TEST(UTC, is_told_in_the_parts_that_are_asked_for) {
    const auto utc = ToUTC(1763834800.126, 100);
    ASSERT_TRUE(utc);
    EXPECT_EQ(utc->second, 40);
    EXPECT_EQ(utc->fraction, 13);
}

TEST(UTC, ends_with_the_year_9999) {
    EXPECT_EQ(ISO8601(253402300799.0), "9999-12-31T23:59:59.000Z");
    EXPECT_EQ(ISO8601(253402300799.9996), std::nullopt);
    EXPECT_EQ(ISO8601(253402300800.0), std::nullopt);
    EXPECT_EQ(ISO8601(1e300), std::nullopt);
}

TEST(UTC, does_not_exist_before_1970_or_for_what_is_no_number) {
    EXPECT_EQ(ISO8601(-1.0), std::nullopt);
    EXPECT_EQ(ISO8601(std::numeric_limits<double>::quiet_NaN()), std::nullopt);
    EXPECT_EQ(ISO8601(std::numeric_limits<double>::infinity()), std::nullopt);
}
