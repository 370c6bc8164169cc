// Number conversions against the C library's, bit by bit and digit by digit, over samples of all magnitudes.

#include "platform/decimal.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <sstream>
#include <string>

#include "platform/number_text.h"

namespace kaldra {
namespace {

constexpr int samples = 100000;

std::string Printed(const char* format, int precision, double value) {
    std::array<char, 512> text{};
    std::snprintf(text.data(), text.size(), format, precision, value);
    return text.data();
}

// What the reader makes of a text must be what strtof makes of it, -0 included; what is infinite there, it refuses.
void ExpectReadAsByTheLibrary(const std::string& text) {
    const float expected = std::strtof(text.c_str(), nullptr);
    float value = -99;
    const ScanResult result = ScanText(text, "%f", &value);
    if (std::isinf(expected)) {
        EXPECT_TRUE(result.outOfRange) << text;
    } else {
        EXPECT_TRUE(result.fields == 1 && std::bit_cast<std::uint32_t>(value) == std::bit_cast<std::uint32_t>(expected))
            << text << " read as " << Printed("%.*g", 17, static_cast<double>(value));
    }
}

TEST(Decimal, ReadsDigitsAsTheLibraryDoes) {
    std::mt19937_64 random(1);
    for (int i = 0; i < samples; ++i) {
        const std::string digits = std::to_string(random()).substr(0, 1 + random() % 20);
        const std::size_t point = random() % (digits.size() + 1);
        std::string text(std::array{"", "", "-", "+"}[random() % 4]);
        text += digits.substr(0, point);
        if (random() % 2) text += '.';
        text += digits.substr(point);
        if (random() % 2) text += 'e' + std::to_string(static_cast<int>(random() % 100) - 60);
        ExpectReadAsByTheLibrary(text);
    }
    std::istringstream limits(
        "16777217 16777219e10 33554433 1e10 1e11 3.4028235e38 3.4028236e38 340282356779733661637539395458142568447 "
        "340282356779733661637539395458142568448 340282346638528859811704183484516925440 1.17549435e-38 1.17549429e-38 "
        "1e-45 7.0064923216240853e-46 7.0064923216240854e-46 0.0000000000000000000000000000000001 9999999999999999999 "
        "18446744073709551616 0e99999 0000000000000000000000001.5");
    for (std::string text; limits >> text;) ExpectReadAsByTheLibrary(text);
}

// The decimals that fall on the middle between two neighbours, just below and just above it.
TEST(Decimal, ReadsHalfwayTextsAsTheLibraryDoes) {
    std::mt19937_64 random(2);
    for (int i = 0; i < samples / 4; ++i) {
        const auto bits = static_cast<std::uint32_t>(random() % 0x7f7fffffU);
        const double low = static_cast<double>(std::bit_cast<float>(bits));
        const double middle = (low + static_cast<double>(std::bit_cast<float>(bits + 1))) / 2;
        for (const int digits : {7, 8, 15, 17, 18, 19, 40, 110}) {
            ExpectReadAsByTheLibrary(Printed("%.*e", digits - 1, middle));
        }
        if (i % 2) continue;  // middles that a few digits write whole
        const auto whole = static_cast<double>((random() % (1U << 24U) | 1U << 23U) * 2 + 1);
        ExpectReadAsByTheLibrary(Printed("%.*f", 3, std::ldexp(whole, static_cast<int>(random() % 10) - 3)));
    }
}

// The library's text with the exponent's third digit.
std::string PrintedWithThreeDigits(int decimals, double value) {
    std::string text = Printed("%.*E", decimals, value);
    if (text[text.size() - 4] == 'E') text.insert(text.end() - 2, '0');
    return text;
}

void ExpectWrittenAsByTheLibrary(double value) {
    std::array<char, 64> row;
    static constexpr RowFormat seven("%.6E");
    EXPECT_EQ(FormatText("%.6E", value), PrintedWithThreeDigits(6, value));
    EXPECT_EQ(FormatText("%.4E", value), PrintedWithThreeDigits(4, value));
    const std::string_view text(row.data(), PutRow(row.data(), seven, static_cast<float>(value)));
    EXPECT_EQ(text, FormatText("%.6E", static_cast<float>(value)));
}

TEST(Decimal, WritesAsTheLibraryDoes) {
    std::mt19937_64 random(3);
    for (int i = 0; i < samples; ++i) {
        const double real = std::bit_cast<double>(random());
        const float narrow = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (std::isfinite(real)) ExpectWrittenAsByTheLibrary(real);
        if (std::isfinite(narrow)) ExpectWrittenAsByTheLibrary(static_cast<double>(narrow));
        if (i % 10) continue;
        const int decimals = static_cast<int>(random() % 20);
        const std::string format = "%." + std::to_string(decimals) + "E";
        if (!std::isfinite(real)) continue;
        EXPECT_EQ(FormatText(format, real), PrintedWithThreeDigits(decimals, real));
    }
}

// Values on and beside the middle between two texts, at powers of ten and at the ends of the range.
TEST(Decimal, WritesTiesAndLimitsAsTheLibraryDoes) {
    using Limits = std::numeric_limits<double>;
    std::mt19937_64 random(4);
    for (int i = 0; i < samples / 10; ++i) {
        const double whole = static_cast<double>(random() % 10000000) + 0.5;
        const int scale = static_cast<int>(random() % 80) - 40;
        for (const double middle : {whole, whole * 10, whole * std::pow(10.0, scale), std::ldexp(whole, scale)}) {
            ExpectWrittenAsByTheLibrary(middle);
            ExpectWrittenAsByTheLibrary(-std::nextafter(middle, 0.0));
            ExpectWrittenAsByTheLibrary(std::nextafter(middle, Limits::max()));
        }
    }
    for (int power = -323; power <= 308; ++power) {
        const double ten = std::strtod(("1e" + std::to_string(power)).c_str(), nullptr);
        for (const double value : {ten, std::nextafter(ten, 0.0), ten * 9.9999995, ten * 9.99995}) {
            if (std::isfinite(value)) ExpectWrittenAsByTheLibrary(value);
        }
    }
    for (const double value : {0.0, -0.0, Limits::min(), Limits::denorm_min(), Limits::max(), Limits::lowest()}) {
        ExpectWrittenAsByTheLibrary(value);
    }
}

TEST(RowFormat, FillsInWhatFormatTextDoes) {
    static constexpr RowFormat format("a %5d%+d|%12.4E %+15.6E%2d b");
    static constexpr RowFormat shortest("%.0E");
    constexpr auto most = std::numeric_limits<std::int32_t>::max();
    constexpr auto least = std::numeric_limits<std::int32_t>::min();
    constexpr float infinite = std::numeric_limits<float>::infinity();
    std::array<char, 120> row;
    for (const std::int32_t integer : {0, 7, -10, 99, 100, 999, 1000, -99999, 1000000, most, least}) {
        for (const float real : {0.0F, -0.0F, 1.5F, -3.4e38F, 1e-45F, infinite}) {
            const std::string_view text(row.data(), PutRow(row.data(), format, integer, integer, real, real, integer));
            EXPECT_EQ(text, FormatText("a %5d%+d|%12.4E %+15.6E%2d b", integer, integer, real, real, integer));
            EXPECT_LE(text.size(), format.longest);
            row.fill('#');
            EXPECT_EQ(*PutRow(row.data(), shortest, real), '#');  // nothing behind a row is touched
        }
        std::array<char, 64> printed{};
        std::snprintf(printed.data(), printed.size(), "%5d %+d %02d", integer, integer, integer);
        EXPECT_EQ(FormatText("%5d %+d %02d", integer, integer, integer), printed.data());
    }
}

}  // namespace
}  // namespace kaldra
