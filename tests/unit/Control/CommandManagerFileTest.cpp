// The command manager's configuration from a file.
#include "Control/CommandManagerTesting.h"

#include <gmock/gmock.h>

#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using testing::HasSubstr;
using Lines = std::vector<std::string>;

class ConfigurationFile : public CCommandManagerTesting {
protected:
    bool Load(const std::string& bytes) {
        return m_commands.LoadConfigurationFile(m_folder.Write("commands", bytes));
    }
    Lines Loaded(const std::string& bytes) { return Load(bytes) ? Configuration() : Lines{}; }

    /// Not taken: the list stays, and the reason names the file.
    void ExpectRefusal(const std::string& path, const std::string& reason) {
        CCommandManager commands(m_config);
        commands.SendCommand("kept\r\n");
        commands.QueueCommand("waiting\r\n");
        EXPECT_FALSE(commands.LoadConfigurationFile(path)) << path;
        EXPECT_EQ(commands.Configuration(), Lines{"kept\r\n"}) << path;
        EXPECT_EQ(commands.PendingCount(), 1U);
        EXPECT_THAT(commands.LastError(), HasSubstr(path));
        EXPECT_THAT(commands.LastError(), HasSubstr(reason));
    }
};

} // namespace

TEST_F(ConfigurationFile, makes_the_list_of_its_lines) {
    EXPECT_EQ(Loaded("unlogall\nlog versionb once"),
              (Lines{"unlogall\r\n", "log versionb once\r\n"}));
}

TEST_F(ConfigurationFile, replaces_the_list) {
    m_commands.BuildConfiguration();
    EXPECT_EQ(Loaded("unlogall"), Lines{"unlogall\r\n"});
}

TEST_F(ConfigurationFile, leaves_what_waits_and_sends_nothing) {
    m_commands.QueueCommand("waiting\r\n");
    EXPECT_TRUE(Load("unlogall"));
    EXPECT_EQ(TakePending(), Lines{"waiting\r\n"});
    EXPECT_EQ(m_source.done, Lines{});
}

TEST_F(ConfigurationFile, is_not_mixed_with_the_settings) {
    WriteSettings("sbas_prn = 122\ngps_logging_enabled = 1\n");
    EXPECT_TRUE(Load("unlogall"));
    EXPECT_EQ(m_commands.SBASPrn(), 0);
    EXPECT_FALSE(m_commands.GPSLoggingEnabled());
}

TEST_F(ConfigurationFile, is_trimmed_at_both_ends_of_each_line) {
    EXPECT_EQ(Loaded(" \tlog  versionb once \t \r\n\vx\f\r\r\ny "),
              (Lines{"log  versionb once\r\n", "x\r\n", "y\r\n"}));
}

TEST_F(ConfigurationFile, keeps_blank_lines) {
    EXPECT_EQ(Loaded("\na\n \t\n\r\nb"), (Lines{"\r\n", "a\r\n", "\r\n", "\r\n", "b\r\n"}));
}

TEST_F(ConfigurationFile, that_ends_in_a_line_feed_gives_one_last_blank_line) {
    EXPECT_EQ(Loaded("a\n"), (Lines{"a\r\n", "\r\n"}));
    EXPECT_EQ(Loaded("a\r\n"), (Lines{"a\r\n", "\r\n"}));
}

TEST_F(ConfigurationFile, that_is_empty_gives_one_blank_line) {
    EXPECT_EQ(Loaded(""), Lines{"\r\n"});
}

TEST_F(ConfigurationFile, gives_the_rest_of_a_line_over_1023_characters_as_the_next_one) {
    const std::string full(1023, 'a');
    EXPECT_EQ(Loaded(full), Lines{full + "\r\n"});
    EXPECT_EQ(Loaded(full + "\nb"), (Lines{full + "\r\n", "b\r\n"}));
    EXPECT_EQ(Loaded(full + "b\nc"), (Lines{full + "\r\n", "b\r\n", "c\r\n"}));
    EXPECT_EQ(Loaded(full + "\r\nc"), (Lines{full + "\r\n", "\r\n", "c\r\n"}));
    EXPECT_EQ(Loaded(full + full + "\nc"), (Lines{full + "\r\n", full + "\r\n", "c\r\n"}));
}

TEST_F(ConfigurationFile, is_trimmed_after_it_is_cut_into_lines) {
    EXPECT_EQ(Loaded(std::string(1022, ' ') + "a b"), (Lines{"a\r\n", "b\r\n"}));
}

TEST_F(ConfigurationFile, is_replayed_like_any_list) {
    EXPECT_TRUE(Load("unlogall\nrtkcommand reset\nlog versionb once"));
    EXPECT_TRUE(m_commands.ReplayConfiguration());
    EXPECT_EQ(TakePending(),
              (Lines{"unlogall\r\n", "rtkcommand reset\r\n", "log versionb once\r\n"}));
    EXPECT_EQ(Configuration(), (Lines{"unlogall\r\n", "log versionb once\r\n"}));
}

TEST_F(ConfigurationFile, without_a_path_is_built_from_the_settings) {
    WriteSettings("special_logs = true\n");
    m_commands.QueueCommand("waiting\r\n");
    EXPECT_TRUE(m_commands.LoadConfigurationFile(""));
    EXPECT_EQ(Configuration(), ExpectedCommands(ChoiceOf({{"special_logs", "true"}})));
    EXPECT_EQ(m_commands.PendingCount(), 0U);
}

TEST_F(ConfigurationFile, that_is_missing_leaves_the_list) {
    ExpectRefusal(m_folder.Path("missing"), "No such file or directory");
}

TEST_F(ConfigurationFile, that_is_no_regular_file_leaves_the_list) {
    const std::string pipe = m_folder.Path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& path : {m_folder.Path(), pipe, std::string("/dev/null")}) {
        ExpectRefusal(path, "not a regular file");
    }
}

TEST_F(ConfigurationFile, that_cannot_be_read_leaves_the_list) {
    // A regular file whose first page cannot be read, for nothing is mapped there.
    ExpectRefusal("/proc/self/mem", "Input/output error");
}

TEST_F(ConfigurationFile, may_have_16_MiB) {
    std::string bytes;
    while (bytes.size() < std::size_t{16} * 1024 * 1024) {
        bytes += std::string(1023, 'a') + "\n";
    }
    EXPECT_EQ(Loaded(bytes).size(), 16384U + 1U);
}

TEST_F(ConfigurationFile, of_more_than_16_MiB_leaves_the_list) {
    const std::string path = m_folder.Write("commands", "");
    std::filesystem::resize_file(path, 16 * 1024 * 1024 + 1);
    ExpectRefusal(path, "16 MiB");
}

TEST_F(ConfigurationFile, may_have_100000_lines) {
    const Lines commands = Loaded(std::string(99'999, '\n') + "last");
    ASSERT_EQ(commands.size(), 100'000U);
    EXPECT_EQ(commands.back(), "last\r\n");
}

TEST_F(ConfigurationFile, of_more_than_100000_lines_leaves_the_list) {
    const std::string path = m_folder.Write("commands", std::string(100'000, '\n') + "last");
    ExpectRefusal(path, "100000 lines");
}

TEST_F(ConfigurationFile, counts_the_parts_of_overlong_lines_as_lines) {
    const std::string parts(std::size_t{1023} * 3, 'a');
    EXPECT_EQ(Loaded(std::string(99'997, '\n') + parts).size(), 100'000U);
    ExpectRefusal(m_folder.Write("commands", std::string(99'998, '\n') + parts), "100000 lines");
}
