// Which colour a temperature has, and which a material.
//
// The colours run from dark to pale blue below the freezing temperature and from pale yellow to dark red above it, each
// half over its part of the range, so that blue is frozen and yellow to red is thawed ground in every picture. They are
// the eleven colours of the map RdYlBu of ColorBrewer 2.0 (Brewer and Harrower, The Pennsylvania State University;
// Apache 2.0), which is marked there as readable by people who do not tell red from green. Those of materials are
// lightened colours of the palette of Okabe and Ito (Color Universal Design, 2008), made for the same readers.
//
//     low         freezing            high
//     | blue | pale | yellow | orange | red |   bands of equal width; what is outside has the colour of the end band
#pragma once

#include <cstdint>
#include <vector>

#include "view/picture.h"

namespace kaldra {

struct ColourScale {
    double low = 0, high = 1;     // of all bands together
    std::vector<Colour> colours;  // one per band, from low to high; at least one
    [[nodiscard]] double BandWidth() const { return (high - low) / static_cast<double>(colours.size()); }
};

inline constexpr std::int32_t mostBands = 100;

// A scale around low..high. `bands` 0 chooses a readable width and widens the range to whole bands; otherwise the
// range stays as it is in that many bands (1 to mostBands). A range of no length is widened.
[[nodiscard]] ColourScale MakeColourScale(double low, double high, std::int32_t bands, double freezing);

[[nodiscard]] Colour BandColour(const ColourScale& scale, double value);

[[nodiscard]] Colour MaterialColour(std::int32_t material);

inline constexpr Colour nullColour = Rgb(0xBDBDBD);  // of NULL elements, in both

}  // namespace kaldra
