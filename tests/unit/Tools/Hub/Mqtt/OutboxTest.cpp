#include "hub/mqtt/Outbox.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

using Hub::COutbox;
using Hub::SPublication;
using Lines = std::vector<std::string>;

std::string Shown(const SPublication& publication) {
    return publication.topic + "=" + publication.payload + " " + std::to_string(publication.qos) +
           (publication.isRetained ? " retained" : "");
}

Lines TakeAll(COutbox& outbox) {
    Lines lines;
    while (const auto next = outbox.Take()) {
        lines.push_back(Shown(*next));
    }
    return lines;
}

} // namespace

TEST(Outbox, gives_states_once_each_with_its_last_value) {
    COutbox outbox;
    outbox.SetState("a", "1");
    outbox.SetState("b", "1");
    outbox.SetState("a", "2");
    EXPECT_FALSE(outbox.IsEmpty());
    EXPECT_EQ(TakeAll(outbox), (Lines{"a=2 0 retained", "b=1 0 retained"}));
    EXPECT_TRUE(outbox.IsEmpty());
    outbox.SetState("b", "2");
    EXPECT_EQ(TakeAll(outbox), Lines{"b=2 0 retained"});
}

TEST(Outbox, gives_all_of_what_is_queued_in_its_order_before_the_states) {
    COutbox outbox;
    outbox.SetState("state", "1");
    outbox.QueueEvent("event", "1");
    outbox.QueueState("diagnostic", "raised");
    outbox.QueueEvent("event", "2");
    outbox.QueueState("diagnostic", "cleared");
    EXPECT_EQ(TakeAll(outbox), (Lines{"event=1 1", "diagnostic=raised 1 retained", "event=2 1",
                                      "diagnostic=cleared 1 retained", "state=1 0 retained"}));
}

TEST(Outbox, gives_all_states_again_when_told_to) {
    COutbox outbox;
    outbox.SetState("a", "1");
    outbox.QueueState("diagnostic", "raised");
    outbox.QueueEvent("event", "1");
    TakeAll(outbox);
    outbox.RepeatStates();
    EXPECT_EQ(TakeAll(outbox), (Lines{"a=1 0 retained", "diagnostic=raised 1 retained"}));
    EXPECT_TRUE(outbox.IsEmpty());
}

TEST(Outbox, gives_the_last_value_when_a_state_that_is_repeated_changes) {
    COutbox outbox;
    outbox.SetState("a", "1");
    TakeAll(outbox);
    outbox.RepeatStates();
    outbox.SetState("a", "2");
    outbox.RepeatStates();
    EXPECT_EQ(TakeAll(outbox), Lines{"a=2 0 retained"});
}

TEST(Outbox, loses_the_oldest_events_first_and_counts_them) {
    COutbox outbox;
    outbox.QueueState("diagnostic", "raised");
    for (std::size_t i = 0; i < COutbox::kMostQueued + 1; ++i) {
        outbox.QueueEvent("event", std::to_string(i));
    }
    EXPECT_EQ(outbox.TakeLost(), 2U);
    EXPECT_EQ(outbox.TakeLost(), 0U);
    const Lines lines = TakeAll(outbox);
    EXPECT_EQ(lines.size(), COutbox::kMostQueued);
    EXPECT_EQ(lines[0], "diagnostic=raised 1 retained");
    EXPECT_EQ(lines[1], "event=2 1");
    EXPECT_EQ(lines.back(), "event=1000 1");
}

TEST(Outbox, loses_the_oldest_changes_when_there_are_no_events_and_keeps_their_state) {
    COutbox outbox;
    for (std::size_t i = 0; i < COutbox::kMostQueued + 5; ++i) {
        outbox.QueueState("diagnostic/" + std::to_string(i), "raised");
    }
    EXPECT_EQ(outbox.TakeLost(), 5U);
    EXPECT_EQ(outbox.Take()->topic, "diagnostic/5");
    outbox.RepeatStates();
    const Lines lines = TakeAll(outbox);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "diagnostic/0=raised 1 retained"), 1);
}

TEST(Outbox, leaves_out_the_states_that_are_too_many) {
    COutbox outbox;
    for (std::size_t i = 0; i < COutbox::kMostStates + 5; ++i) {
        outbox.SetState(std::to_string(i), "1");
    }
    EXPECT_EQ(TakeAll(outbox).size(), COutbox::kMostStates);
    outbox.SetState("0", "2");
    EXPECT_EQ(TakeAll(outbox), Lines{"0=2 0 retained"});
}
