// What goes out on a port is kept, as it is and at once.
#include "sim/LineCapture.h"

#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <fstream>
#include <iterator>

namespace {

using testing::HasSubstr;

class SimLineCapture : public testing::Test {
protected:
    std::string Kept() const {
        std::ifstream file(m_folder.Path("com1"), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    CTemporaryFolder m_folder;
    Sim::CLineCapture m_capture;
};

} // namespace

TEST_F(SimLineCapture, has_every_byte_in_the_file_as_soon_as_it_is_added) {
    ASSERT_EQ(m_capture.Open(m_folder.Path("com1")), "");
    EXPECT_EQ(Kept(), "");
    EXPECT_TRUE(m_capture.Add({0x00, 0x0A, 0xFF}));
    EXPECT_EQ(Kept(), std::string("\0\n\xFF", 3));
    EXPECT_TRUE(m_capture.Add({}));
    EXPECT_TRUE(m_capture.Add({'a'}));
    EXPECT_EQ(Kept(), std::string("\0\n\xFF"
                                  "a",
                                  4));
}

TEST_F(SimLineCapture, begins_anew_in_a_file_of_an_earlier_run) {
    m_folder.Write("com1", "of an earlier run");
    ASSERT_EQ(m_capture.Open(m_folder.Path("com1")), "");
    EXPECT_TRUE(m_capture.Add({'b'}));
    EXPECT_EQ(Kept(), "b");
}

TEST_F(SimLineCapture, keeps_nothing_unless_it_is_opened) {
    EXPECT_TRUE(m_capture.Add({'a'}));
    EXPECT_EQ(Kept(), "");
}

TEST_F(SimLineCapture, tells_why_it_cannot_be_opened) {
    EXPECT_THAT(m_capture.Open(m_folder.Path("no/com1")), HasSubstr("No such file"));
    EXPECT_TRUE(m_capture.Add({'a'}));
}

TEST_F(SimLineCapture, tells_once_that_nothing_can_be_kept_any_more) {
    ASSERT_EQ(m_capture.Open("/dev/full"), "");
    EXPECT_FALSE(m_capture.Add({'a'}));
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_TRUE(m_capture.Add({'b'}));
}
