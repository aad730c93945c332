#include "ctl/Progress.h"

#include "Support/TemporaryFolder.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

using namespace Ctl;

TEST(ProgressBar, grows_from_empty_to_full) {
    EXPECT_EQ(ProgressBar(0), "[" + std::string(50, '.') + "]   0 %");
    EXPECT_EQ(ProgressBar(50), "[" + std::string(25, '#') + std::string(25, '.') + "]  50 %");
    EXPECT_EQ(ProgressBar(99), "[" + std::string(49, '#') + ".]  99 %");
    EXPECT_EQ(ProgressBar(100), "[" + std::string(50, '#') + "] 100 %");
}

TEST(ProgressBar, holds_also_for_what_is_no_percentage) {
    EXPECT_EQ(ProgressBar(-7), ProgressBar(0));
    EXPECT_EQ(ProgressBar(2'000'000'000), ProgressBar(100));
}

TEST(Progress, is_a_line_for_each_new_percentage_where_no_terminal_is) {
    const CTemporaryFolder folder;
    const std::string path = folder.Path("progress");
    std::FILE* const file = std::fopen(path.c_str(), "w");
    ASSERT_NE(file, nullptr);
    {
        CProgress progress(file);
        for (const int percent : {0, 0, 3, 3, 100}) {
            progress.Show(percent);
        }
    }
    std::fclose(file);
    std::stringstream contents;
    contents << std::ifstream(path).rdbuf();
    EXPECT_EQ(contents.str(), "0 %\n3 %\n100 %\n");
}
