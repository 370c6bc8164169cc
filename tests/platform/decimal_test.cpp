// Number conversions against the C library's, bit by bit and digit by digit, over samples of all magnitudes.

#include "platform/decimal.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
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
    for (const char* text : {"16777217",
                             "16777219e10",
                             "33554433",
                             "1e10",
                             "1e11",
                             "3.4028235e38",
                             "3.4028236e38",
                             "340282356779733661637539395458142568447",
                             "340282356779733661637539395458142568448",
                             "340282346638528859811704183484516925440",
                             "1.17549435e-38",
                             "1.17549429e-38",
                             "1e-45",
                             "7.0064923216240853e-46",
                             "7.0064923216240854e-46",
                             "0.0000000000000000000000000000000001",
                             "9999999999999999999",
                             "18446744073709551616",
                             "0e99999",
                             "0000000000000000000000001.5"}) {
        ExpectReadAsByTheLibrary(text);
    }
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

}  // namespace
}  // namespace kaldra
