#include "Control/ChannelManager.h"

#include "Control/CommandManager.h"
#include "Support/FakeByteSource.h"
#include "Support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

using Texts = std::vector<std::string>;

class COpenChannelManager : public ChannelManager {
public:
    using ChannelManager::AssignAll;
    using ChannelManager::AssignChanged;
    using ChannelManager::ChannelManager;
    using ChannelManager::ChannelNumber;
    using ChannelManager::SendAssign;
    using ChannelManager::UpdateChannel;
};

Core::MonotonicTime At(double seconds) {
    return Core::MonotonicTime() + Core::Time::FromSeconds(seconds);
}

/// Of the channels 10 to 13.
class ChannelManagerTest : public testing::Test {
protected:
    ChannelManagerTest() { m_commands.SetByteSource(&m_source); }

    /// The texts sent since the last look.
    Texts Sent() {
        const Texts texts = m_source.texts;
        m_source.texts.clear();
        return texts;
    }
    /// The commands that leave the first `count` of the four tracking.
    static Texts AllFour(int count) {
        Texts texts;
        for (int i = 0; i < 4; ++i) {
            texts.push_back("assign " + std::to_string(10 + i) + (i < count ? " auto" : " idle") +
                            "\n");
        }
        return texts;
    }

    CTemporaryFolder m_folder;
    CConfig m_config{m_folder.Path("corvane.conf")};
    CCommandManager m_commands{m_config};
    CFakeByteSource m_source;
    COpenChannelManager m_channels{&m_commands, 10, 13};
};

} // namespace

TEST_F(ChannelManagerTest, begins_with_all_its_channels_tracking_and_sends_nothing) {
    EXPECT_EQ(m_channels.ActiveCount(), 4);
    EXPECT_EQ(ChannelManager(&m_commands, 0, 13).ActiveCount(), 14);
    EXPECT_EQ(ChannelManager(&m_commands, 5, 6).ActiveCount(), 2);
    EXPECT_EQ(Sent(), Texts{});
    m_channels.AssignChanged(4);
    EXPECT_EQ(Sent(), Texts{}) << "they are tracking already";
}

TEST_F(ChannelManagerTest, manages_nothing_unless_the_last_channel_is_above_the_first) {
    for (const std::int32_t last : {5, 4, -3}) {
        ChannelManager none(&m_commands, 5, last);
        EXPECT_EQ(none.ActiveCount(), 0);
        EXPECT_TRUE(none.Limit(At(1), 3, 14));
        EXPECT_TRUE(none.Limit(At(10), 20, 14));
        EXPECT_EQ(none.ActiveCount(), 20);
    }
    EXPECT_EQ(Sent(), Texts{});
}

TEST_F(ChannelManagerTest, assigns_every_channel_while_the_receiver_has_more_than_the_count) {
    EXPECT_TRUE(m_channels.Limit(At(1), 3, 4));
    EXPECT_EQ(Sent(), (Texts{"assign 10 auto\n", "assign 11 auto\n", "assign 12 auto\n",
                             "assign 13 idle\n"}));
    EXPECT_EQ(m_channels.ActiveCount(), 3);
    EXPECT_TRUE(m_channels.Limit(At(10), 3, 4)) << "again, though three are tracking already";
    EXPECT_EQ(Sent(), AllFour(3));
}

TEST_F(ChannelManagerTest, assigns_what_changes_when_the_receiver_has_no_more_than_the_count) {
    EXPECT_TRUE(m_channels.Limit(At(1), 2, 2));
    EXPECT_EQ(Sent(), (Texts{"assign 12 idle\n", "assign 13 idle\n"}));
    EXPECT_EQ(m_channels.ActiveCount(), 2);
    EXPECT_TRUE(m_channels.Limit(At(10), 3, 1));
    EXPECT_EQ(Sent(), Texts{"assign 12 auto\n"});
    EXPECT_TRUE(m_channels.Limit(At(20), 1, 1));
    EXPECT_EQ(Sent(), (Texts{"assign 11 idle\n", "assign 12 idle\n"}));
}

TEST_F(ChannelManagerTest, knows_what_it_has_assigned_to_all_when_it_assigns_what_changes) {
    EXPECT_TRUE(m_channels.Limit(At(1), 1, 4));
    Sent();
    EXPECT_TRUE(m_channels.Limit(At(10), 3, 3));
    EXPECT_EQ(Sent(), (Texts{"assign 11 auto\n", "assign 12 auto\n"}));
}

TEST_F(ChannelManagerTest, does_nothing_when_so_many_are_tracking_and_may_then_act_at_once) {
    EXPECT_FALSE(m_channels.Limit(At(1), 4, 4));
    EXPECT_FALSE(m_channels.Limit(At(1), 4, 0));
    EXPECT_EQ(Sent(), Texts{});
    EXPECT_TRUE(m_channels.Limit(At(1), 3, 3));
    EXPECT_EQ(Sent(), Texts{"assign 13 idle\n"});
}

TEST_F(ChannelManagerTest, changes_nothing_within_five_seconds_of_a_change_to_all) {
    ASSERT_TRUE(m_channels.Limit(At(100), 2, 4));
    Sent();
    EXPECT_FALSE(m_channels.Limit(At(100), 1, 4));
    EXPECT_FALSE(m_channels.Limit(At(102), 3, 3));
    EXPECT_FALSE(m_channels.Limit(At(104.999), 1, 4));
    EXPECT_EQ(Sent(), Texts{});
    EXPECT_EQ(m_channels.ActiveCount(), 2);
    EXPECT_TRUE(m_channels.Limit(At(105), 1, 4)) << "a refusal must not put the next change off";
    EXPECT_EQ(Sent(), AllFour(1));
}

TEST_F(ChannelManagerTest, changes_nothing_within_five_seconds_of_a_change_of_some) {
    ASSERT_TRUE(m_channels.Limit(At(100), 2, 2));
    Sent();
    EXPECT_FALSE(m_channels.Limit(At(104.999), 3, 3));
    EXPECT_FALSE(m_channels.Limit(At(104.999), 1, 4));
    EXPECT_EQ(Sent(), Texts{});
    EXPECT_EQ(m_channels.ActiveCount(), 2);
    EXPECT_TRUE(m_channels.Limit(At(105), 3, 3));
    EXPECT_EQ(Sent(), Texts{"assign 12 auto\n"});
}

TEST_F(ChannelManagerTest, may_change_at_the_very_start_of_the_clock) {
    EXPECT_TRUE(m_channels.Limit(At(0), 3, 4));
}

TEST_F(ChannelManagerTest, idles_all_for_a_count_below_zero_which_is_below_any_total) {
    ASSERT_TRUE(m_channels.Limit(At(1), 0, 1));
    EXPECT_EQ(Sent(), AllFour(0));
    EXPECT_TRUE(m_channels.Limit(At(10), -2, 0));
    EXPECT_EQ(Sent(), AllFour(0));
    EXPECT_EQ(m_channels.ActiveCount(), -2);
    EXPECT_TRUE(m_channels.Limit(At(20), -2, -1));
    EXPECT_FALSE(m_channels.Limit(At(30), -2, -2));
}

TEST_F(ChannelManagerTest, tracks_with_all_for_a_count_above_what_it_has) {
    ASSERT_TRUE(m_channels.Limit(At(1), 1, 4));
    Sent();
    EXPECT_TRUE(m_channels.Limit(At(10), 1000, 14));
    EXPECT_EQ(Sent(), (Texts{"assign 11 auto\n", "assign 12 auto\n", "assign 13 auto\n"}));
    EXPECT_EQ(m_channels.ActiveCount(), 1000);
    EXPECT_TRUE(m_channels.Limit(At(20), 1000, 1001));
    EXPECT_EQ(Sent(), AllFour(4));
}

TEST_F(ChannelManagerTest, sends_its_commands_as_part_of_the_receivers_configuration) {
    m_channels.SendAssign(7, true);
    m_channels.SendAssign(-1, false);
    const Texts expected{"assign 7 auto\n", "assign -1 idle\n"};
    EXPECT_EQ(Sent(), expected);
    EXPECT_EQ(m_commands.Configuration(), expected);
    EXPECT_EQ(m_commands.PendingCount(), 0U);
}

TEST_F(ChannelManagerTest, assigns_one_channel_only_when_its_state_is_another) {
    m_channels.UpdateChannel(1, 2);
    EXPECT_EQ(Sent(), Texts{});
    m_channels.UpdateChannel(1, 1);
    EXPECT_EQ(Sent(), Texts{"assign 11 idle\n"});
    m_channels.UpdateChannel(1, 1);
    EXPECT_EQ(Sent(), Texts{});
    m_channels.UpdateChannel(1, 2);
    EXPECT_EQ(Sent(), Texts{"assign 11 auto\n"});
    EXPECT_EQ(m_channels.ActiveCount(), 4) << "the count is not one channel's";
}

TEST_F(ChannelManagerTest, numbers_no_channel_outside_of_its_range) {
    EXPECT_EQ(m_channels.ChannelNumber(0), 10);
    EXPECT_EQ(m_channels.ChannelNumber(3), 13);
    EXPECT_EQ(m_channels.ChannelNumber(4), 13);
    EXPECT_EQ(m_channels.ChannelNumber(-1), 10);
    EXPECT_EQ(COpenChannelManager(&m_commands, 5, 3).ChannelNumber(0), 5)
        << "the first channel counts for more than the last";
}
