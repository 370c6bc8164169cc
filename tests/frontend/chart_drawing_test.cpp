#include "frontend/chart_drawing.h"

#include <gmock/gmock.h>

#include <cmath>

namespace kaldra {
namespace {

// Steps are 1, 2 or 5 times a power of ten, and labels tell neighbours apart.
TEST(ChartAxis, TicksAreReadable) {
    struct Case {
        double low, high;
        std::int32_t intervals;
        double smallest;
        std::vector<std::string> labels;
    };
    for (const Case& c : {
             Case{0, 4, 4, 0, {"0", "1", "2", "3", "4"}},
             Case{0, 10, 9, 0, {"0", "2", "4", "6", "8", "10"}},
             Case{0, 10, 4, 0, {"0", "5", "10"}},
             Case{0, 10, 1, 0, {"0", "10"}},
             Case{0, 0.3, 3, 0, {"0.0", "0.1", "0.2", "0.3"}},
             Case{1, 7, 4, 1, {"0", "2", "4", "6", "8"}},
             Case{5, 5, 9, 1, {"4", "5", "6"}},
             Case{1234.5, 1234.9, 3, 0, {"1234.4", "1234.6", "1234.8", "1235.0"}},
             Case{-1, 1, 2, 0, {"-1", "0", "1"}},
             Case{2.5e7, 3.5e7, 2, 0, {"2.5E+007", "3.0E+007", "3.5E+007"}},
             Case{2, 1, 5, 0, {"0", "1"}},
             Case{std::nan(""), 1, 5, 0, {"0", "1"}},
         }) {
        EXPECT_EQ(ReadableAxis(c.low, c.high, c.intervals, c.smallest).labels, c.labels) << c.low;
    }
}

// Whatever the data, the axis contains it, with distinct labels and no more ticks than fit.
TEST(ChartAxis, ContainsItsData) {
    for (double low = -3e6; low < 3e6; low = low * 0.37 + 41.3) {
        for (double range = 1e-9; range < 1e8; range *= 7.3) {
            const ChartAxis axis = ReadableAxis(low, low + range, 6);
            EXPECT_LE(axis.low, low + 1e-6 * range);
            EXPECT_GE(axis.high, low + range - 1e-6 * range);
            EXPECT_LE(axis.ticks.size(), 8U);
            EXPECT_EQ(std::ranges::adjacent_find(axis.labels), axis.labels.end());
        }
        if (std::abs(low * 0.37 + 41.3 - low) < 1) break;
    }
}

TEST(ChartAxis, PlacesValuesBetweenItsEdges) {
    const ChartAxis axis = ReadableAxis(0, 10, 5);
    EXPECT_DOUBLE_EQ(PlaceOnAxis(axis, 0, 300, 100), 300);  // y grows upwards
    EXPECT_DOUBLE_EQ(PlaceOnAxis(axis, 2.5, 300, 100), 250);
    EXPECT_DOUBLE_EQ(PlaceOnAxis(axis, 10, 20, 420), 420);
    EXPECT_EQ(TickIntervalsFor(400, 25), 10);
    EXPECT_EQ(TickIntervalsFor(100, 50), 1);
    EXPECT_EQ(TickIntervalsFor(0, 0), 1);
    EXPECT_EQ(ReadableStep(0, 5), 1);
}

}  // namespace
}  // namespace kaldra
