#include "FormatText.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

namespace {

__attribute__((format(printf, 1, 2))) std::string Formatted(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::string text = FormatText(format, arguments);
    va_end(arguments);
    return text;
}

__attribute__((format(printf, 1, 2))) std::string ByTheCLibrary(const char* format, ...) {
    char buffer[4096];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    return buffer;
}

} // namespace

TEST(FormatText, writes_integers_as_printf_does) {
    for (const int number :
         {0, 1, -1, 42, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        EXPECT_EQ(Formatted("%d", number), ByTheCLibrary("%d", number));
        EXPECT_EQ(Formatted("a%d,%db", number, number), ByTheCLibrary("a%d,%db", number, number));
    }
}

TEST(FormatText, writes_doubles_as_printf_does) {
    for (const double number :
         {0.0, -0.0, 0.5, 1e-7, 5e-7, 2.5, 1700000000.123456, -2717545.0000005, 604799.9999995,
          1e22, 1e300, -1e308, std::numeric_limits<double>::denorm_min(),
          std::numeric_limits<double>::max()}) {
        EXPECT_EQ(Formatted("%lf", number), ByTheCLibrary("%lf", number));
        EXPECT_EQ(Formatted("%5.2lf|%2.5lf", number, number),
                  ByTheCLibrary("%5.2lf|%2.5lf", number, number));
        EXPECT_EQ(Formatted("%.0f|%.1f|%.3lf|%.9f|%f", number, number, number, number, number),
                  ByTheCLibrary("%.0f|%.1f|%.3lf|%.9f|%f", number, number, number, number, number));
        EXPECT_EQ(Formatted("%.12f", number), ByTheCLibrary("%.12f", number));
    }
}

TEST(FormatText, writes_any_double_as_printf_does) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 20'000; ++i) {
        const auto number = std::bit_cast<double>(static_cast<std::uint64_t>(random()));
        ASSERT_EQ(Formatted("%lf", number), ByTheCLibrary("%lf", number));
        ASSERT_EQ(Formatted("%.4f", number), ByTheCLibrary("%.4f", number));
    }
}

TEST(FormatText, writes_not_a_number_and_infinity_as_printf_does) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Formatted("%d,%lf,%lf,%d", 1, kInfinity, 2.0, 3), "1,inf,2.000000,3");
    EXPECT_EQ(Formatted("%lf %lf", -kNaN, -kInfinity), ByTheCLibrary("%lf %lf", -kNaN, -kInfinity));
}

TEST(FormatText, writes_unsigned_integers_and_texts_as_printf_does) {
    EXPECT_EQ(Formatted("%u,%s,%d", 4294967295U, "text", -1), "4294967295,text,-1");
}

TEST(FormatText, leaves_every_other_conversion_to_the_c_library) {
    EXPECT_EQ(Formatted("%s=%08X %% %5d %.3f %c", "key", 255U, 7, 1.5, 'x'),
              "key=000000FF %     7 1.500 x");
    EXPECT_EQ(Formatted("%d%%", 50), "50%");
    EXPECT_EQ(Formatted("no conversion"), "no conversion");
    EXPECT_EQ(Formatted("%s", ""), "");
}

TEST(FormatText, writes_texts_of_any_length) {
    const std::string longText(100'000, 'x');
    EXPECT_EQ(Formatted("<%s>", longText.c_str()), "<" + longText + ">");
}
