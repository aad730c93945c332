// What clients are answered and told.

#include "ServerTesting.h"

using namespace GPSDTesting;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

class GPSDServer : public CGPSDServerTesting {};

constexpr const char* kDead = R"({"class":"TPV","device":"corvane","mode":1})";

} // namespace

TEST_F(GPSDServer, welcomes_a_client_with_its_version) {
    const auto client = Connect();
    EXPECT_EQ(client->Received(),
              "{\"class\":\"VERSION\",\"release\":\"3.22\",\"rev\":\"corvane " CORVANE_VERSION
              "\",\"proto_major\":3,\"proto_minor\":14}\r\n");
}

TEST_F(GPSDServer, tells_nothing_more_to_a_client_that_does_not_watch) {
    const auto client = Connect();
    EXPECT_THAT(ToldBy(*client, [&] { PublishSolution(); }), IsEmpty());
}

TEST_F(GPSDServer, answers_every_command) {
    const auto client = Connect();
    PublishSolution();
    EXPECT_EQ(Classes(AnswersTo(*client, "?VERSION;\n", 1)), Lines{"VERSION"});
    EXPECT_EQ(Classes(AnswersTo(*client, "?DEVICES;\n", 1)), Lines{"DEVICES"});
    EXPECT_EQ(Classes(AnswersTo(*client, "?DEVICE;\n", 1)), Lines{"DEVICE"});
    EXPECT_EQ(Classes(AnswersTo(*client, "?POLL;\n", 1)), Lines{"POLL"});
    EXPECT_EQ(Classes(AnswersTo(*client, "?WATCH;\n", 2)), (Lines{"DEVICES", "WATCH"}));
}

TEST_F(GPSDServer, answers_several_commands_of_a_line_in_order) {
    const auto client = Connect();
    EXPECT_EQ(Classes(AnswersTo(*client, "?POLL;?VERSION;?FOO;?WATCH={};?DEVICES;\n", 6)),
              (Lines{"POLL", "VERSION", "ERROR", "DEVICES", "WATCH", "DEVICES"}));
}

TEST_F(GPSDServer, answers_a_command_without_a_line_end) {
    const auto client = Connect();
    EXPECT_EQ(Classes(AnswersTo(*client, "?WATCH={\"json\":true}", 2)),
              (Lines{"DEVICES", "WATCH"}));
    EXPECT_EQ(Classes(AnswersTo(*client, "?POLL;", 1)), Lines{"POLL"});
}

TEST_F(GPSDServer, answers_a_command_that_comes_byte_by_byte) {
    const auto client = Connect();
    for (const char c : std::string("?VERSIO")) {
        EXPECT_THAT(ToldBy(*client, [&] { client->Send(std::string(1, c)); }), IsEmpty());
    }
    EXPECT_EQ(Classes(AnswersTo(*client, "N;", 1)), Lines{"VERSION"});
}

TEST_F(GPSDServer, tells_of_what_it_does_not_know) {
    const auto client = Connect();
    EXPECT_EQ(AnswersTo(*client, "?FOO;\n", 1),
              Lines{R"({"class":"ERROR","message":"Unrecognized request '?FOO'"})"});
    EXPECT_EQ(AnswersTo(*client, "hello \"you\"\n", 1),
              Lines{R"({"class":"ERROR","message":"Unrecognized request 'hello \"you\"'"})"});
    EXPECT_EQ(AnswersTo(*client, "?" + std::string(3000, 'x') + ";\n", 1),
              Lines{R"({"class":"ERROR","message":"Unrecognized request '?)" +
                    std::string(79, 'x') + "'\"}"});
}

TEST_F(GPSDServer, refuses_a_wrong_policy_and_keeps_the_old_one) {
    const auto client = Watcher();
    EXPECT_EQ(
        AnswersTo(*client, "?WATCH={\"json\":0};\n", 1),
        Lines{R"({"class":"ERROR","message":"Invalid WATCH: 'json' must be true or false"})"});
    EXPECT_THAT(AnswersTo(*client, "?WATCH;\n", 2)[1], HasSubstr(R"("enable":true,"json":true)"));
}

TEST_F(GPSDServer, does_not_set_up_the_receiver) {
    const auto client = Connect();
    EXPECT_EQ(Classes(AnswersTo(*client, "?DEVICE={\"bps\":9600};\n", 1)), Lines{"ERROR"});
}

TEST_F(GPSDServer, tells_each_solution_to_who_watches) {
    const auto client = Watcher();
    PublishSolution();
    Settle();
    const Lines told = ToldBy(*client, [&] {
        for (int i = 0; i < 3; ++i) {
            PublishSolution();
        }
    });
    EXPECT_EQ(Classes(told), (Lines{"TPV", "GST", "TPV", "GST", "TPV", "GST"}));
    EXPECT_EQ(json::parse(told[0]).at("ecefx"), 6378237.0);
}

TEST_F(GPSDServer, a_client_that_no_longer_watches_is_told_nothing) {
    const auto client = Watcher();
    AnswersTo(*client, "?WATCH={\"enable\":false};\n", 2);
    EXPECT_THAT(ToldBy(*client, [&] { PublishSolution(); }), IsEmpty());
}

TEST_F(GPSDServer, uses_the_geoid_once_it_is_known) {
    Hub::SGeoid geoid;
    geoid.separation = 43.5;
    Publish(geoid);
    const auto client = Watcher();
    EXPECT_EQ(json::parse(ToldBy(*client, [&] { PublishSolution(); })[1])["geoidSep"], 43.5);
}

TEST_F(GPSDServer, tells_the_sky_with_each_whole_view) {
    const auto client = Watcher();
    PublishSolution();
    const auto view = [&](const char* text) {
        m_clocks.Advance(1);
        return ToldBy(*client, [&] { Publish(Sentence(text, CClocks::Now())); });
    };
    Settle();
    EXPECT_THAT(view("GPGSV,2,1,05,07,64,120,47,09,10,300,,11,5,6,30,12,7,8,31"), IsEmpty());
    EXPECT_THAT(view("GPGSA,A,3,07,,,,,,,,,,,,1.6,0.9,1.3"), IsEmpty());
    const Lines told = view("GPGSV,2,2,05,13,1,2,33");
    ASSERT_EQ(Classes(told), Lines{"SKY"});
    EXPECT_EQ(json::parse(told[0]).at("uSat"), 14) << "as the solution tells";
    EXPECT_EQ(json::parse(told[0]).at("hdop"), 0.9);
}

TEST_F(GPSDServer, tells_the_sky_from_channels_where_there_are_no_views) {
    const auto client = Watcher();
    const Lines told = ToldBy(*client, [&] { Publish(Sky({Channel(38, 40.0)}, CClocks::Now())); });
    ASSERT_EQ(Classes(told), Lines{"SKY"});
    EXPECT_EQ(json::parse(told[0]).at("satellites")[0]["PRN"], 65);
}

TEST_F(GPSDServer, prefers_the_receivers_own_noise_sentence) {
    const auto client = Watcher();
    PublishSolution();
    Settle();
    const char* text = "GPGST,180640.00,2.44,,,,1.6,1.2,2.52";
    const Lines own = ToldBy(*client, [&] { Publish(Sentence(text, CClocks::Now())); });
    ASSERT_EQ(Classes(own), Lines{"GST"});
    EXPECT_EQ(json::parse(own[0]).at("rms"), 2.44);
    EXPECT_EQ(Classes(ToldBy(*client, [&] { PublishSolution(); })), Lines{"TPV"});
    m_clocks.Advance(10'001);
    EXPECT_EQ(Classes(ToldBy(*client, [&] { PublishSolution(); })), (Lines{"TPV", "GST"}));
}

TEST_F(GPSDServer, tells_once_a_second_that_there_is_no_position_when_solutions_stop) {
    const auto client = Watcher();
    EXPECT_EQ(Classes(ToldBy(*client, [&] { PublishSolution(); })),
              (Lines{"DEVICE", "TPV", "GST"}));
    m_clocks.Advance(2'000);
    EXPECT_THAT(ToldBy(*client, [] {}), IsEmpty());
    m_clocks.Advance(1);
    EXPECT_EQ(ToldBy(*client, [] {}), Lines{kDead});
    m_clocks.Advance(999);
    EXPECT_THAT(ToldBy(*client, [] {}), IsEmpty());
    m_clocks.Advance(1);
    EXPECT_EQ(ToldBy(*client, [] {}), Lines{kDead});
    EXPECT_EQ(Classes(ToldBy(*client, [&] { PublishSolution(); })), (Lines{"TPV", "GST"}));
    m_clocks.Advance(1'500);
    EXPECT_THAT(ToldBy(*client, [] {}), IsEmpty());
}

TEST_F(GPSDServer, tells_the_same_while_there_has_never_been_a_solution) {
    const auto client = Watcher();
    m_clocks.Advance(1'000);
    EXPECT_EQ(ToldBy(*client, [] {}), Lines{kDead});
}

TEST_F(GPSDServer, an_old_solution_that_is_told_again_is_no_position) {
    const auto client = Watcher();
    Publish(Solution(CClocks::Now() - 2.5));
    EXPECT_EQ(Classes(ToldBy(*client, [] {})), Lines{"DEVICE"});
    m_clocks.Advance(1'000);
    EXPECT_EQ(ToldBy(*client, [] {}), Lines{kDead});
    const json poll = json::parse(AnswersTo(*client, "?POLL;\n", 1)[0]);
    EXPECT_EQ(poll.at("active"), 1);
    EXPECT_EQ(poll.at("tpv")[0]["mode"], 1);
}

TEST_F(GPSDServer, an_hour_that_the_clock_is_set_forward_ends_with_the_next_solution) {
    const auto client = Watcher();
    PublishSolution();
    m_clocks.SetWallForward(3'600'000);
    const Lines told = ToldBy(*client, [&] { PublishSolution(); });
    EXPECT_EQ(json::parse(told[told.size() - 2]).at("mode"), 3);
}

TEST_F(GPSDServer, solutions_without_a_position_are_told_as_such) {
    const auto client = Watcher();
    const Lines told = ToldBy(*client, [&] { Publish(NoPosition(CClocks::Now())); });
    ASSERT_EQ(Classes(told), (Lines{"DEVICE", "TPV"}));
    EXPECT_EQ(told[1], kDead);
}

TEST_F(GPSDServer, polling_tells_all_that_is_known) {
    const auto client = Connect();
    EXPECT_EQ(AnswersTo(*client, "?POLL;\n", 1),
              Lines{R"({"class":"POLL","time":"2025-11-22T18:06:40.000Z","active":0,)"
                    R"("tpv":[],"gst":[],"sky":[]})"});
    PublishSolution();
    Publish(Sentence("GPGSV,1,1,01,07,64,120,47", CClocks::Now()));
    m_clocks.Advance(500);
    const json poll = json::parse(AnswersTo(*client, "?POLL;\n", 1)[0]);
    EXPECT_EQ(poll.at("time"), "2025-11-22T18:06:40.500Z");
    EXPECT_EQ(poll.at("active"), 1);
    EXPECT_EQ(poll.at("tpv")[0]["class"], "TPV");
    EXPECT_EQ(poll.at("tpv")[0]["mode"], 3);
    EXPECT_EQ(poll.at("gst")[0]["class"], "GST");
    EXPECT_EQ(poll.at("sky")[0]["class"], "SKY");
    EXPECT_EQ(poll.at("tpv").size() + poll.at("gst").size() + poll.at("sky").size(), 3U);
}

TEST_F(GPSDServer, the_device_comes_and_goes_with_the_program_that_tells_solutions) {
    const auto client = Watcher();
    m_clocks.Advance(250);
    EXPECT_EQ(ToldBy(*client, [&] { PublishSolution(); })[0],
              R"({"class":"DEVICE","path":"corvane","driver":"corvane",)"
              R"("activated":"2025-11-22T18:06:40.250Z","flags":1})");
    m_server.ProcessGone(7);
    EXPECT_THAT(AnswersTo(*client, "?DEVICES;\n", 1)[0], HasSubstr("corvane")) << "another one";
    const Lines told = ToldBy(*client, [&] { m_server.ProcessGone(1); });
    EXPECT_EQ(told, (Lines{R"({"class":"DEVICE","path":"corvane","activated":0})", kDead}));
    EXPECT_EQ(AnswersTo(*client, "?DEVICES;\n", 1), Lines{R"({"class":"DEVICES","devices":[]})"});
    EXPECT_EQ(json::parse(AnswersTo(*client, "?POLL;\n", 1)[0]).at("active"), 0);
    EXPECT_EQ(Classes(AnswersTo(*client, "?DEVICE;\n", 1)), Lines{"ERROR"});
    m_clocks.Advance(750);
    EXPECT_THAT(ToldBy(*client, [&] { PublishSolution(); })[0],
                HasSubstr(R"("activated":"2025-11-22T18:06:41.000Z")"));
}

TEST_F(GPSDServer, sentences_are_made_and_forwarded_to_who_watches_them) {
    const auto client = Watcher(R"("nmea":true)");
    const Lines made = ToldBy(*client, [&] { PublishSolution(); });
    EXPECT_THAT(made, ElementsAre(StartsWith("$GPGGA,180640.00,"), StartsWith("$GPRMC,180640.00,A"),
                                  StartsWith("$GPVTG,36.87,T,")));
    Hub::SSentence sentence = Sentence("GPZDA,204007.00,13,06,2007,00,00");
    EXPECT_EQ(ToldBy(*client, [&] { Publish(sentence); }), Lines{sentence.sentence});
    sentence.sentence = "$GPZDA,damaged";
    EXPECT_EQ(ToldBy(*client, [&] { Publish(sentence); }), Lines{"$GPZDA,damaged"});
}

TEST_F(GPSDServer, sentences_tell_as_well_that_solutions_have_stopped) {
    const auto client = Watcher(R"("nmea":true)");
    PublishSolution();
    Settle();
    m_clocks.Advance(2'001);
    const Lines told = ToldBy(*client, [] {});
    ASSERT_GE(told.size(), 3U);
    EXPECT_EQ(told[told.size() - 3], "$GPGGA,,,,,,0,00,,,M,,M,,*66");
}

TEST_F(GPSDServer, reports_and_sentences_can_be_watched_together) {
    const auto client = Watcher(R"("nmea":true,"json":true)");
    const Lines told = ToldBy(*client, [&] { PublishSolution(); });
    EXPECT_THAT(told,
                ElementsAre(HasSubstr("DEVICE"), HasSubstr("TPV"), HasSubstr("GST"),
                            StartsWith("$GPGGA"), StartsWith("$GPRMC"), StartsWith("$GPVTG")));
}

TEST_F(GPSDServer, raw_blocks_are_told_as_text_or_as_they_are) {
    const auto text = Watcher(R"("raw":1)");
    const auto verbatim = Watcher(R"("raw":2)");
    const auto neither = Watcher();
    Hub::SRawBlock block;
    block.name = "NovatelPortHandler";
    block.bytes = std::string("\xAA\x44\x12\x00\n", 5) + "$GPVTG,,T,,M,,N,,K,N*2C\r\n";
    EXPECT_EQ(ToldBy(*text, [&] { Publish(block); }),
              (Lines{"aa4412000a", "$GPVTG,,T,,M,,N,,K,N*2C"}));
    verbatim->Transfer();
    const std::string& received = verbatim->Received();
    ASSERT_GE(received.size(), block.bytes.size());
    EXPECT_EQ(received.substr(received.size() - block.bytes.size()), block.bytes);
    EXPECT_THAT(ToldBy(*neither, [] {}), IsEmpty());
}

TEST_F(GPSDServer, raw_blocks_of_several_ports_are_not_mixed) {
    const auto client = Watcher(R"("raw":1)");
    const auto publish = [&](const char* name, const char* bytes) {
        Hub::SRawBlock block;
        block.name = name;
        block.bytes = bytes;
        Publish(block);
    };
    EXPECT_EQ(ToldBy(*client,
                     [&] {
                         publish("NovatelPortHandler", "$GPVTG,,T,,");
                         publish("NovatelPortHandler2", "$GPGGA,,,,,,0,");
                         publish("NovatelPortHandler", "M,,N,,K,N*2C\r\n");
                         publish("NovatelPortHandler2", "00,,,M,,M,,*66\r\n");
                     }),
              (Lines{"$GPVTG,,T,,M,,N,,K,N*2C", "$GPGGA,,,,,,0,00,,,M,,M,,*66"}));
}

TEST_F(GPSDServer, what_was_held_back_does_not_outlive_its_watcher) {
    const auto client = Watcher(R"("raw":1)");
    Hub::SRawBlock block;
    block.name = "NovatelPortHandler";
    block.bytes = "$GPVTG,,T,,";
    Publish(block);
    AnswersTo(*client, "?WATCH={\"raw\":0};\n", 2);
    Publish(block);
    AnswersTo(*client, "?WATCH={\"raw\":1};\n", 2);
    block.bytes = "$GPVTG,,T,,M,,N,,K,N*2C\r\n";
    EXPECT_EQ(ToldBy(*client, [&] { Publish(block); }), Lines{"$GPVTG,,T,,M,,N,,K,N*2C"});
}

TEST_F(GPSDServer, a_sentence_is_not_told_twice_to_who_watches_raw_bytes_too) {
    const auto client = Watcher(R"("raw":1,"nmea":true)");
    EXPECT_THAT(ToldBy(*client, [&] { Publish(Sentence("GPZDA,204007.00,13,06,2007,00,00")); }),
                IsEmpty());
}

TEST_F(GPSDServer, a_client_that_has_sent_all_is_answered_and_left) {
    const auto client = Connect();
    client->Send("?VERSION;?DEVICES");
    client->EndSending();
    AwaitEnd(*client);
    EXPECT_EQ(Classes(LinesAfter(*client, 1)), (Lines{"VERSION", "DEVICES"}));
    EXPECT_EQ(m_server.ClientCount(), 0U);
}
