#include "view/colour_scale.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

#include "frontend/chart_drawing.h"

namespace kaldra {

namespace {

constexpr std::array<std::uint32_t, 5> frozenColours{0x313695, 0x4575B4, 0x74ADD1, 0xABD9E9, 0xE0F3F8};
constexpr std::array<std::uint32_t, 6> thawedColours{0xFFFFBF, 0xFEE090, 0xFDAE61, 0xF46D43, 0xD73027, 0xA50026};
constexpr std::array<std::uint32_t, 8> materialColours{0xF2CC80, 0xABDAF4, 0x80CFB9, 0xF8F2A1,
                                                       0x80B9D9, 0xEAAF80, 0xE6BCD3, 0xA6A6A6};
constexpr std::int32_t wantedBands = 14;  // of a scale that chooses for itself: at most

Colour Mix(std::uint32_t a, std::uint32_t b, double part) {
    std::uint32_t mixed = 0;
    for (const int shift : {16, 8, 0}) {
        const double from = (a >> shift) & 0xFFU;
        const double to = (b >> shift) & 0xFFU;
        mixed |= static_cast<std::uint32_t>(std::lround(from + part * (to - from))) << shift;
    }
    return Rgb(mixed);
}

// The colour at 0..1 of a row of colours.
Colour MixedColour(std::span<const std::uint32_t> row, double place) {
    const double at = std::clamp(place, 0.0, 1.0) * static_cast<double>(row.size() - 1);
    const auto below = std::min(static_cast<std::size_t>(at), row.size() - 2);
    return Mix(row[below], row[below + 1], at - static_cast<double>(below));
}

// Each side of freezing is stretched over its part of the range.
Colour TemperatureColour(double value, double low, double high, double freezing) {
    if (value < freezing) return MixedColour(frozenColours, (value - low) / (std::min(freezing, high) - low));
    const double begin = std::max(freezing, low);
    return MixedColour(thawedColours, (value - begin) / (high - begin));
}

}  // namespace

ColourScale MakeColourScale(double low, double high, std::int32_t bands, double freezing) {
    ColourScale scale;
    if (!std::isfinite(low) || !std::isfinite(high) || low > high) low = high = freezing;
    if (bands <= 0) {
        const ChartAxis axis = ReadableAxis(low, high, wantedBands);
        low = axis.low;
        high = axis.high;
        bands = static_cast<std::int32_t>(axis.ticks.size()) - 1;
    }
    const double least = std::max(1e-6 * std::max(std::abs(low), std::abs(high)), 1e-6);
    if (high - low < least) high = low + least;
    scale.low = low;
    scale.high = high;
    scale.colours.resize(static_cast<std::size_t>(std::clamp(bands, 1, mostBands)));
    for (std::size_t i = 0; i < scale.colours.size(); ++i) {
        const double middle = low + (static_cast<double>(i) + 0.5) * scale.BandWidth();
        scale.colours[i] = TemperatureColour(middle, low, high, freezing);
    }
    return scale;
}

Colour BandColour(const ColourScale& scale, double value) {
    const double band = std::floor((value - scale.low) / scale.BandWidth());
    const double last = static_cast<double>(scale.colours.size()) - 1;
    return scale.colours[static_cast<std::size_t>(band > 0 ? std::min(band, last) : 0)];
}

Colour MaterialColour(std::int32_t material) {
    const auto index = static_cast<std::size_t>(std::max(material, 1) - 1);
    return Rgb(materialColours[index % materialColours.size()]);
}

}  // namespace kaldra
