#include "hub/Complaint.h"

#include <gtest/gtest.h>

namespace {

template <class TWork>
std::string ToldBy(TWork work) {
    testing::internal::CaptureStderr();
    work();
    return testing::internal::GetCapturedStderr();
}

} // namespace

TEST(Complaint, is_told_once_for_each_reason) {
    EXPECT_EQ(ToldBy([] {
                  Hub::CComplaint complaint("The first store");
                  complaint.Tell("is full");
                  complaint.Tell("is gone");
                  complaint.Tell("is full");
              }),
              "The first store: is full\nThe first store: is gone\n");
}

TEST(Complaint, is_told_anew_when_the_trouble_was_over) {
    Hub::CComplaint complaint("The second store");
    EXPECT_EQ(ToldBy([&] { complaint.TellOver("never was wrong"); }), "");
    EXPECT_EQ(ToldBy([&] {
                  complaint.Tell("is slow");
                  complaint.TellOver("is quick");
                  complaint.TellOver("is quick still");
                  complaint.Tell("is slow, once more");
              }),
              "The second store: is slow\nThe second store: is quick\n"
              "The second store: is slow, once more\n");
}
