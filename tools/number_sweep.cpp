// Holds the number conversions of the program against those of the C library.
//
//     number-sweep six EVERY         writes every EVERY-th of the 2^32 f32 values in %+14.6E
//     number-sweep four EVERY        the same in %+13.4E
//     number-sweep random MILLIONS   writes random f64 values, and reads random decimals and such near to a middle
//
// Works on all processors, prints what it compared and the first differences, and gives 1 if there are any.

#include <array>
#include <atomic>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>

#include "platform/number_text.h"
#include "platform/parallel.h"

namespace {

using namespace kaldra;

constexpr std::size_t chunks = 4096;
std::atomic<std::uint64_t> compared{0};
std::atomic<std::uint64_t> different{0};

void Compare(std::string_view got, std::string_view expected) {
    if (got == expected) return;
    constexpr std::uint64_t shown = 20;
    if (++different > shown) return;
    std::printf("got %.*s, expected %.*s\n", static_cast<int>(got.size()), got.data(),
                static_cast<int>(expected.size()), expected.data());
}

using Text = std::array<char, 512>;

// The library's scientific text in a field, with the three exponent digits of the program.
std::string_view LibraryText(Text& text, const char* format, std::size_t width, double value) {
    const auto length = static_cast<std::size_t>(std::snprintf(text.data() + width, 400, format, value));
    char* first = text.data() + width;
    char* last = first + length;
    if (last[-4] == 'E') {
        last[0] = last[-1];
        last[-1] = last[-2];
        last[-2] = '0';
        ++last;
    }
    while (static_cast<std::size_t>(last - first) < width) *--first = ' ';
    return {first, last};
}

void CompareSix(float value) {
    static constexpr RowFormat format("%+14.6E");
    Text row;
    Text text;
    Compare({row.data(), PutRow(row.data(), format, value)},
            LibraryText(text, "%+.6E", 14, static_cast<double>(value)));
}

void CompareFour(float value) {
    static constexpr RowFormat format("%+13.4E");
    Text row;
    Text text;
    Compare({row.data(), PutRow(row.data(), format, value)},
            LibraryText(text, "%+.4E", 13, static_cast<double>(value)));
}

template <class CompareFloat>
void SweepFloats(std::uint64_t every, CompareFloat compareFloat) {
    constexpr std::uint64_t perChunk = (std::uint64_t{1} << 32U) / chunks;
    RunTasks(chunks, [&](std::size_t chunk) {
        std::uint64_t count = 0;
        const std::uint64_t begin = chunk * perChunk;
        for (std::uint64_t bits = (begin + every - 1) / every * every; bits < begin + perChunk; bits += every) {
            const float value = std::bit_cast<float>(static_cast<std::uint32_t>(bits));
            if (!std::isfinite(value)) continue;
            compareFloat(value);
            ++count;
        }
        compared += count;
    });
}

// What strtof reads, or "out of range" where it reads an infinity.
void CompareReading(const std::string& text) {
    const float expected = std::strtof(text.c_str(), nullptr);
    float value = 0;
    const ScanResult result = ScanText(text, "%f", &value);
    const bool same = std::isinf(expected) ? result.outOfRange
                                           : result.fields == 1 && std::bit_cast<std::uint32_t>(value) ==
                                                                       std::bit_cast<std::uint32_t>(expected);
    if (!same) Compare("another value", text);
}

std::string RandomDecimal(std::mt19937_64& random) {
    const std::string digits = (std::to_string(random()) + std::to_string(random())).substr(0, 1 + random() % 25);
    const std::size_t point = random() % (digits.size() + 1);
    std::string text = digits.substr(0, point);
    text += '.';
    text += digits.substr(point);
    if (random() % 2) text += 'e' + std::to_string(static_cast<int>(random() % 100) - 60);
    return text;
}

// A decimal of a few or many digits beside the middle of two f32 values.
std::string NearMiddle(std::mt19937_64& random) {
    const auto bits = static_cast<std::uint32_t>(random() % 0x7f7fffffU);
    const double low = static_cast<double>(std::bit_cast<float>(bits));
    const double middle = (low + static_cast<double>(std::bit_cast<float>(bits + 1))) / 2;
    Text text;
    std::snprintf(text.data(), text.size(), "%.*e", static_cast<int>(random() % 22), middle);
    return text.data();
}

void CompareDouble(double value) {
    Text text;
    Compare(FormatText("%12.4E", value), LibraryText(text, "%.4E", 12, value));
    Compare(FormatText("%12.6E", value), LibraryText(text, "%.6E", 12, value));
}

void SweepRandom(std::uint64_t millions) {
    const std::uint64_t perChunk = millions * 1000000 / chunks;
    RunTasks(chunks, [&](std::size_t chunk) {
        std::mt19937_64 random(chunk + 1);
        std::uint64_t count = 2 * perChunk;
        for (std::uint64_t i = 0; i < perChunk; ++i) {
            const double value = std::bit_cast<double>(random());
            if (std::isfinite(value)) {
                CompareDouble(value);
                count += 2;
            }
            CompareReading(RandomDecimal(random));
            CompareReading(NearMiddle(random));
        }
        compared += count;
    });
}

}  // namespace

int main(int argc, char** argv) {
    const std::string_view what = argc == 3 ? argv[1] : "";
    const std::uint64_t number = argc == 3 ? std::strtoull(argv[2], nullptr, 10) : 0;
    if (number == 0 || (what != "six" && what != "four" && what != "random")) {
        std::fputs("usage: number-sweep six EVERY | four EVERY | random MILLIONS\n", stderr);
        return 2;
    }
    const auto start = std::chrono::steady_clock::now();
    if (what == "six") SweepFloats(number, CompareSix);
    if (what == "four") SweepFloats(number, CompareFour);
    if (what == "random") SweepRandom(number);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    std::printf("%llu conversions compared, %llu different, %.0f s\n", static_cast<unsigned long long>(compared.load()),
                static_cast<unsigned long long>(different.load()), seconds.count());
    return different == 0 ? 0 : 1;
}
