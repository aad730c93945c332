// What the command manager tells for the constellation manager, and how much it lets others queue.
#include "Control/CommandManagerTesting.h"

#include "Framing/RecordFactory.h"
#include "Support/LogSentences.h"

namespace {

class Channels : public CCommandManagerTesting {
protected:
    void Offer(const Bytes::Sentence& sentence) {
        const std::unique_ptr<CGPSRecord> record(CreateRecord(sentence));
        ASSERT_NE(record, nullptr);
        m_constellation->NewRecord(record.get());
    }
    void Queue(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            m_commands.QueueCommand("x\r\n");
        }
    }
};

} // namespace

TEST_F(Channels, are_unknown_without_a_constellation_manager) {
    WriteSettings("force_sbas_on = 1\nreceiver_supports_glonass = 1\n"
                  "current_channel_configuration = 9\n");
    EXPECT_FALSE(m_commands.IsSBASWanted());
    EXPECT_FALSE(m_commands.IsGlonassWanted());
    EXPECT_EQ(m_commands.CurrentChannelConfiguration(), 0);
    EXPECT_TRUE(m_commands.ChannelConfigurations().empty());
}

TEST_F(Channels, are_for_sbas_as_the_constellation_manager_wants) {
    AttachConstellationManager();
    EXPECT_FALSE(m_commands.IsSBASWanted());
    m_commands.SetSBASEnabled(true);
    EXPECT_TRUE(m_commands.IsSBASWanted());
    EXPECT_FALSE(m_commands.IsGlonassWanted());
}

TEST_F(Channels, are_for_glonass_as_the_constellation_manager_wants) {
    WriteSettings("receiver_supports_glonass = 1\n");
    AttachConstellationManager();
    EXPECT_TRUE(m_commands.IsGlonassWanted());
    EXPECT_FALSE(m_commands.IsSBASWanted());
}

TEST_F(Channels, are_those_that_the_receiver_has_and_uses) {
    AttachConstellationManager();
    EXPECT_EQ(m_commands.CurrentChannelConfiguration(), 0);
    EXPECT_TRUE(m_commands.ChannelConfigurations().empty());
    Offer(Sentences::Chanconfiglist().inUse(2).set({{14, 0}}).set({{12, 0}, {2, 4}}));
    EXPECT_EQ(m_commands.CurrentChannelConfiguration(), 2);
    const auto configurations = m_commands.ChannelConfigurations();
    ASSERT_EQ(configurations.size(), 2U);
    EXPECT_EQ(configurations[0].signals.size(), 1U);
    ASSERT_EQ(configurations[1].signals.size(), 2U);
    EXPECT_EQ(configurations[1].signals[0].numberOfChannels, 12U);
    EXPECT_EQ(configurations[1].signals[1].signalType, 4U);
}

TEST_F(Channels, are_those_that_were_selected_last) {
    AttachConstellationManager();
    m_commands.InspectCommand("selectchanconfig 5\r\n");
    EXPECT_EQ(m_commands.CurrentChannelConfiguration(), 5);
}

TEST_F(Channels, leave_room_for_10000_commands_that_wait) {
    EXPECT_TRUE(m_commands.HasRoomToQueue(10'000));
    EXPECT_FALSE(m_commands.HasRoomToQueue(10'001));
    Queue(9'999);
    EXPECT_TRUE(m_commands.HasRoomToQueue(1));
    EXPECT_FALSE(m_commands.HasRoomToQueue(2));
    Queue(1);
    EXPECT_TRUE(m_commands.HasRoomToQueue(0));
    EXPECT_FALSE(m_commands.HasRoomToQueue(1));
    m_commands.NextCommand();
    EXPECT_TRUE(m_commands.HasRoomToQueue(1));
    EXPECT_TRUE(m_commands.HasRoomToSend(10'000));
}

TEST_F(Channels, leave_room_for_a_configuration_of_10000_commands) {
    m_commands.BuildConfiguration();
    EXPECT_TRUE(m_commands.HasRoomToSend(10'000 - 61));
    EXPECT_FALSE(m_commands.HasRoomToSend(10'000 - 60));
    m_commands.SendCommand("x\r\n");
    EXPECT_TRUE(m_commands.HasRoomToSend(10'000 - 62));
    EXPECT_FALSE(m_commands.HasRoomToSend(10'000 - 61));
    EXPECT_TRUE(m_commands.HasRoomToQueue(10'000));
}
