#include "hub/Folder.h"

#include "Support/TemporaryFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

using Hub::MakeFolder;

TEST(Folder, is_made_with_those_above_it_for_everybody_to_read) {
    const CTemporaryFolder folder;
    const mode_t before = ::umask(0);
    EXPECT_EQ(MakeFolder(folder.Path("a/b/c")), "");
    ::umask(before);
    for (const char* const name : {"a", "a/b", "a/b/c"}) {
        struct stat status {};
        ASSERT_EQ(::stat(folder.Path(name).c_str(), &status), 0) << name;
        EXPECT_EQ(status.st_mode & 07777U, 0755U) << name;
    }
}

TEST(Folder, that_is_there_is_left_as_it_is) {
    const CTemporaryFolder folder;
    EXPECT_EQ(MakeFolder(folder.Path()), "");
    EXPECT_EQ(MakeFolder(folder.Path() + "/"), "");
    EXPECT_EQ(MakeFolder(""), "");
}

TEST(Folder, that_cannot_be_made_is_told_with_the_reason) {
    const CTemporaryFolder folder;
    const std::string file = folder.Write("file", "");
    EXPECT_EQ(MakeFolder(file), file + " is no folder");
    EXPECT_EQ(MakeFolder(file + "/below"), file + " is no folder");
    EXPECT_EQ(MakeFolder("/proc/nowhere"),
              "cannot make the folder /proc/nowhere: No such file or directory");
}
