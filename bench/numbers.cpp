// Times the conversions of numbers per value: the program's beside the C library's and the C++ library's.
//
//     build/release/bin/kaldra-bench-numbers [--benchmark_filter=REGEX]
//
// The values are temperatures, flows and coordinates as the files hold them: half of them of few decimals.

#include <benchmark/benchmark.h>

#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "platform/number_text.h"

namespace {

using namespace kaldra;

constexpr std::size_t valueCount = 4096;

std::vector<float> Values() {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> temperature(-40, 40);
    std::vector<float> values;
    while (values.size() < valueCount) {
        values.push_back(temperature(random));
        values.push_back(static_cast<float>(random() % 20000) / 1000);
    }
    return values;
}

// Half with six digits behind the point of an exponent, as in a result file, half with up to three decimals.
std::vector<std::string> Texts() {
    std::vector<std::string> texts;
    for (const float value : Values()) {
        const bool result = texts.size() % 2 == 0;
        std::array<char, 40> text;
        std::snprintf(text.data(), text.size(), result ? "%+.6E" : "%.5g", static_cast<double>(value));
        texts.emplace_back(text.data());
    }
    return texts;
}

// Calls work(value) for one value after the other.
template <class Table, class Work>
void OneByOne(benchmark::State& state, const Table& table, Work work) {
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(work(table[i]));
        i = (i + 1) % table.size();
    }
    state.SetItemsProcessed(state.iterations());
}

void FormatBySnprintf(benchmark::State& state) {
    std::array<char, 64> text;
    OneByOne(state, Values(), [&](float value) {
        return std::snprintf(text.data(), text.size(), "%+14.6E", static_cast<double>(value));
    });
}

void FormatByToChars(benchmark::State& state) {
    std::array<char, 64> text;
    OneByOne(state, Values(), [&](float value) {
        return std::to_chars(text.data(), text.data() + text.size(), static_cast<double>(value),
                             std::chars_format::scientific, 6)
            .ptr;
    });
}

void FormatByFormatText(benchmark::State& state) {
    OneByOne(state, Values(), [](float value) { return FormatText("%+14.6E", value); });
}

void FormatByPutRow(benchmark::State& state) {
    static constexpr RowFormat format("%+14.6E");
    std::array<char, 64> text;
    OneByOne(state, Values(), [&](float value) { return PutRow(text.data(), format, value); });
}

void ParseByStrtof(benchmark::State& state) {
    OneByOne(state, Texts(), [](const std::string& text) { return std::strtof(text.c_str(), nullptr); });
}

void ParseByFromChars(benchmark::State& state) {
    OneByOne(state, Texts(), [](const std::string& text) {
        float value = 0;
        const std::size_t sign = text[0] == '+' ? 1 : 0;
        (void)std::from_chars(text.data() + sign, text.data() + text.size(), value);
        return value;
    });
}

void ParseByScanText(benchmark::State& state) {
    static constexpr ScanFormat format("%f");
    OneByOne(state, Texts(), [](const std::string& text) {
        float value = 0;
        (void)ScanText(text, format, &value);
        return value;
    });
}

BENCHMARK(FormatBySnprintf);
BENCHMARK(FormatByToChars);
BENCHMARK(FormatByFormatText);
BENCHMARK(FormatByPutRow);
BENCHMARK(ParseByStrtof);
BENCHMARK(ParseByFromChars);
BENCHMARK(ParseByScanText);

}  // namespace

BENCHMARK_MAIN();
