#include "ctl/ConfigList.h"

#include "platform/ConfigFixture.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

using namespace Ctl;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class ConfigList : public CConfigFixture {
protected:
    std::vector<std::string> Lines(const std::string& section) {
        std::vector<std::string> lines;
        for (const SSetting& setting : Settings(m_config, section, false)) {
            lines.push_back("[" + setting.section + "] " + Text(setting, false));
        }
        return lines;
    }

    CConfig m_config{Path()};
};

} // namespace

TEST_F(ConfigList, holds_what_is_set_known_keys_first) {
    Write("[zoo]\nk = 1\n[Corvane]\nunknown = x\nbaud_rate = 9600\nio_type = 1\n"
          "[region:here]\nsbas = waas\n");
    EXPECT_THAT(Lines(""),
                ElementsAre("[Corvane] io_type = 1\n", "[Corvane] baud_rate = 9600\n",
                            "[Corvane] unknown = x    (nothing reads it)\n",
                            "[zoo] k = 1    (nothing reads it)\n", "[region:here] sbas = waas\n"));
    EXPECT_THAT(Lines("zoo"), ElementsAre("[zoo] k = 1    (nothing reads it)\n"));
    EXPECT_THAT(Lines("glide"), ElementsAre());
}

TEST_F(ConfigList, holds_every_known_key_when_all_are_wanted) {
    Write("[Corvane]\nio_type = 1\nunknown = x\n");
    const std::vector<SSetting> settings = Settings(m_config, "", true);
    EXPECT_EQ(settings.size(), ConfigKeys().size() + 1);
    EXPECT_TRUE(settings[0].isSet);
    EXPECT_FALSE(settings[1].isSet);
    EXPECT_THAT(Text(settings[1], true), HasSubstr("(not set)"));
    EXPECT_THAT(Text(settings[1], true), HasSubstr(settings[1].known->meaning));
}

TEST_F(ConfigList, knows_defaults_that_are_other_keys) {
    const SConfigKey& key = *FindConfigKey("Corvane", "timeb_update");
    EXPECT_EQ(DefaultOf(m_config, "Corvane", key), "0.05");
    Write("[Corvane]\nposition_update = 0.2\n");
    EXPECT_EQ(DefaultOf(m_config, "Corvane", key), "0.2");
}

TEST_F(ConfigList, tells_a_value_that_is_empty_from_none) {
    Write("[Corvane]\nconfiguration_file =\n");
    EXPECT_EQ(ValueIn(m_config, "Corvane", "configuration_file"), "");
    EXPECT_EQ(ValueIn(m_config, "Corvane", "baud_rate"), std::nullopt);
    EXPECT_EQ(ValueIn(m_config, "none", "baud_rate"), std::nullopt);
}

TEST_F(ConfigList, tells_programs_all_of_it) {
    const TJSON known = Document(
        {"glide", "obstruction_lockout", "5", true, FindConfigKey("glide", "obstruction_lockout")});
    EXPECT_EQ(known["value"], "5");
    EXPECT_EQ(known["isSet"], true);
    EXPECT_EQ(known["isKnown"], true);
    EXPECT_EQ(known["inForce"], "when the daemon starts");
    const TJSON unknown = Document({"zoo", "k", "1", true, nullptr});
    EXPECT_EQ(unknown["isKnown"], false);
    EXPECT_FALSE(unknown.contains("inForce"));
}

TEST_F(ConfigList, is_empty_without_a_file_and_that_is_no_failure) {
    EXPECT_THAT(Lines(""), ElementsAre());
    EXPECT_EQ(WhyNotReadable(Path()), "");
}
