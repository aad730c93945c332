#include "platform/Config.h"

#include "ConfigFixture.h"

#include <cstdlib>
#include <gmock/gmock.h>
#include <limits>

using testing::HasSubstr;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace {

using Values = std::map<std::string, std::string>;

class Config : public CConfigFixture {
protected:
    CConfig m_config{Path()};
};

/// Sets the environment's path for as long as it lives.
class CSystemPath {
public:
    explicit CSystemPath(const std::string& path) { setenv("CORVANE_CONFIG", path.c_str(), 1); }
    ~CSystemPath() { unsetenv("CORVANE_CONFIG"); }
};

} // namespace

TEST_F(Config, without_a_file_is_empty_and_says_nothing) {
    CaptureStderr();
    EXPECT_EQ(m_config.GetString("a", "k", "default"), "default");
    EXPECT_EQ(m_config.GetInteger("a", "k", 7), 7);
    EXPECT_EQ(m_config.GetDouble("a", "k", 0.5), 0.5);
    EXPECT_TRUE(m_config.GetBoolean("a", "k", true));
    EXPECT_FALSE(m_config.GetBoolean("a", "k", false));
    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_FALSE(std::filesystem::exists(Path())) << "reading must not make it";
}

TEST_F(Config, reads_texts) {
    Write("[a]\nk = some text\nempty =\n");
    EXPECT_EQ(m_config.GetString("a", "k", "default"), "some text");
    EXPECT_EQ(m_config.GetString("a", "empty", "default"), "");
}

TEST_F(Config, reads_integers_as_the_parser_does) {
    Write("[a]\nplain = 52\nserial = 010201RN0000\nnegative = -3\n");
    EXPECT_EQ(m_config.GetInteger("a", "plain", 0), 52);
    EXPECT_EQ(m_config.GetInteger("a", "serial", 0), 10201);
    EXPECT_EQ(m_config.GetInteger("a", "negative", 0), -3);
}

TEST_F(Config, reads_doubles) {
    Write("[a]\nk = -2.5e-3\n");
    EXPECT_EQ(m_config.GetDouble("a", "k", 0.0), -0.0025);
}

TEST_F(Config, reads_booleans_in_every_form) {
    for (const char* const text : {"true", "yes", "on", "1", "True", "ON"}) {
        Write(std::string("[a]\nk = ") + text + '\n');
        EXPECT_TRUE(m_config.GetBoolean("a", "k", false)) << text;
    }
    for (const char* const text : {"false", "no", "off", "0", "No", "FALSE"}) {
        Write(std::string("[a]\nk = ") + text + '\n');
        EXPECT_FALSE(m_config.GetBoolean("a", "k", true)) << text;
    }
}

TEST_F(Config, reads_a_whole_section_as_it_is_at_the_moment) {
    EXPECT_EQ(m_config.GetSection("a"), std::nullopt);
    Write("[a]\nk = 1\nl = some text\n[b]\n");
    EXPECT_EQ(m_config.GetSection("a"), (Values{{"k", "1"}, {"l", "some text"}}));
    EXPECT_EQ(m_config.GetSection("b"), Values{});
    Write("[a]\nk = 2\n");
    EXPECT_EQ(m_config.GetSection("a"), (Values{{"k", "2"}}));
    EXPECT_EQ(m_config.GetSection("b"), std::nullopt);
    EXPECT_TRUE(m_config.SetInteger("a", "m", 3));
    EXPECT_TRUE(m_config.Remove("a", "k"));
    EXPECT_EQ(m_config.GetSection("a"), (Values{{"m", "3"}}));
}

TEST_F(Config, names_the_sections_that_there_are_at_the_moment) {
    using Names = std::vector<std::string>;
    EXPECT_EQ(m_config.GetSections(), Names{});
    Write("[b]\n[a]\nk = 1\n");
    EXPECT_EQ(m_config.GetSections(), (Names{"b", "a"}));
    EXPECT_TRUE(m_config.SetInteger("c", "k", 1));
    EXPECT_EQ(m_config.GetSections(), (Names{"b", "a", "c"}));
    Write("[d]\n");
    EXPECT_EQ(m_config.GetSections(), Names{"d"});
}

TEST_F(Config, says_once_that_a_value_is_not_what_it_should_be_and_takes_the_default) {
    Write("[a]\ni = abc\nd = 1.5x\nb = 2\nempty =\n");
    CaptureStderr();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(m_config.GetInteger("a", "i", 7), 7);
        EXPECT_EQ(m_config.GetDouble("a", "d", 7.5), 7.5);
        EXPECT_TRUE(m_config.GetBoolean("a", "b", true));
        EXPECT_EQ(m_config.GetInteger("a", "empty", 8), 8);
    }
    EXPECT_EQ(GetCapturedStderr(),
              Path() + ": [a] i = abc is not an integer, the default is used\n" + Path() +
                  ": [a] d = 1.5x is not a number, the default is used\n" + Path() +
                  ": [a] b = 2 is not a boolean, the default is used\n" + Path() +
                  ": [a] empty =  is not an integer, the default is used\n");
}

TEST_F(Config, says_so_again_when_the_value_has_changed) {
    Write("[a]\nk = x\n");
    m_config.GetInteger("a", "k", 0);
    Write("[a]\nk = y\n");
    CaptureStderr();
    m_config.GetInteger("a", "k", 0);
    EXPECT_THAT(GetCapturedStderr(), HasSubstr("k = y is not an integer"));
}

TEST_F(Config, writes_each_kind_so_that_it_reads_back) {
    EXPECT_TRUE(m_config.SetString("a", "text", "x y"));
    EXPECT_TRUE(m_config.SetInteger("a", "integer", -2147483647 - 1));
    EXPECT_TRUE(m_config.SetDouble("a", "double", 0.1));
    EXPECT_TRUE(m_config.SetDouble("a", "large", 1e300));
    EXPECT_TRUE(m_config.SetBoolean("a", "yes", true));
    EXPECT_TRUE(m_config.SetBoolean("a", "no", false));
    EXPECT_EQ(Contents(), "[a]\ntext = x y\ninteger = -2147483648\ndouble = 0.1\nlarge = 1e+300\n"
                          "yes = 1\nno = 0\n");
    CConfig other(Path());
    EXPECT_EQ(other.GetString("a", "text", ""), "x y");
    EXPECT_EQ(other.GetInteger("a", "integer", 0), -2147483647 - 1);
    EXPECT_EQ(other.GetDouble("a", "double", 0.0), 0.1);
    EXPECT_EQ(other.GetDouble("a", "large", 0.0), 1e300);
    EXPECT_TRUE(other.GetBoolean("a", "yes", false));
    EXPECT_FALSE(other.GetBoolean("a", "no", true));
}

TEST_F(Config, refuses_what_a_line_cannot_carry_and_says_why_in_one_line) {
    Write("[a]\nk = 1\n");
    CaptureStderr();
    EXPECT_FALSE(m_config.SetString("a", "k", "x\ny"));
    EXPECT_FALSE(m_config.SetString("a", "k", " x"));
    EXPECT_FALSE(m_config.SetString("a\nb", "k", "x"));
    EXPECT_FALSE(m_config.SetString("a", "", "x"));
    EXPECT_FALSE(m_config.SetDouble("a", "k", std::numeric_limits<double>::infinity()));
    EXPECT_FALSE(m_config.SetDouble("a", "k", std::numeric_limits<double>::quiet_NaN()));
    const std::string head = Path() + ": [";
    EXPECT_EQ(GetCapturedStderr(),
              head + "\"a\"] \"k\" is not changed: the value has a line break or a zero byte\n" +
                  head + "\"a\"] \"k\" is not changed: the value has blanks around it\n" + head +
                  "\"a\\nb\"] \"k\" is not changed: the section has a line break or a zero byte\n" +
                  head + "\"a\"] \"\" is not changed: the key is empty\n" + head +
                  "\"a\"] \"k\" is not changed: the value is not finite\n");
    EXPECT_EQ(Contents(), "[a]\nk = 1\n");
    EXPECT_EQ(m_config.GetString("a", "k", ""), "1");
}

TEST_F(Config, removes_a_key_also_one_that_is_not_there) {
    Write("[a]\nk = 1\nk = 2\nl = 3\n");
    EXPECT_TRUE(m_config.Remove("a", "k"));
    EXPECT_TRUE(m_config.Remove("a", "k"));
    EXPECT_TRUE(m_config.Remove("b", "k"));
    EXPECT_TRUE(m_config.Remove("a", ""));
    EXPECT_EQ(Contents(), "[a]\nl = 3\n");
    EXPECT_EQ(m_config.GetString("a", "k", "default"), "default");
}

TEST_F(Config, has_nothing_left_to_save_after_a_write) {
    EXPECT_TRUE(m_config.Save());
    EXPECT_TRUE(m_config.SetInteger("a", "k", 1));
    EXPECT_TRUE(m_config.Save());
}

TEST_F(Config, of_the_system_is_one_object_for_the_process_until_it_is_released) {
    const CSystemPath path(Path());
    Write("[a]\nk = 1\n");
    CConfig* const first = CConfig::GetSystemConfig();
    CConfig* const second = CConfig::GetSystemConfig();
    EXPECT_EQ(first, second);
    EXPECT_EQ(first->GetInteger("a", "k", 0), 1);
    first->Release();
    EXPECT_EQ(second->GetInteger("a", "k", 0), 1) << "one handle is still out";
    second->Release();
}

TEST_F(Config, of_the_system_follows_the_environment_when_it_is_fetched_anew) {
    Write("[a]\nk = 1\n");
    const std::string otherPath = Folder().Write("other.conf", "[a]\nk = 2\n");
    for (const auto& [path, value] : {std::pair(Path(), 1), std::pair(otherPath, 2)}) {
        const CSystemPath systemPath(path);
        CConfig* const config = CConfig::GetSystemConfig();
        EXPECT_EQ(config->GetInteger("a", "k", 0), value);
        config->Release();
    }
}

TEST_F(Config, of_the_system_is_where_the_environment_says_else_in_its_fixed_place) {
    {
        const CSystemPath path(Path());
        EXPECT_EQ(CConfig::SystemPath(), Path());
    }
    EXPECT_EQ(CConfig::SystemPath(), "/etc/corvane/corvane.conf");
    const CSystemPath empty("");
    EXPECT_EQ(CConfig::SystemPath(), "/etc/corvane/corvane.conf");
}

TEST_F(Config, of_ones_own_is_not_released_with_the_systems) {
    const CSystemPath path(Path());
    CConfig* const system = CConfig::GetSystemConfig();
    m_config.Release();
    EXPECT_TRUE(system->SetInteger("a", "k", 5));
    EXPECT_EQ(m_config.GetInteger("a", "k", 0), 5);
    system->Release();
}
