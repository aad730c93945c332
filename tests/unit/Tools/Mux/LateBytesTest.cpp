#include "mux/LateBytes.h"
#include "Support/FakeClock.h"

#include <gtest/gtest.h>

using Mux::CLateBytes;

namespace {

constexpr Core::Time kSecond = Core::Time::FromMilliseconds(1000);

class LateBytes : public testing::Test {
protected:
    CFakeClock m_clock;
    CLateBytes m_late;
};

} // namespace

TEST_F(LateBytes, come_out_in_order_and_whole) {
    EXPECT_TRUE(m_late.Add("first"));
    EXPECT_TRUE(m_late.Add("second"));
    EXPECT_EQ(m_late.Size(), 11U);
    EXPECT_EQ(m_late.Take(), "first");
    EXPECT_EQ(m_late.Size(), 6U);
    EXPECT_EQ(m_late.Take(), "second");
    EXPECT_EQ(m_late.Take(), "");
}

TEST_F(LateBytes, are_256_KiB_at_most_and_a_piece_that_does_not_fit_is_refused_whole) {
    ASSERT_TRUE(m_late.Add(std::string(262'144 - 3, 'x')));
    EXPECT_FALSE(m_late.Add("four"));
    EXPECT_TRUE(m_late.Add("abc"));
    EXPECT_FALSE(m_late.Add("d"));
    EXPECT_EQ(m_late.Size(), 262'144U);
}

TEST_F(LateBytes, are_dropped_when_they_are_older_than_ten_seconds) {
    ASSERT_TRUE(m_late.Add("old"));
    m_clock.Advance(kSecond);
    ASSERT_TRUE(m_late.Add("younger"));
    m_clock.Advance(Core::Time::FromMilliseconds(9000));
    EXPECT_EQ(m_late.DropOld(), 0U);
    m_clock.Advance(Core::Time::FromMilliseconds(1));
    EXPECT_EQ(m_late.DropOld(), 3U);
    EXPECT_EQ(m_late.Take(), "younger");
}

TEST_F(LateBytes, are_counted_when_all_are_dropped) {
    ASSERT_TRUE(m_late.Add("one"));
    ASSERT_TRUE(m_late.Add("two"));
    EXPECT_EQ(m_late.Clear(), 6U);
    EXPECT_EQ(m_late.Size(), 0U);
    EXPECT_EQ(m_late.Take(), "");
}
