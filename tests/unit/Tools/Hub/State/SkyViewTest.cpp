#include "hub/state/SkyView.h"

#include "StateTesting.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SkyView : public testing::Test {
protected:
    /// Of what stands between "$" and "*", published at so many seconds.
    void Say(const std::string& text, double time = 1.0) {
        SayWhole(text.substr(0, 5), HubTesting::WithChecksum(text), time);
    }
    void SayWhole(const std::string& id, const std::string& sentence, double time = 1.0) {
        Hub::SSentence message;
        message.id = id;
        message.time = time;
        message.sentence = sentence;
        m_view.Add(message);
    }
    /// "number elevation azimuth density", "-" where there is none, "+" behind those in use.
    std::vector<std::string> Shown() const {
        const auto text = [](const std::optional<std::int32_t>& value) {
            return value ? std::to_string(*value) : std::string("-");
        };
        std::vector<std::string> shown;
        for (const Hub::CSkyView::SSatellite& each : m_view.Satellites()) {
            shown.push_back(std::to_string(each.prn) + " " + text(each.elevation) + " " +
                            text(each.azimuth) + " " + text(each.cn0) + (each.isUsed ? "+" : ""));
        }
        return shown;
    }

    Hub::CSkyView m_view;
};

} // namespace

TEST_F(SkyView, knows_nothing_at_first) {
    EXPECT_THAT(Shown(), IsEmpty());
    EXPECT_FALSE(m_view.Time());
    EXPECT_FALSE(m_view.Use());
}

TEST_F(SkyView, lists_the_satellites_of_a_view_by_rising_number) {
    Say("GPGSV,1,1,03,22,42,067,42,07,64,120,47,33,00,359,00", 5.5);
    EXPECT_THAT(Shown(), ElementsAre("7 64 120 47", "22 42 67 42", "33 0 359 0"));
    EXPECT_EQ(m_view.Time(), 5.5);
}

TEST_F(SkyView, puts_the_parts_of_a_view_together) {
    Say("GPGSV,3,1,09,01,01,001,01,02,02,002,02,03,03,003,03,04,04,004,04", 1.0);
    Say("GPGSV,3,2,09,05,05,005,05,06,06,006,06,07,07,007,07,08,08,008,08", 2.0);
    EXPECT_THAT(Shown(), IsEmpty());
    Say("GPGSV,3,3,09,09,09,009,09", 3.0);
    EXPECT_EQ(Shown().size(), 9U);
    EXPECT_EQ(Shown()[8], "9 9 9 9");
    EXPECT_EQ(m_view.Time(), 3.0);
}

TEST_F(SkyView, keeps_the_last_whole_view_until_the_next_one_is_whole) {
    Say("GPGSV,1,1,01,07,64,120,47");
    Say("GPGSV,2,1,05,01,01,001,01,02,02,002,02,03,03,003,03,04,04,004,04");
    EXPECT_THAT(Shown(), ElementsAre("7 64 120 47"));
    Say("GPGSV,2,2,05,05,05,005,05");
    EXPECT_EQ(Shown().size(), 5U);
}

TEST_F(SkyView, drops_a_view_of_which_a_part_is_missing_or_out_of_order) {
    Say("GPGSV,3,1,12,01,,,");
    Say("GPGSV,3,3,12,03,,,");
    EXPECT_THAT(Shown(), IsEmpty());
    Say("GPGSV,3,2,12,02,,,");
    Say("GPGSV,3,3,12,03,,,");
    EXPECT_THAT(Shown(), IsEmpty());
    Say("GPGSV,2,2,12,02,,,");
    EXPECT_THAT(Shown(), IsEmpty());
    EXPECT_FALSE(m_view.Time());
}

TEST_F(SkyView, drops_a_view_of_which_a_part_comes_twice) {
    Say("GPGSV,2,1,05,01,,,");
    Say("GPGSV,2,1,05,01,,,"); // begins anew
    Say("GPGSV,2,2,05,02,,,");
    EXPECT_THAT(Shown(), ElementsAre("1 - - -", "2 - - -"));
    Say("GPGSV,2,2,05,02,,,");
    EXPECT_THAT(Shown(), ElementsAre("1 - - -", "2 - - -"));
}

TEST_F(SkyView, drops_a_view_whose_number_of_parts_changes) {
    Say("GPGSV,2,1,05,01,,,");
    Say("GPGSV,3,2,05,02,,,");
    Say("GPGSV,2,2,05,02,,,");
    EXPECT_THAT(Shown(), IsEmpty());
}

TEST_F(SkyView, takes_a_view_without_satellites) {
    Say("GPGSV,1,1,01,07,64,120,47");
    Say("GPGSV,1,1,00", 2.0);
    EXPECT_THAT(Shown(), IsEmpty());
    EXPECT_EQ(m_view.Time(), 2.0);
}

TEST_F(SkyView, leaves_out_what_is_not_told) {
    Say("GPGSV,1,1,04,01,,,,02,10,,,03,,200,,04,,,40");
    EXPECT_THAT(Shown(), ElementsAre("1 - - -", "2 10 - -", "3 - 200 -", "4 - - 40"));
}

TEST_F(SkyView, leaves_out_what_cannot_be) {
    Say("GPGSV,1,1,04,01,91,360,100,02,-1,-1,-1,00,10,10,10,xx,10,10,10");
    EXPECT_THAT(Shown(), ElementsAre("1 - - -", "2 - - -"));
    Say("GPGSV,1,1,02,05,1x, 5,4.5,99999999999,10,10,10");
    EXPECT_THAT(Shown(), ElementsAre("5 - - -"));
}

TEST_F(SkyView, leaves_out_a_satellite_that_is_cut_off) {
    Say("GPGSV,1,1,02,01,10,20,30,02,10,20");
    EXPECT_THAT(Shown(), ElementsAre("1 10 20 30"));
}

TEST_F(SkyView, is_not_changed_by_a_damaged_sentence) {
    Say("GPGSV,1,1,01,07,64,120,47");
    Say("GPGSA,A,3,07,,,,,,,,,,,,1.6,0.9,1.3");
    for (const char* const sentence :
         {"", "$", "$GPGSV,1,1,00*FF", "$GPGSV,1,1,00", "GPGSV,1,1,00*79", "$GPGSV,1,1,00*7",
          "$GPGSV,1,1,00*79 ", "$GPGSV,1,1,00*G9", "*00", "$*00"}) {
        SayWhole("GPGSV", sentence);
        SayWhole("GPGSA", sentence);
    }
    EXPECT_THAT(Shown(), ElementsAre("7 64 120 47+"));
}

TEST_F(SkyView, is_not_changed_by_a_sentence_that_makes_no_sense) {
    Say("GPGSV,1,1,01,07,64,120,47");
    for (const char* const text : {"GPGSV", "GPGSV,1", "GPGSV,1,1", "GPGSV,0,0,00", "GPGSV,1,2,00",
                                   "GPGSV,,,", "GPGSV,10,1,00", "GPGSV,a,b,c", "GPGSV,-1,1,00"}) {
        Say(text);
    }
    EXPECT_THAT(Shown(), ElementsAre("7 64 120 47"));
    for (const char* const text : {"GPGSA", "GPGSA,A,3", "GPGSA,A,3,07,,,,,,,,,,,,1.6,0.9"}) {
        Say(text);
    }
    EXPECT_FALSE(m_view.Use());
}

TEST_F(SkyView, does_not_take_other_sentences_for_its_own) {
    SayWhole("GPZDA", HubTesting::WithChecksum("GPGSV,1,1,01,07,64,120,47"));
    EXPECT_THAT(Shown(), IsEmpty());
}

TEST_F(SkyView, takes_checksums_in_small_letters) {
    // The exclusive or of all between "$" and "*" is 7A.
    SayWhole("GPGSV", "$GPGSV,1,1,03*7a", 2.0);
    EXPECT_EQ(m_view.Time(), 2.0);
}

TEST_F(SkyView, knows_which_satellites_are_used) {
    Say("GPGSV,1,1,03,07,64,120,47,22,42,067,42,30,10,010,30");
    Say("GPGSA,A,3,07,30,,,,,,,,,,,1.6,0.9,1.3", 4.5);
    EXPECT_THAT(Shown(), ElementsAre("7 64 120 47+", "22 42 67 42", "30 10 10 30+"));
    ASSERT_TRUE(m_view.Use());
    EXPECT_EQ(m_view.Use()->time, 4.5);
    EXPECT_EQ(m_view.Use()->mode, 3);
    EXPECT_EQ(m_view.Use()->pdop, 1.6);
    EXPECT_EQ(m_view.Use()->hdop, 0.9);
    EXPECT_EQ(m_view.Use()->vdop, 1.3);
}

TEST_F(SkyView, marks_the_satellites_of_a_later_view_too) {
    Say("GPGSA,A,2,07,,,,,,,,,,,,1.6,0.9,1.3");
    Say("GPGSV,1,1,01,07,64,120,47");
    EXPECT_THAT(Shown(), ElementsAre("7 64 120 47+"));
    Say("GPGSA,A,1,,,,,,,,,,,,,,,");
    EXPECT_THAT(Shown(), ElementsAre("7 64 120 47"));
    EXPECT_EQ(m_view.Use()->mode, 1);
    EXPECT_FALSE(m_view.Use()->pdop);
}

TEST_F(SkyView, takes_dilutions_that_cannot_be_for_unknown) {
    Say("GPGSA,A,9,07,,,,,,,,,,,,-1,x,1e999");
    ASSERT_TRUE(m_view.Use());
    EXPECT_EQ(m_view.Use()->mode, 1);
    EXPECT_FALSE(m_view.Use()->pdop);
    EXPECT_FALSE(m_view.Use()->hdop);
    EXPECT_FALSE(m_view.Use()->vdop);
}

TEST_F(SkyView, takes_a_dilution_with_fields_behind_it) {
    Say("GPGSA,A,3,07,,,,,,,,,,,,1.6,0.9,1.3,1");
    EXPECT_EQ(m_view.Use()->vdop, 1.3);
}

TEST(Sentence, goes_from_its_dollar_to_a_checksum_that_agrees) {
    EXPECT_TRUE(Hub::IsSentence("$*00"));
    // The standard's own way of counting: "GPGLL,5057.970,N,00146.110,E,142451,A" gives 27.
    EXPECT_TRUE(Hub::IsSentence("$GPGLL,5057.970,N,00146.110,E,142451,A*27"));
    EXPECT_FALSE(Hub::IsSentence("$GPGLL,5057.970,N,00146.110,E,142451,A*26"));
    EXPECT_FALSE(Hub::IsSentence("$GPGLL,5057.970,N,00146.110,E,142451,A*27\r\n"));
    EXPECT_FALSE(Hub::IsSentence("$GPGLL,5057.970,N,00146.110,E,142451,A"));
    EXPECT_FALSE(Hub::IsSentence(""));
}

TEST(Sentence, has_fields_behind_its_address) {
    EXPECT_THAT(Hub::FieldsOf("$GPGSV,1,,x*00"), ElementsAre("1", "", "x"));
    EXPECT_THAT(Hub::FieldsOf("$GPGSV*00"), IsEmpty());
}
