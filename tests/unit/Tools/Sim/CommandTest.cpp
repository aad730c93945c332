// Lines and binary messages as commands.
#include "sim/Command.h"

#include "sim/CommandReader.h"

#include "Support/BinarySentence.h"

#include <gmock/gmock.h>

namespace {

using Sim::ECommandForm;
using Sim::ParseLine;
using Sim::SCommand;
using testing::ElementsAre;
using testing::IsEmpty;

using Names = std::vector<std::string>;

Names Read(Sim::CCommandReader& reader, std::string_view bytes) {
    Names names;
    for (const SCommand& command : reader.Read(bytes)) {
        names.push_back(command.name);
    }
    return names;
}

Names Read(std::string_view bytes) {
    Sim::CCommandReader reader;
    return Read(reader, bytes);
}

} // namespace

TEST(SimCommand, has_a_name_in_capitals_and_its_words) {
    const SCommand command = ParseLine("log Usb2 bestposb ontime 0.05");
    EXPECT_EQ(command.form, ECommandForm::abbreviated);
    EXPECT_EQ(command.name, "LOG");
    EXPECT_THAT(command.words, ElementsAre("Usb2", "bestposb", "ontime", "0.05"));
}

TEST(SimCommand, has_words_between_blanks_tabs_and_commas) {
    EXPECT_THAT(ParseLine("  com,com2 \t 9600 ,, n ").words, ElementsAre("com2", "9600", "n"));
}

TEST(SimCommand, keeps_a_text_in_quotes_together) {
    EXPECT_THAT(ParseLine("psrdiffsource auto \"A B,C\" x").words,
                ElementsAre("auto", "A B,C", "x"));
    EXPECT_THAT(ParseLine("softloadsrec \"S0~V~").words, ElementsAre("S0~V~"));
    EXPECT_THAT(ParseLine("softloadsrec \"").words, ElementsAre(""));
}

TEST(SimCommand, is_nothing_on_an_empty_line) {
    EXPECT_EQ(ParseLine(" \t").name, "");
    EXPECT_THAT(ParseLine("").words, IsEmpty());
}

TEST(SimCommand, of_the_ascii_form_has_its_arguments_behind_the_semicolon) {
    // CRC-32 of the text between # and *, start 0, not inverted: worked out with zlib.
    const SCommand command = ParseLine(
        "#LOGA,THISPORT,0,0,UNKNOWN,0,0.0,0,0,0;COM1,BESTPOSB,ONTIME,1.0,0.0,NOHOLD*a2a23f0c");
    EXPECT_EQ(command.form, ECommandForm::ascii);
    EXPECT_FALSE(command.isDamaged);
    EXPECT_EQ(command.name, "LOG");
    EXPECT_THAT(command.words, ElementsAre("COM1", "BESTPOSB", "ONTIME", "1.0", "0.0", "NOHOLD"));
}

TEST(SimCommand, of_the_ascii_form_is_damaged_without_its_crc) {
    for (const std::string crc : {"*00000000", "*", "", "*a2a23f0c0", "*1"}) {
        EXPECT_TRUE(ParseLine("#LOGA,THISPORT,0,0,UNKNOWN,0,0.0,0,0,0;COM1,BESTPOSB,ONTIME,1.0,"
                              "0.0,NOHOLD" +
                              crc)
                        .isDamaged)
            << crc;
    }
}

TEST(SimCommandReader, takes_a_line_that_ends_with_return_or_line_feed_or_both) {
    EXPECT_EQ(Read("one\rtwo\nthree\r\nfour"), (Names{"ONE", "TWO", "THREE"}));
    EXPECT_EQ(Read("\r\n\n\r"), (Names{"", "", ""}));
}

TEST(SimCommandReader, takes_a_line_in_any_pieces) {
    Sim::CCommandReader reader;
    EXPECT_EQ(Read(reader, "unlog"), Names{});
    EXPECT_EQ(Read(reader, "all\r"), Names{"UNLOGALL"});
    EXPECT_EQ(Read(reader, "\nreset\n"), Names{"RESET"});
}

TEST(SimCommandReader, passes_over_lines_that_nobody_could_have_typed) {
    EXPECT_EQ(Read("\x9C\xAE\x0E\nreset\nre\x01set\nunlogall\n"), (Names{"RESET", "UNLOGALL"}));
}

TEST(SimCommandReader, passes_over_a_line_that_is_too_long) {
    EXPECT_EQ(Read(std::string(1023, 'a') + "\n").size(), 1U);
    EXPECT_EQ(Read(std::string(1024, 'a') + "\nreset\n"), Names{"RESET"});
}

TEST(SimCommandReader, forgets_what_had_begun) {
    Sim::CCommandReader reader;
    Read(reader, "re\x80");
    reader.Forget();
    EXPECT_EQ(Read(reader, "set\n"), Names{"SET"});
}

TEST(SimCommandReader, is_not_held_up_by_what_looks_like_the_start_of_a_binary_message) {
    EXPECT_EQ(Read("\xAA\nreset\n"), Names{"RESET"});
    EXPECT_EQ(Read("\xAA\x44\nreset\n"), Names{"RESET"});
    // Of a length that no command has.
    EXPECT_EQ(Read(std::string("\xAA\x44\x12\x1C\x01\0\0\0\xFF\x7F", 10) + "reset\nunlogall\n"),
              (Names{"RESET", "UNLOGALL"}));
}
