#include "hub/state/Counts.h"

#include "StateTesting.h"

namespace {

class Counts : public HubTesting::CStateTesting {
protected:
    static std::optional<Hub::SChecksumCounts> Checksums(const std::string& key,
                                                         const std::string& value) {
        Hub::SStatus status;
        status.key = key;
        status.value = value;
        return Hub::ChecksumCounts(status);
    }
};

} // namespace

TEST_F(Counts, of_checksums_are_a_pair) {
    const auto counts = Checksums("checksum_stats", "4294967295,7");
    ASSERT_TRUE(counts);
    EXPECT_EQ(counts->good, 4294967295);
    EXPECT_EQ(counts->rejected, 7);
}

TEST_F(Counts, of_checksums_are_in_no_other_status) {
    EXPECT_FALSE(Checksums("checksum_stat", "1,2"));
}

TEST_F(Counts, of_checksums_must_be_two_whole_numbers) {
    for (const char* const value : {"", "1", "1,", ",1", "1,2,3", "1,-2", "-1,2", "1, 2", "1.5,2",
                                    "x,y", "99999999999999999999,1"}) {
        EXPECT_FALSE(Checksums("checksum_stats", value)) << value;
    }
}

TEST_F(Counts, of_dropped_messages_are_the_sum_over_all_programs) {
    EXPECT_EQ(Hub::DroppedMessages(m_state), 0);
    Status("dropped_messages", "5", "PlatformLink");
    Status("dropped_messages", "7", "OtherLink", 2);
    Status("dropped_messages", "many", "Broken", 3);
    Status("other", "100", "PlatformLink");
    EXPECT_EQ(Hub::DroppedMessages(m_state), 12);
}
