#include "ctl/Methods.h"

#include <gtest/gtest.h>
#include <set>
#include <string>

using namespace Ctl;

TEST(Methods, are_each_there_once_and_say_what_they_do) {
    std::set<std::string> names;
    for (const SMethod& method : Methods()) {
        EXPECT_TRUE(names.insert(method.name).second) << method.name;
        EXPECT_FALSE(std::string(method.effect).empty()) << method.name;
    }
    EXPECT_EQ(names.size(), 29U);
}
