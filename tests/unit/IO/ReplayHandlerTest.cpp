#include "IO/ReplayHandler.h"

#include "Support/FakeClock.h"
#include "Support/RecordingBytes.h"
#include "Support/TemporaryFolder.h"

#include <cmath>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <unistd.h>

using Core::Time;
using testing::AllOf;
using testing::ElementsAre;
using testing::Gt;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

/// The trace reads the environment with its first line; here it must be on.
[[maybe_unused]] const int kTraceIsOn = ::unsetenv("CORVANE_TRACE");

constexpr Time Milliseconds(std::int64_t count) {
    return Time::FromMilliseconds(count);
}

/// A recording whose blocks are "0", "1", ... at the given times, in milliseconds.
std::string RecordedAt(const std::vector<std::uint32_t>& milliseconds) {
    CRecordingBytes recording;
    for (std::size_t i = 0; i < milliseconds.size(); ++i) {
        recording.Block(milliseconds[i] / 1000, milliseconds[i] % 1000 * 1000, std::to_string(i));
    }
    return recording.Take();
}

/// The lines of these tests, without counts of repeated lines that other tests have left.
std::string OwnLines(const std::string& trace) {
    std::istringstream lines(trace);
    std::string own;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("Timestamp=") || line == "waited") {
            own += line + "\n";
        }
    }
    return own;
}

class Replay : public testing::Test {
protected:
    void OpenRecordedAt(const std::vector<std::uint32_t>& milliseconds) {
        m_replay.SetDevice(m_folder.Write("recording", RecordedAt(milliseconds)));
        ASSERT_TRUE(m_replay.Open());
    }

    /// Plays `count` blocks; returns what the trace said meanwhile.
    std::string Play(int count) {
        testing::internal::CaptureStderr();
        for (int i = 0; i < count; ++i) {
            EXPECT_NE(m_replay.Read(), "");
        }
        return OwnLines(testing::internal::GetCapturedStderr());
    }

    const CTemporaryFolder m_folder;
    CFakeClock m_clock;
    CReplayHandler m_replay;
};

} // namespace

TEST_F(Replay, without_a_path_does_not_open) {
    EXPECT_FALSE(m_replay.Open());
    EXPECT_FALSE(m_replay.IsOpen());
    EXPECT_EQ(m_replay.FileDescriptor(), -1);
}

TEST_F(Replay, of_a_missing_file_does_not_open_until_it_is_there) {
    m_replay.SetDevice(m_folder.Path("late"));
    testing::internal::CaptureStderr();
    EXPECT_FALSE(m_replay.Open());
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr(m_folder.Path("late")));
    EXPECT_FALSE(m_replay.IsOpen());
    EXPECT_EQ(m_replay.FileDescriptor(), -1);
    EXPECT_EQ(m_replay.TakeFailure(), "");
    m_folder.Write("late", RecordedAt({100'000}));
    EXPECT_TRUE(m_replay.Open());
}

TEST_F(Replay, of_something_that_is_no_recording_does_not_open) {
    m_replay.SetDevice(m_folder.Write("text", "this is no recording at all"));
    testing::internal::CaptureStderr();
    EXPECT_FALSE(m_replay.Open());
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr(m_folder.Path("text")));
    EXPECT_FALSE(m_replay.IsOpen());
}

TEST_F(Replay, has_the_descriptor_of_its_recording_while_open) {
    OpenRecordedAt({100'000});
    EXPECT_TRUE(m_replay.IsOpen());
    EXPECT_GE(m_replay.FileDescriptor(), 0);
    EXPECT_TRUE(m_replay.Close());
    EXPECT_FALSE(m_replay.IsOpen());
    EXPECT_EQ(m_replay.FileDescriptor(), -1);
    EXPECT_EQ(m_replay.Read(), "");
    EXPECT_FALSE(m_replay.IsAtEnd());
}

TEST_F(Replay, gives_one_whole_block_a_read_whatever_it_is_asked_for) {
    m_replay.SetDevice(m_folder.Write(
        "recording", CRecordingBytes().Block(100, 0, "first").Block(100, 0, "second").Take()));
    ASSERT_TRUE(m_replay.Open());
    EXPECT_EQ(m_replay.Read(0), "first");
    m_replay.SetReadSize(2);
    EXPECT_EQ(m_replay.Read(), "second");
}

TEST_F(Replay, is_at_its_end_once_a_read_was_empty) {
    OpenRecordedAt({100'000});
    EXPECT_EQ(m_replay.Read(), "0");
    EXPECT_FALSE(m_replay.IsAtEnd());
    EXPECT_EQ(m_replay.Read(), "");
    EXPECT_TRUE(m_replay.IsAtEnd());
}

TEST_F(Replay, of_an_empty_file_is_at_its_end_with_the_first_read) {
    m_replay.SetDevice(m_folder.Write("recording", ""));
    ASSERT_TRUE(m_replay.Open());
    EXPECT_EQ(m_replay.Read(), "");
    EXPECT_TRUE(m_replay.IsAtEnd());
}

TEST_F(Replay, plays_the_first_block_at_once_and_the_next_at_their_pace) {
    OpenRecordedAt({100'000, 100'500, 101'000});
    EXPECT_EQ(Play(3), "Timestamp=100.500,  dt=0.500\nTimestamp=101.000,  dt=0.500\n");
    EXPECT_THAT(m_clock.Pauses(), ElementsAre(Milliseconds(500), Milliseconds(500)));
}

TEST_F(Replay, waits_for_a_first_block_whose_time_is_under_ten_seconds) {
    OpenRecordedAt({3'250});
    EXPECT_EQ(Play(1), "Timestamp=3.250,  dt=3.250\n");
    EXPECT_THAT(m_clock.Pauses(), ElementsAre(Milliseconds(3250)));
}

TEST_F(Replay, waits_for_a_gap_just_under_ten_seconds) {
    OpenRecordedAt({100'000, 109'999});
    EXPECT_EQ(Play(2), "Timestamp=109.999,  dt=9.999\n");
    EXPECT_THAT(m_clock.Pauses(), ElementsAre(Milliseconds(9999)));
}

TEST_F(Replay, plays_a_gap_of_ten_seconds_or_more_at_once_and_silently) {
    OpenRecordedAt({100'000, 110'000, 500'000});
    EXPECT_EQ(Play(3), "");
    EXPECT_THAT(m_clock.Pauses(), IsEmpty());
}

TEST_F(Replay, plays_a_backward_step_and_an_equal_time_at_once_and_silently) {
    OpenRecordedAt({100'000, 99'000, 99'000});
    EXPECT_EQ(Play(3), "");
    EXPECT_THAT(m_clock.Pauses(), IsEmpty());
}

TEST_F(Replay, measures_a_gap_from_the_block_before_also_after_a_backward_step) {
    OpenRecordedAt({100'000, 90'000, 90'500});
    EXPECT_EQ(Play(3), "Timestamp=90.500,  dt=0.500\n");
    EXPECT_THAT(m_clock.Pauses(), ElementsAre(Milliseconds(500)));
}

TEST_F(Replay, paces_anew_from_the_block_behind_a_long_gap) {
    OpenRecordedAt({100'000, 100'500, 200'000, 200'400});
    m_replay.Read();
    m_replay.Read();
    m_clock.Advance(Milliseconds(300));
    m_replay.Read();
    m_replay.Read();
    EXPECT_THAT(m_clock.Pauses(), ElementsAre(Milliseconds(500), Milliseconds(400)));
}

TEST_F(Replay, writes_its_line_after_the_wait) {
    OpenRecordedAt({100'000, 100'125});
    m_clock.AtPause([] { EXPECT_EQ(::write(STDERR_FILENO, "waited\n", 7), 7); });
    EXPECT_EQ(Play(2), "waited\nTimestamp=100.125,  dt=0.125\n");
}

TEST_F(Replay, shortens_a_pause_by_what_the_pass_before_it_took) {
    OpenRecordedAt({100'000, 100'500});
    m_replay.Read();
    m_clock.Advance(Milliseconds(120));
    m_replay.Read();
    EXPECT_THAT(m_clock.Pauses(), ElementsAre(Milliseconds(380)));
}

TEST_F(Replay, keeps_each_block_of_a_long_recording_within_five_milliseconds_of_its_time) {
    constexpr int kBlocks = 20'000;
    std::vector<std::uint32_t> times;
    for (std::uint32_t i = 0; i < kBlocks; ++i) {
        times.push_back(1'000'000 + i * 50 + i % 7);
    }
    OpenRecordedAt(times);
    m_clock.LetPausesOvershoot(Time::FromNanoseconds(1'700'000));
    testing::internal::CaptureStderr();
    double worst = 0.0;
    Core::Time start;
    for (int i = 0; i < kBlocks; ++i) {
        m_replay.Read();
        start = i == 0 ? m_clock.Now() : start;
        const double played = (m_clock.Now() - start).AsSeconds();
        worst = std::max(worst, std::fabs(played - (times[i] - times[0]) * 1e-3));
        m_clock.Advance(Milliseconds(3));
    }
    testing::internal::GetCapturedStderr();
    EXPECT_THAT(worst, AllOf(Gt(0.0), testing::Lt(0.005)));
}

TEST_F(Replay, that_is_late_plays_at_once_and_catches_up) {
    OpenRecordedAt({100'000, 100'200, 100'400, 101'500});
    m_replay.Read();
    m_clock.Advance(Milliseconds(900));
    EXPECT_EQ(Play(3), "Timestamp=100.200,  dt=0.200\nTimestamp=100.400,  dt=0.200\n"
                       "Timestamp=101.500,  dt=1.100\n");
    EXPECT_THAT(m_clock.Pauses(), ElementsAre(Milliseconds(600)));
}

TEST_F(Replay, that_is_late_by_more_than_a_second_goes_on_from_where_it_is) {
    OpenRecordedAt({100'000, 100'200, 100'700});
    m_replay.Read();
    m_clock.Advance(Milliseconds(1'201));
    m_replay.Read();
    EXPECT_THAT(m_clock.Pauses(), IsEmpty());
    m_replay.Read();
    EXPECT_THAT(m_clock.Pauses(), ElementsAre(Milliseconds(500)));
}

TEST_F(Replay, opened_anew_plays_from_the_beginning_at_its_pace) {
    OpenRecordedAt({100'000, 100'500});
    Play(2);
    m_replay.Read();
    ASSERT_TRUE(m_replay.IsAtEnd());
    m_replay.Close();
    ASSERT_TRUE(m_replay.Open());
    EXPECT_FALSE(m_replay.IsAtEnd());
    m_clock.Advance(Milliseconds(60'000));
    EXPECT_EQ(m_replay.Read(), "0");
    EXPECT_EQ(m_replay.Read(), "1");
    EXPECT_THAT(m_clock.Pauses(), ElementsAre(Milliseconds(500), Milliseconds(500)));
}

TEST_F(Replay, has_no_lateness_from_before_it_was_opened_anew) {
    OpenRecordedAt({100'000});
    m_replay.Read();
    m_replay.Close();
    m_clock.Advance(Milliseconds(900));
    OpenRecordedAt({100'300});
    m_replay.Read();
    EXPECT_THAT(m_clock.Pauses(), ElementsAre(Milliseconds(300)));
}

TEST_F(Replay, takes_a_new_path_while_open_for_the_next_opening) {
    m_folder.Write("other", CRecordingBytes().Block(100, 0, "other").Take());
    OpenRecordedAt({100'000, 100'000});
    EXPECT_TRUE(m_replay.SetDevice(m_folder.Path("other")));
    EXPECT_EQ(m_replay.Read(), "0");
    m_replay.Close();
    ASSERT_TRUE(m_replay.Open());
    EXPECT_EQ(m_replay.Read(), "other");
}

TEST_F(Replay, ends_a_cut_recording_with_its_last_whole_block) {
    const std::string whole = RecordedAt({100'000, 100'000, 100'000});
    m_replay.SetDevice(m_folder.Write("recording", whole.substr(0, whole.size() - 1)));
    ASSERT_TRUE(m_replay.Open());
    EXPECT_EQ(m_replay.Read(), "0");
    EXPECT_EQ(m_replay.Read(), "1");
    testing::internal::CaptureStderr();
    EXPECT_EQ(m_replay.Read(), "");
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr(m_folder.Path("recording")));
    EXPECT_TRUE(m_replay.IsAtEnd());
}

TEST_F(Replay, takes_what_is_written_and_set_as_done_without_waiting) {
    OpenRecordedAt({100'000});
    EXPECT_TRUE(m_replay.Write(std::string("log version\r\n")));
    EXPECT_EQ(m_replay.Write(std::vector<std::uint8_t>{1, 2}), 1);
    EXPECT_TRUE(m_replay.SetBaudRate(9600));
    EXPECT_TRUE(m_replay.SetReadTimeout(Milliseconds(50)));
    m_replay.SendBreak(0.3);
    EXPECT_THAT(m_clock.Pauses(), IsEmpty());
    EXPECT_EQ(m_replay.Read(), "0");
}
