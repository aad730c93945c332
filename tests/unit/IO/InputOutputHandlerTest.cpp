#include "IO/InputOutputHandler.h"

#include "Support/FakeClock.h"

#include <gtest/gtest.h>

namespace {

/// A source that has nothing of its own but a note of how much was asked for.
class CPlainSource : public CInputOutputHandler {
public:
    using CInputOutputHandler::Read;
    using CInputOutputHandler::ReportFailure;
    using CInputOutputHandler::ReportSuccess;

    bool Open() override { return true; }
    bool Close() override { return true; }
    bool IsOpen() const override { return true; }
    std::string Read(std::int32_t count) override {
        m_asked = count;
        return "bytes";
    }
    bool SetDevice(const std::string&) override { return true; }
    bool SetReadTimeout(Core::Time) override { return true; }
    int FileDescriptor() const override { return -1; }

    std::int32_t Asked() const { return m_asked; }

private:
    std::int32_t m_asked = -1;
};

class ByteSource : public testing::Test {
protected:
    std::int32_t AskedWithReadSize(std::int32_t readSize) {
        EXPECT_TRUE(m_source.SetReadSize(readSize));
        m_source.Read();
        return m_source.Asked();
    }

    CPlainSource m_source;
};

} // namespace

TEST_F(ByteSource, reads_one_byte_unless_told_otherwise) {
    EXPECT_EQ(m_source.Read(), "bytes");
    EXPECT_EQ(m_source.Asked(), 1);
}

TEST_F(ByteSource, reads_by_its_read_size) {
    EXPECT_EQ(AskedWithReadSize(1024), 1024);
}

TEST_F(ByteSource, reads_at_most_one_MiB_at_a_time) {
    EXPECT_EQ(AskedWithReadSize(1048576), 1048576);
    EXPECT_EQ(AskedWithReadSize(1048577), 1048576);
    EXPECT_EQ(AskedWithReadSize(INT32_MAX), 1048576);
}

TEST_F(ByteSource, reads_nothing_with_a_read_size_of_zero_or_less) {
    EXPECT_EQ(AskedWithReadSize(0), 0);
    EXPECT_EQ(AskedWithReadSize(-7), 0);
    EXPECT_EQ(AskedWithReadSize(INT32_MIN), 0);
}

TEST_F(ByteSource, takes_writes_that_go_nowhere_as_done) {
    EXPECT_TRUE(m_source.Write(std::string("log version\r\n")));
    EXPECT_EQ(m_source.Write(std::vector<std::uint8_t>{1, 2, 3}), 1);
    EXPECT_FALSE(m_source.HasWaitingBytes());
}

TEST_F(ByteSource, takes_a_baud_rate_that_means_nothing) {
    EXPECT_TRUE(m_source.SetBaudRate(9600));
}

TEST_F(ByteSource, does_not_pause_for_a_break_that_means_nothing) {
    const CFakeClock clock;
    m_source.SendBreak(0.3);
    EXPECT_TRUE(clock.Pauses().empty());
}

TEST_F(ByteSource, has_no_end_unless_it_says_so) {
    EXPECT_FALSE(m_source.IsAtEnd());
}

TEST_F(ByteSource, without_failures_has_nothing_to_tell) {
    EXPECT_EQ(m_source.TakeFailure(), "");
    m_source.ReportSuccess();
    EXPECT_EQ(m_source.TakeFailure(), "");
}

TEST_F(ByteSource, tells_a_failure_once) {
    m_source.ReportFailure("line lost");
    EXPECT_EQ(m_source.TakeFailure(), "line lost");
    EXPECT_EQ(m_source.TakeFailure(), "");
}

TEST_F(ByteSource, does_not_tell_the_same_failure_again_while_it_lasts) {
    m_source.ReportFailure("line lost");
    m_source.TakeFailure();
    m_source.ReportFailure("line lost");
    EXPECT_EQ(m_source.TakeFailure(), "");
}

TEST_F(ByteSource, tells_a_new_reason) {
    m_source.ReportFailure("line lost");
    m_source.TakeFailure();
    m_source.ReportFailure("no such device");
    EXPECT_EQ(m_source.TakeFailure(), "no such device");
}

TEST_F(ByteSource, tells_the_same_failure_again_after_it_was_well_in_between) {
    m_source.ReportFailure("line lost");
    m_source.TakeFailure();
    m_source.ReportSuccess();
    m_source.ReportFailure("line lost");
    EXPECT_EQ(m_source.TakeFailure(), "line lost");
}

TEST_F(ByteSource, still_tells_a_failure_after_which_it_was_well) {
    m_source.ReportFailure("line lost");
    m_source.ReportSuccess();
    EXPECT_EQ(m_source.TakeFailure(), "line lost");
}
