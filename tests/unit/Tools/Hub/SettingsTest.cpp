#include "hub/Settings.h"

#include "Support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <set>

namespace {

using Hub::SSetting;
using Hub::SSettings;
using testing::HasSubstr;

const SSetting& Row(const std::string& option) {
    for (const SSetting& row : Hub::SettingsTable()) {
        if (row.Option() == option) {
            return row;
        }
    }
    ADD_FAILURE() << "there is no " << option;
    return Hub::SettingsTable()[0];
}

bool IsNumber(const SSetting& row) {
    return std::holds_alternative<std::int32_t SSettings::*>(row.member);
}

class SettingsFile : public testing::Test {
protected:
    std::string Read(const std::string& text) {
        return Hub::ReadSettingsFile(m_folder.Write("hub.conf", text), m_settings);
    }

    CTemporaryFolder m_folder;
    SSettings m_settings;
};

} // namespace

TEST(Settings, have_options_of_their_own) {
    std::set<std::string> options = {"--config", "--help", "--version"};
    for (const SSetting& row : Hub::SettingsTable()) {
        EXPECT_TRUE(options.insert(row.Option()).second) << row.Option();
        EXPECT_EQ(row.Option().find_first_not_of("abcdefghijklmnopqrstuvwxyz-"), std::string::npos);
        EXPECT_NE(std::string(row.meaning), "");
        EXPECT_NE(std::string(row.valueName), "");
    }
}

TEST(Settings, have_options_that_name_their_section) {
    EXPECT_EQ(std::string(Row("--state-dir").key), "state_dir");
    EXPECT_EQ(std::string(Row("--http-port").section), "http");
    EXPECT_EQ(std::string(Row("--mqtt-password-file").key), "password_file");
}

TEST(Settings, stand_together_by_section) {
    std::set<std::string> over;
    std::string section;
    for (const SSetting& row : Hub::SettingsTable()) {
        if (row.section != section) {
            EXPECT_TRUE(over.insert(row.section).second) << row.section << " twice";
            section = row.section;
        }
    }
}

TEST(Settings, have_members_of_their_own) {
    for (const SSetting& row : Hub::SettingsTable()) {
        SSettings settings;
        const std::string value = IsNumber(row) ? std::to_string(row.highest) : "changed";
        ASSERT_EQ(Hub::SetFromText(row, value, settings), "");
        for (const SSetting& other : Hub::SettingsTable()) {
            SSettings defaults;
            const bool isSame =
                IsNumber(other) ? settings.*std::get<std::int32_t SSettings::*>(other.member) ==
                                      defaults.*std::get<std::int32_t SSettings::*>(other.member)
                                : settings.*std::get<std::string SSettings::*>(other.member) ==
                                      defaults.*std::get<std::string SSettings::*>(other.member);
            EXPECT_EQ(isSame, &other != &row) << row.Option() << " and " << other.Option();
        }
    }
}

TEST(Settings, have_defaults_within_their_ranges) {
    for (const SSetting& row : Hub::SettingsTable()) {
        if (IsNumber(row)) {
            SSettings settings;
            EXPECT_EQ(Hub::SetFromText(row, Hub::DefaultText(row), settings), "") << row.Option();
        }
    }
    EXPECT_EQ(Hub::DefaultText(Row("--services-port")), "10001");
    EXPECT_EQ(Hub::DefaultText(Row("--http-port")), "8080");
    EXPECT_EQ(Hub::DefaultText(Row("--gpsd-port")), "2947");
    EXPECT_EQ(Hub::DefaultText(Row("--http-token")), "");
    for (const char* const option : {"--services-listen", "--http-listen", "--gpsd-listen"}) {
        EXPECT_EQ(Hub::DefaultText(Row(option)), "127.0.0.1");
    }
}

TEST(Settings, take_numbers_of_their_range_alone) {
    for (const SSetting& row : Hub::SettingsTable()) {
        if (!IsNumber(row)) {
            continue;
        }
        SSettings settings;
        EXPECT_EQ(Hub::SetFromText(row, std::to_string(row.lowest), settings), "");
        EXPECT_EQ(Hub::SetFromText(row, std::to_string(row.highest), settings), "");
        for (const std::string& wrong :
             {std::to_string(row.lowest - 1), std::to_string(row.highest + 1), std::string(),
              std::string("1x"), std::string(" 1"), std::string("1 "), std::string("1.5"),
              std::string("99999999999")}) {
            EXPECT_EQ(Hub::SetFromText(row, wrong, settings),
                      "'" + wrong + "' is no number from " + std::to_string(row.lowest) + " to " +
                          std::to_string(row.highest))
                << row.Option();
        }
        EXPECT_EQ(settings.*std::get<std::int32_t SSettings::*>(row.member), row.highest);
    }
}

TEST_F(SettingsFile, sets_what_it_names_and_leaves_the_rest) {
    EXPECT_EQ(Read("[http]\n# a comment\nport = 80\ntoken = a b\n[hub]\nstate_dir=/x\n"), "");
    EXPECT_EQ(m_settings.httpPort, 80);
    EXPECT_EQ(m_settings.httpToken, "a b");
    EXPECT_EQ(m_settings.stateFolder, "/x");
    EXPECT_EQ(m_settings.gpsdPort, 2947);
}

TEST_F(SettingsFile, may_be_empty) {
    EXPECT_EQ(Read(""), "");
}

TEST_F(SettingsFile, is_wrong_with_a_key_or_section_that_there_is_not) {
    EXPECT_THAT(Read("[http]\nprot = 80\n"),
                HasSubstr("hub.conf: [http] prot: there is no such setting"));
    EXPECT_THAT(Read("[htpp]\nport = 80\n"),
                HasSubstr("hub.conf: [htpp] port: there is no such setting"));
    EXPECT_THAT(Read("[hub]\nhttp-port = 80\n"), HasSubstr("there is no such setting"));
}

TEST_F(SettingsFile, is_wrong_with_a_key_in_no_section) {
    EXPECT_THAT(Read("port = 80\n"),
                HasSubstr("hub.conf: port: it stands before the first section"));
}

TEST_F(SettingsFile, is_wrong_with_a_number_that_is_none) {
    EXPECT_THAT(Read("[http]\nport = 65536\n"),
                HasSubstr("hub.conf: [http] port: '65536' is no number from 0 to 65535"));
}

TEST_F(SettingsFile, must_be_there_to_be_read) {
    EXPECT_EQ(Hub::ReadSettingsFile(m_folder.Path("none"), m_settings),
              m_folder.Path("none") + ": No such file or directory");
    EXPECT_EQ(Hub::ReadSettingsFile(m_folder.Path(), m_settings),
              m_folder.Path() + ": not a regular file");
}

TEST(Settings, are_right_unless_set) {
    EXPECT_EQ(Hub::WhyWrong(SSettings()), "");
}

TEST(Settings, of_services_and_gpsd_take_addresses_in_numbers_alone) {
    for (std::string SSettings::*const member :
         {&SSettings::servicesListen, &SSettings::gpsdListen}) {
        for (const char* address : {"0.0.0.0", "127.0.0.1", "192.0.2.7"}) {
            SSettings settings;
            settings.*member = address;
            EXPECT_EQ(Hub::WhyWrong(settings), "") << address;
        }
        for (const char* address : {"", "localhost", "::1", "127.1", "256.0.0.1"}) {
            SSettings settings;
            settings.*member = address;
            EXPECT_THAT(Hub::WhyWrong(settings), HasSubstr("-listen: '" + std::string(address) +
                                                           "' is no IPv4 address in numbers"));
        }
    }
}

TEST(Settings, of_the_web_server_take_names) {
    SSettings settings;
    settings.httpListen = "localhost";
    EXPECT_EQ(Hub::WhyWrong(settings), "");
}
