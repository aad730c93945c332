#include "ConfigText.h"

#include <gtest/gtest.h>

namespace {

using Values = std::map<std::string, std::string>;

/// What a text reads after one value is set in it.
std::string After(const std::string& text, const std::string& section, const std::string& key,
                  const std::string& value) {
    CConfigText config(text);
    config.Set(section, key, value);
    EXPECT_EQ(config.Get(section, key), value);
    EXPECT_EQ(CConfigText(config.Text()).Get(section, key), value) << "it must read back";
    return config.Text();
}

std::string AfterRemoving(const std::string& text, const std::string& section,
                          const std::string& key) {
    CConfigText config(text);
    config.Remove(section, key);
    EXPECT_EQ(config.Get(section, key), std::nullopt);
    return config.Text();
}

std::vector<std::size_t> ProblemLines(const std::string& text) {
    std::vector<std::size_t> numbers;
    for (const auto& problem : CConfigText(text).Problems()) {
        numbers.push_back(problem.lineNumber);
    }
    return numbers;
}

constexpr const char* kExample = "# receiver\n"
                                 "[platform]\n"
                                 "baud = 115200\n"
                                 "  mode\t=  fast \n"
                                 "; not used\n"
                                 "\n"
                                 "[glide]\n"
                                 "obstruction_lockout=30\n";

} // namespace

TEST(ConfigText, is_read_by_section_and_key) {
    const CConfigText config(kExample);
    EXPECT_EQ(config.Get("platform", "baud"), "115200");
    EXPECT_EQ(config.Get("platform", "mode"), "fast");
    EXPECT_EQ(config.Get("glide", "obstruction_lockout"), "30");
    EXPECT_EQ(config.Get("glide", "baud"), std::nullopt);
    EXPECT_EQ(config.Get("other", "baud"), std::nullopt);
}

TEST(ConfigText, tells_upper_from_lower_case) {
    const CConfigText config("[A]\nk = 1\nK = 2\n[a]\nk = 3\n");
    EXPECT_EQ(config.Get("A", "k"), "1");
    EXPECT_EQ(config.Get("A", "K"), "2");
    EXPECT_EQ(config.Get("a", "k"), "3");
    EXPECT_EQ(config.Get("a", "K"), std::nullopt);
}

TEST(ConfigText, takes_the_last_of_a_repeated_key) {
    const CConfigText config("[a]\nk = 1\nk = 2\n[b]\nk = 9\n[a]\nk = 3\n");
    EXPECT_EQ(config.Get("a", "k"), "3");
}

TEST(ConfigText, gives_a_section_as_values_by_key) {
    const CConfigText config(kExample);
    EXPECT_EQ(config.GetSection("platform"), (Values{{"baud", "115200"}, {"mode", "fast"}}));
    EXPECT_EQ(config.GetSection("glide"), (Values{{"obstruction_lockout", "30"}}));
    EXPECT_EQ(CConfigText("[a]\nK = 1\nk =\n").GetSection("a"), (Values{{"K", "1"}, {"k", ""}}));
}

TEST(ConfigText, tells_a_section_without_keys_from_one_that_is_not_there) {
    const CConfigText config("[a]\n; k = 1\n\n[b]\nk = 1\n");
    EXPECT_EQ(config.GetSection("a"), Values{});
    EXPECT_EQ(config.GetSection("A"), std::nullopt);
    EXPECT_EQ(config.GetSection(""), std::nullopt);
    EXPECT_EQ(CConfigText("").GetSection("a"), std::nullopt);
}

TEST(ConfigText, gives_the_last_of_a_sections_repeated_keys_and_all_its_parts) {
    const CConfigText config("[a]\nk = 1\nk = 2\nl = 3\n[b]\nk = 9\n[a]\nm = 4\nl = 5\n");
    EXPECT_EQ(config.GetSection("a"), (Values{{"k", "2"}, {"l", "5"}, {"m", "4"}}));
}

TEST(ConfigText, gives_no_section_what_it_does_not_understand) {
    const CConfigText config("[a]\nnonsense\nk = 1\n = 2\n[open\nlost = 1\n[b]\n");
    EXPECT_EQ(config.GetSection("a"), (Values{{"k", "1"}}));
    EXPECT_EQ(config.GetSection("open"), std::nullopt);
    EXPECT_EQ(config.GetSection("b"), Values{});
}

TEST(ConfigText, gives_the_entries_before_the_first_section_no_section) {
    EXPECT_EQ(CConfigText("k = 1\n[a]\nk = 2\n").GetSection(""), std::nullopt);
}

TEST(ConfigText, gives_a_section_as_it_has_been_changed) {
    CConfigText config("[a]\nk = 1\nl = 2\n");
    config.Set("a", "k", "3");
    config.Set("a", "m", "4");
    config.Remove("a", "l");
    config.Set("b", "k", "5");
    EXPECT_EQ(config.GetSection("a"), (Values{{"k", "3"}, {"m", "4"}}));
    EXPECT_EQ(config.GetSection("b"), (Values{{"k", "5"}}));
    config.Remove("b", "k");
    EXPECT_EQ(config.GetSection("b"), Values{});
}

TEST(ConfigText, names_its_sections_once_each_in_their_order) {
    using Names = std::vector<std::string>;
    EXPECT_EQ(CConfigText(kExample).GetSections(), (Names{"platform", "glide"}));
    EXPECT_EQ(CConfigText("[b]\nk = 1\n[a]\n[b]\n[B]\n").GetSections(), (Names{"b", "a", "B"}));
    EXPECT_EQ(CConfigText("").GetSections(), Names{});
    EXPECT_EQ(CConfigText("k = 1\n# [c]\n; [d]\n[open\n[a]x\n[a b]\n").GetSections(), Names{"a b"});
}

TEST(ConfigText, names_a_section_that_was_added_and_one_that_is_left_empty) {
    CConfigText config("[a]\nk = 1\n");
    config.Set("b", "k", "1");
    config.Set("", "k", "1");
    config.Remove("a", "k");
    EXPECT_EQ(config.GetSections(), (std::vector<std::string>{"a", "b"}));
}

TEST(ConfigText, splits_an_entry_at_its_first_equals_sign) {
    EXPECT_EQ(CConfigText("[a]\nk = x = y\n").Get("a", "k"), "x = y");
}

TEST(ConfigText, takes_only_whole_lines_for_comments) {
    const CConfigText config("[a]\n#k = 1\n ; k = 2\nk = 3 ; or # 4\n");
    EXPECT_EQ(config.Get("a", "k"), "3 ; or # 4");
    EXPECT_EQ(config.Get("a", "#k"), std::nullopt);
    EXPECT_TRUE(config.Problems().empty());
}

TEST(ConfigText, has_values_that_are_empty) {
    EXPECT_EQ(CConfigText("[a]\nk =\n").Get("a", "k"), "");
    EXPECT_EQ(CConfigText("[a]\nk=").Get("a", "k"), "");
}

TEST(ConfigText, has_entries_before_the_first_section) {
    EXPECT_EQ(CConfigText("k = 1\n[a]\nk = 2\n").Get("", "k"), "1");
}

TEST(ConfigText, passes_UTF_8_and_other_bytes_through) {
    const CConfigText config("[\u00E9]\n\u00FC = \u00E4\xFF\n");
    EXPECT_EQ(config.Get("\u00E9", "\u00FC"), "\u00E4\xFF");
}

TEST(ConfigText, skips_a_byte_order_mark_and_keeps_it) {
    const std::string text = "\xEF\xBB\xBF[a]\nk = 1\n";
    EXPECT_EQ(CConfigText(text).Get("a", "k"), "1");
    EXPECT_EQ(After(text, "a", "k", "2"), "\xEF\xBB\xBF[a]\nk = 2\n");
    EXPECT_EQ(After("\xEF\xBB\xBF[a]\n", "", "k", "2"), "\xEF\xBB\xBFk = 2\n[a]\n");
}

TEST(ConfigText, reads_and_keeps_line_ends_of_two_characters) {
    const std::string text = "[a]\r\nk = 1\r\n\r\n[b]\r\n";
    EXPECT_EQ(CConfigText(text).Get("a", "k"), "1");
    EXPECT_TRUE(CConfigText(text).Problems().empty());
    EXPECT_EQ(After(text, "a", "k", "2"), "[a]\r\nk = 2\r\n\r\n[b]\r\n");
    EXPECT_EQ(After(text, "a", "l", "2"), "[a]\r\nk = 1\r\nl = 2\r\n\r\n[b]\r\n");
}

TEST(ConfigText, comes_out_as_it_went_in) {
    for (const std::string text : {"", "\n", "\n\n\n", kExample, "k", "k = 1", "[a", "\r\n",
                                   "[a]\r\nb\n\n = 3\nlast", "\xEF\xBB\xBF", "\xEF\xBB\xBF\n#"}) {
        EXPECT_EQ(CConfigText(text).Text(), text);
    }
    const std::string withZero("a\0b\n\0", 5);
    EXPECT_EQ(CConfigText(withZero).Text(), withZero);
}

TEST(ConfigText, tells_the_lines_it_does_not_understand) {
    EXPECT_EQ(ProblemLines("[a]\nnonsense\nk = 1\n = 2\n[open\n"),
              (std::vector<std::size_t>{2, 4, 5}));
    EXPECT_EQ(ProblemLines("[]\n[ ]\n[a]x\n[a] # comment\n[a]b]\n[\n"),
              (std::vector<std::size_t>{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(ProblemLines(std::string("k = a\0b\n", 8)), (std::vector<std::size_t>{1}));
    EXPECT_EQ(ProblemLines("k = a\rb\n"), (std::vector<std::size_t>{1}));
    EXPECT_EQ(CConfigText("x\r\n").Problems().at(0).line, "x");
    EXPECT_EQ(ProblemLines(kExample), (std::vector<std::size_t>{}));
}

TEST(ConfigText, uses_the_rest_of_a_text_that_it_does_not_understand) {
    const CConfigText config("[a]\nnonsense\nk = 1\n[open\nlost = 1\n[b]\nk = 2\n");
    EXPECT_EQ(config.Get("a", "k"), "1");
    EXPECT_EQ(config.Get("b", "k"), "2");
    EXPECT_EQ(config.Get("a", "lost"), std::nullopt) << "it stands in some other section";
}

TEST(ConfigText, changes_a_value_and_nothing_else) {
    EXPECT_EQ(After(kExample, "platform", "mode", "slow"), "# receiver\n"
                                                           "[platform]\n"
                                                           "baud = 115200\n"
                                                           "  mode\t=  slow\n"
                                                           "; not used\n"
                                                           "\n"
                                                           "[glide]\n"
                                                           "obstruction_lockout=30\n");
    EXPECT_EQ(After("[a]\nk = 1", "a", "k", "2"), "[a]\nk = 2");
    EXPECT_EQ(After("[a]\nk =\n", "a", "k", "2"), "[a]\nk =2\n");
    EXPECT_EQ(After("[a]\nk = 1\n", "a", "k", ""), "[a]\nk = \n");
    EXPECT_EQ(After("[a]\nbad\nk = 1\n", "a", "k", "a=b"), "[a]\nbad\nk = a=b\n");
}

TEST(ConfigText, changes_the_last_of_a_repeated_key) {
    EXPECT_EQ(After("[a]\nk = 1\nk = 2\n[b]\n", "a", "k", "3"), "[a]\nk = 1\nk = 3\n[b]\n");
}

TEST(ConfigText, adds_a_key_at_the_end_of_its_section_before_blank_lines) {
    EXPECT_EQ(After("[a]\nk = 1\n\n\n[b]\nm = 2\n", "a", "l", "3"),
              "[a]\nk = 1\nl = 3\n\n\n[b]\nm = 2\n");
    EXPECT_EQ(After("[a]\nk = 1\n\n\n", "a", "l", "3"), "[a]\nk = 1\nl = 3\n\n\n");
    EXPECT_EQ(After("[a]\n\n[b]\n", "a", "l", "3"), "[a]\nl = 3\n\n[b]\n");
    EXPECT_EQ(After("[a]\nk = 1\n#k = 2\n[b]\n", "a", "l", "3"),
              "[a]\nk = 1\n#k = 2\nl = 3\n[b]\n");
}

TEST(ConfigText, leaves_the_comment_above_a_section_where_it_is) {
    EXPECT_EQ(After("[a]\nk = 1\n\n# about b\n# and more\n[b]\n", "a", "l", "3"),
              "[a]\nk = 1\nl = 3\n\n# about b\n# and more\n[b]\n");
}

TEST(ConfigText, adds_a_key_to_the_last_part_of_a_section_in_parts) {
    EXPECT_EQ(After("[a]\n[b]\n[a]\nk = 1\n[c]\n", "a", "l", "3"),
              "[a]\n[b]\n[a]\nk = 1\nl = 3\n[c]\n");
}

TEST(ConfigText, adds_a_key_before_the_first_section) {
    EXPECT_EQ(After("# about all\n\n[a]\n", "", "k", "1"), "# about all\nk = 1\n\n[a]\n");
    EXPECT_EQ(After("", "", "k", "1"), "k = 1\n");
}

TEST(ConfigText, adds_a_section_at_the_end) {
    EXPECT_EQ(After("", "a", "k", "1"), "[a]\nk = 1\n");
    EXPECT_EQ(After("[a]\nk = 1\n", "b", "l", "2"), "[a]\nk = 1\n\n[b]\nl = 2\n");
    EXPECT_EQ(After("[a]\n\n", "b", "l", "2"), "[a]\n\n[b]\nl = 2\n");
}

TEST(ConfigText, completes_a_last_line_without_an_end_before_it_adds) {
    EXPECT_EQ(After("[a]\nk = 1", "a", "l", "2"), "[a]\nk = 1\nl = 2\n");
    EXPECT_EQ(After("[a]", "b", "l", "2"), "[a]\n\n[b]\nl = 2\n");
}

TEST(ConfigText, takes_several_changes) {
    CConfigText config("[a]\nk = 1\n");
    config.Set("b", "l", "2");
    config.Set("a", "m", "3");
    config.Set("b", "n", "4");
    config.Set("b", "l", "5");
    EXPECT_EQ(config.Text(), "[a]\nk = 1\nm = 3\n\n[b]\nl = 5\nn = 4\n");
}

TEST(ConfigText, removes_every_occurrence_of_a_key_in_its_section) {
    EXPECT_EQ(AfterRemoving("[a]\nk = 1\n# c\nk = 2\nl = 3\n[b]\nk = 4\n[a]\nk = 5\n", "a", "k"),
              "[a]\n# c\nl = 3\n[b]\nk = 4\n[a]\n");
    EXPECT_EQ(AfterRemoving(kExample, "glide", "nothing"), kExample);
}

TEST(ConfigText, says_why_it_cannot_hold_something) {
    const std::string zero("a\0b", 3);
    EXPECT_STREQ(CConfigText::WhyNoSection("a]b"), "the section has a ']'");
    for (const std::string& bad : {std::string("a\nb"), std::string("a\rb"), zero}) {
        EXPECT_STREQ(CConfigText::WhyNoSection(bad), "the section has a line break or a zero byte");
        EXPECT_STREQ(CConfigText::WhyNoKey(bad), "the key has a line break or a zero byte");
        EXPECT_STREQ(CConfigText::WhyNoValue(bad), "the value has a line break or a zero byte");
    }
    for (const char* const bad : {" a", "a ", "\ta", "a\t"}) {
        EXPECT_STREQ(CConfigText::WhyNoSection(bad), "the section has blanks around it");
        EXPECT_STREQ(CConfigText::WhyNoKey(bad), "the key has blanks around it");
        EXPECT_STREQ(CConfigText::WhyNoValue(bad), "the value has blanks around it");
    }
    for (const char* const bad : {"#a", ";a", "[a"}) {
        EXPECT_STREQ(CConfigText::WhyNoKey(bad), "the key begins as a comment or a section does");
    }
    EXPECT_STREQ(CConfigText::WhyNoKey(""), "the key is empty");
    EXPECT_STREQ(CConfigText::WhyNoKey("a=b"), "the key has a '='");
}

TEST(ConfigText, holds_everything_else) {
    for (const char* const section : {"", "a b", "#a", "region:north_america", "[a", "a = b"}) {
        EXPECT_EQ(CConfigText::WhyNoSection(section), nullptr) << section;
        EXPECT_EQ(CConfigText(After("", section, "k", "1")).Problems().size(), 0U) << section;
    }
    for (const char* const key : {"a b", "a#", "a]", "\u00FC", "a;"}) {
        EXPECT_EQ(CConfigText::WhyNoKey(key), nullptr) << key;
        EXPECT_EQ(CConfigText(After("", "a", key, "1")).Problems().size(), 0U) << key;
    }
    for (const char* const value : {"", "a b", "#", "=", "[a]", "\"a\"", "\x01\xFF", "a;b # c"}) {
        EXPECT_EQ(CConfigText::WhyNoValue(value), nullptr) << value;
        EXPECT_EQ(CConfigText(After("", "a", "k", value)).Problems().size(), 0U) << value;
    }
}
