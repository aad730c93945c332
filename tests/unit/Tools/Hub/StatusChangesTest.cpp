#include "hub/StatusChanges.h"

#include "Support/FakeClock.h"

#include <gtest/gtest.h>

namespace {

using Hub::CStatusChanges;
using Hub::SStatus;

/// Ten seconds, and a clock that the test moves.
class StatusChanges : public testing::Test {
protected:
    void Add(const std::string& key, const std::string& value,
             Hub::EStatusLevel level = Hub::EStatusLevel::essential) {
        SStatus status;
        status.name = "port";
        status.level = level;
        status.key = key;
        status.value = value;
        m_changes.Add(status);
    }

    static std::vector<std::string> Shown(const std::vector<SStatus>& statuses) {
        std::vector<std::string> shown;
        for (const SStatus& status : statuses) {
            shown.push_back(status.name + " " + status.key + "=" + status.value);
        }
        return shown;
    }

    std::vector<std::string> Due() { return Shown(m_changes.TakeDue()); }
    std::vector<std::string> All() { return Shown(m_changes.TakeAll()); }
    void Pass(int seconds) { m_clock.Advance(Core::Time::FromSeconds(seconds)); }

    using Lines = std::vector<std::string>;
    CFakeClock m_clock;
    CStatusChanges m_changes{Core::Time::FromSeconds(10.0)};
};

} // namespace

TEST_F(StatusChanges, hand_out_the_first_value_at_once) {
    Add("a", "1");
    Add("b", "1");
    EXPECT_EQ(Due(), (Lines{"port a=1", "port b=1"}));
    EXPECT_EQ(Due(), Lines{});
}

TEST_F(StatusChanges, leave_out_a_value_that_is_the_same) {
    Add("a", "");
    EXPECT_EQ(Due(), Lines{"port a="});
    Pass(20);
    Add("a", "");
    EXPECT_EQ(Due(), Lines{});
}

TEST_F(StatusChanges, keep_the_last_value_until_the_interval_is_over) {
    Add("a", "1");
    Due();
    Pass(5);
    Add("a", "2");
    Add("a", "3");
    EXPECT_EQ(Due(), Lines{});
    Pass(4);
    EXPECT_EQ(Due(), Lines{});
    Pass(1);
    EXPECT_EQ(Due(), Lines{"port a=3"});
    Add("a", "4");
    Pass(9);
    EXPECT_EQ(Due(), Lines{});
}

TEST_F(StatusChanges, forget_a_change_that_was_taken_back_within_the_interval) {
    Add("a", "1");
    Due();
    Add("a", "2");
    Add("a", "1");
    Pass(10);
    EXPECT_EQ(Due(), Lines{});
}

TEST_F(StatusChanges, hand_out_at_once_what_has_been_the_same_for_long) {
    Add("a", "1");
    Due();
    Pass(100);
    Add("a", "2");
    EXPECT_EQ(Due(), Lines{"port a=2"});
}

TEST_F(StatusChanges, hand_out_what_waits_when_asked_for_all) {
    Add("a", "1");
    Due();
    Add("a", "2");
    EXPECT_EQ(All(), Lines{"port a=2"});
    EXPECT_EQ(All(), Lines{});
}

TEST_F(StatusChanges, are_those_of_the_essential_ones) {
    Add("a", "1", Hub::EStatusLevel::info);
    EXPECT_EQ(All(), Lines{});
}

TEST_F(StatusChanges, count_the_statuses_that_are_too_many) {
    for (std::size_t i = 0; i < CStatusChanges::kMostStatuses + 3; ++i) {
        Add(std::to_string(i), "1");
    }
    EXPECT_EQ(All().size(), CStatusChanges::kMostStatuses);
    EXPECT_EQ(m_changes.Refused(), 3U);
    Add("0", "2");
    EXPECT_EQ(All(), Lines{"port 0=2"});
}
