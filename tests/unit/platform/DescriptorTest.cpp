#include "platform/Descriptor.h"

#include "Support/CrowdedDescriptors.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

using Core::MonotonicTime;
using Core::Time;
using Core::IO::KeepSelectable;
using Core::IO::WaitReadable;

namespace {

class WatchedPipe : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(::pipe2(m_ends.data(), O_CLOEXEC), 0); }
    void TearDown() override {
        ::close(m_ends[0]);
        CloseWriter();
    }
    int Reader() const { return m_ends[0]; }
    bool Send(char byte) const { return ::write(m_ends[1], &byte, 1) == 1; }
    void CloseWriter() {
        if (m_ends[1] >= 0) {
            ::close(m_ends[1]);
            m_ends[1] = -1;
        }
    }

private:
    std::array<int, 2> m_ends{-1, -1};
};

} // namespace

TEST(Descriptor, that_select_can_watch_is_kept) {
    EXPECT_EQ(KeepSelectable(0), 0);
    EXPECT_EQ(KeepSelectable(FD_SETSIZE - 1), FD_SETSIZE - 1);
}

TEST(Descriptor, of_a_failed_open_is_passed_on_with_its_reason) {
    errno = ENOENT;
    EXPECT_EQ(KeepSelectable(-1), -1);
    EXPECT_EQ(errno, ENOENT);
}

TEST(Descriptor, that_select_cannot_watch_is_closed) {
    const CCrowdedDescriptors crowd;
    if (!crowd.IsComplete()) {
        GTEST_SKIP() << "the limit of descriptors lies below FD_SETSIZE";
    }
    const int beyond = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ASSERT_GE(beyond, FD_SETSIZE);
    EXPECT_EQ(KeepSelectable(beyond), -1);
    EXPECT_EQ(errno, EMFILE);
    EXPECT_EQ(::fcntl(beyond, F_GETFD), -1);
}

TEST_F(WatchedPipe, with_bytes_is_readable_at_once) {
    ASSERT_TRUE(Send('x'));
    EXPECT_TRUE(WaitReadable(Reader(), Time()));
}

TEST_F(WatchedPipe,
       without_bytes_is_not_readable_and_a_time_out_of_zero_or_less_waits_for_nothing) {
    EXPECT_FALSE(WaitReadable(Reader(), Time()));
    EXPECT_FALSE(WaitReadable(Reader(), Time::FromMilliseconds(-1)));
    EXPECT_FALSE(WaitReadable(Reader(), Time::FromNanoseconds(INT64_MIN)));
}

TEST_F(WatchedPipe, without_bytes_is_waited_for_at_least_the_time_out) {
    const Time timeout = Time::FromMilliseconds(20);
    const MonotonicTime start = MonotonicTime::Now();
    EXPECT_FALSE(WaitReadable(Reader(), timeout));
    EXPECT_GE(MonotonicTime::Now() - start, timeout);
}

TEST_F(WatchedPipe, at_its_end_is_readable_however_long_the_time_out) {
    CloseWriter();
    EXPECT_TRUE(WaitReadable(Reader(), Time::FromNanoseconds(INT64_MAX)));
}
