#include "platform/number_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace kaldra {
namespace {

TEST(FormatText, FillsTheFieldsOfTheFiles) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {FormatText("%+14.6E|", 0.0), "+0.000000E+000|"},
        {FormatText("%+14.6E|", -1.5F), "-1.500000E+000|"},
        {FormatText("%+12.4E|", -0.0), "-0.0000E+000|"},
        {FormatText("%12.6E|", 1757.919), "1.757919E+003|"},  // one wider than its field
        {FormatText("%11.4E|", 5e-324), "4.9407E-324|"},
        {FormatText("%12.6E|", std::numeric_limits<double>::infinity()), "         inf|"},
        {FormatText("%10.3f|%.0f|", -2.0005, 0.5), "    -2.001|0|"},
        {FormatText("%5d|%5d|%02d|%02d|%+d", 42, 123456, 7, 100, 0), "   42|123456|07|100|+0"},
        {FormatText("%d%s%d%%%3s", std::int64_t{1} << 40, "\t", -2, "a"), "1099511627776\t-2%  a"},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(text, expected);
}

// What one conversion of a text gives: the number, that there is none, or that it is out of range.
std::string Scanned(std::string_view text, std::string_view format) {
    std::int32_t integer = -99;
    float real = -99;
    const bool isReal = format == "%f" || format == "%e";
    const ScanFormat parsed(format);
    const ScanResult result = isReal ? ScanText(text, parsed, &real) : ScanText(text, parsed, &integer);
    if (result.fields == 1) return isReal ? FormatText("%.2E", real) : FormatText("%d", integer);
    EXPECT_TRUE(integer == -99 && real == -99);
    return result.outOfRange ? "out of range" : "none";
}

TEST(ScanText, FollowsTheConversion) {
    for (const auto& [format, text, expected] : {std::array{"%d", " \t-12x", "-12"},
                                                 {"%d", "+7", "7"},
                                                 {"%d", "010", "10"},
                                                 {"%d", "5.5", "5"},
                                                 {"%d", "-2147483648", "-2147483648"},
                                                 {"%2d", "123", "12"},
                                                 {"%2d", "+123", "1"},
                                                 {"%i", "0x1F", "31"},
                                                 {"%i", "-0X10", "-16"},
                                                 {"%i", "010", "8"},
                                                 {"%i", "0", "0"},
                                                 {"%f", "1.5E+002", "1.50E+002"},
                                                 {"%e", " .5", "5.00E-001"},
                                                 {"%f", "-1.25d3", "-1.25E+000"},
                                                 {"%f", "-0", "-0.00E+000"},
                                                 {"%f", "1e-400", "0.00E+000"}}) {
        EXPECT_EQ(Scanned(text, format), expected) << text;
    }
    for (const char* text : {"x", "+-5", "", "-", " "}) EXPECT_EQ(Scanned(text, "%d"), "none") << text;
    for (const char* text : {"1e", "1e+", ".", "-+1", "x"}) EXPECT_EQ(Scanned(text, "%f"), "none") << text;
    for (const char* text : {"2147483648", "99999999999999999999"}) EXPECT_EQ(Scanned(text, "%d"), "out of range");
    for (const char* text : {"inf", "-Infinity", "nan", "3.5e38", "-1e400"})
        EXPECT_EQ(Scanned(text, "%f"), "out of range");
}

TEST(ScanText, TakesAdjacentColumnsAndWords) {
    std::int32_t a = 0, b = 0, c = 0;
    float value = 0;
    std::string word;
    EXPECT_EQ(ScanText("12345", "%1d%2d%2d", &a, &b, &c).fields, 3);
    EXPECT_THAT((std::array{a, b, c}), testing::ElementsAre(1, 23, 45));
    EXPECT_EQ(ScanText(" StepNum: 4 of x 2.5", "%*s %d %s %*s %f", &a, &word, &value).fields, 3);
    EXPECT_TRUE(a == 4 && word == "of" && value == 2.5F);
    EXPECT_EQ(ScanText("1 2 x", "%d %d %d", &a, &b, &c).fields, 2);
    EXPECT_EQ(ScanText("x 2", "%*d %d", &a).fields, 0);
}

}  // namespace
}  // namespace kaldra
