#include "view/raster.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kaldra {

Raster MakeRaster(std::int32_t width, std::int32_t height, Colour background) {
    Raster raster;
    raster.width = std::max(width, 0);
    raster.height = std::max(height, 0);
    raster.pixels.assign(static_cast<std::size_t>(raster.width) * static_cast<std::size_t>(raster.height), background);
    return raster;
}

namespace {

// The first pixel whose centre is not before `place`, within 0..count.
std::int32_t FirstCentre(float place, std::int32_t count) {
    const float first = std::ceil(place - 0.5F);
    if (!(first > 0)) return 0;
    return first < static_cast<float>(count) ? static_cast<std::int32_t>(first) : count;
}

// Where an edge, given from its upper end, crosses the height y. Both triangles of the edge come to the same bits.
float CrossingAt(const RasterVertex& upper, const RasterVertex& lower, float y) {
    return upper.x + (y - upper.y) * ((lower.x - upper.x) / (lower.y - upper.y));
}

bool IsAbove(const RasterVertex& a, const RasterVertex& b) { return a.y < b.y || (a.y == b.y && a.x < b.x); }

// Calls `fill(row, first, last)` for the span of pixels first..last - 1 of every row.
template <class Fill>
void ScanTriangle(const Raster& raster, RasterTriangle t, Fill fill) {
    std::ranges::sort(t, IsAbove);
    const std::int32_t begin = FirstCentre(t[0].y, raster.height);
    const std::int32_t end = FirstCentre(t[2].y, raster.height);
    for (std::int32_t row = begin; row < end; ++row) {
        const float y = static_cast<float>(row) + 0.5F;
        float a = CrossingAt(t[0], t[2], y);
        float b = y < t[1].y ? CrossingAt(t[0], t[1], y) : CrossingAt(t[1], t[2], y);
        if (b < a) std::swap(a, b);
        const std::int32_t first = FirstCentre(a, raster.width);
        const std::int32_t last = FirstCentre(b, raster.width);
        if (first < last) fill(row, first, last);
    }
}

Colour* RowOf(Raster& raster, std::int32_t row) {
    return raster.pixels.data() + static_cast<std::size_t>(row) * static_cast<std::size_t>(raster.width);
}

struct Plane {
    float atOrigin = 0, byX = 0, byY = 0;
};

// The value over the triangle, from its first corner.
Plane PlaneOf(const RasterTriangle& t) {
    const float x1 = t[1].x - t[0].x, y1 = t[1].y - t[0].y;
    const float x2 = t[2].x - t[0].x, y2 = t[2].y - t[0].y;
    const float area = x1 * y2 - x2 * y1;
    if (area == 0) return {t[0].value, 0, 0};
    const float v1 = t[1].value - t[0].value;
    const float v2 = t[2].value - t[0].value;
    return {t[0].value, (v1 * y2 - v2 * y1) / area, (x1 * v2 - x2 * v1) / area};
}

// In whole numbers: a mesh has a million such pixels.
Colour Blend(Colour under, Colour over, float part) {
    constexpr std::uint32_t whole = 256;
    const std::uint32_t to = (static_cast<std::uint32_t>(part * static_cast<float>(2 * whole)) + 1) / 2;  // rounded
    std::uint32_t mixed = 0;
    for (const int shift : {16, 8, 0}) {
        const std::uint32_t sum = ((under >> shift) & 0xFFU) * (whole - to) + ((over >> shift) & 0xFFU) * to;
        mixed |= (sum + whole / 2) / whole << shift;
    }
    return Rgb(mixed);
}

void BlendPixel(Raster& raster, std::int32_t x, std::int32_t y, Colour colour, float part) {
    if (x < 0 || y < 0 || x >= raster.width || y >= raster.height) return;
    Colour& pixel = RowOf(raster, y)[x];
    pixel = Blend(pixel, colour, part);
}

// Cuts a..b to the part within low..high of one coordinate. False where nothing is left.
bool CutTo(float RasterVertex::*coordinate, float low, float high, RasterVertex& a, RasterVertex& b) {
    const float from = a.*coordinate;
    const float to = b.*coordinate;
    if ((from < low && to < low) || (from > high && to > high)) return false;
    const auto at = [&](float place) {
        const float part = (place - from) / (to - from);
        return RasterVertex{a.x + part * (b.x - a.x), a.y + part * (b.y - a.y), 0};
    };
    const RasterVertex begin = from < low ? at(low) : from > high ? at(high) : a;
    const RasterVertex end = to < low ? at(low) : to > high ? at(high) : b;
    a = begin;
    b = end;
    return true;
}

}  // namespace

void FillBands(Raster& raster, const RasterTriangle& triangle, const ColourScale& scale) {
    const Plane plane = PlaneOf(triangle);
    const auto low = static_cast<float>(scale.low);
    const auto perBand = static_cast<float>(1 / scale.BandWidth());
    const auto last = static_cast<float>(scale.colours.size() - 1);
    const float byX = plane.byX * perBand;
    ScanTriangle(raster, triangle, [&](std::int32_t row, std::int32_t first, std::int32_t end) {
        const float dx = static_cast<float>(first) + 0.5F - triangle[0].x;
        const float dy = static_cast<float>(row) + 0.5F - triangle[0].y;
        const float begin = (plane.atOrigin - low + plane.byX * dx + plane.byY * dy) * perBand;
        Colour* const pixels = RowOf(raster, row);
        for (std::int32_t x = first; x < end; ++x) {
            const float band = std::clamp(begin + byX * static_cast<float>(x - first), 0.0F, last);
            pixels[x] = scale.colours[static_cast<std::size_t>(band)];
        }
    });
}

void FillPlain(Raster& raster, const RasterTriangle& triangle, Colour colour) {
    ScanTriangle(raster, triangle, [&](std::int32_t row, std::int32_t first, std::int32_t end) {
        std::fill(RowOf(raster, row) + first, RowOf(raster, row) + end, colour);
    });
}

// A line has the pixels whose centres it passes, less that of its end, so that the pieces of one do not meet twice.
// Each step along the longer direction shares its ink between the two pixels beside the line.
void DrawThinLine(Raster& raster, RasterVertex from, RasterVertex to, Colour colour, float strength) {
    const auto right = static_cast<float>(raster.width);
    const auto bottom = static_cast<float>(raster.height);
    if (!CutTo(&RasterVertex::x, 0, right, from, to) || !CutTo(&RasterVertex::y, 0, bottom, from, to)) return;
    const bool steep = std::abs(to.y - from.y) > std::abs(to.x - from.x);
    if (steep) {
        std::swap(from.x, from.y);
        std::swap(to.x, to.y);
    }
    if (to.x < from.x) std::swap(from, to);
    const float slope = to.x > from.x ? (to.y - from.y) / (to.x - from.x) : 0;
    const std::int32_t end = FirstCentre(to.x, steep ? raster.height : raster.width);
    for (std::int32_t i = FirstCentre(from.x, end); i < end; ++i) {
        const float across = from.y + slope * (static_cast<float>(i) + 0.5F - from.x) - 0.5F;
        const float floor = std::floor(across);
        const auto j = static_cast<std::int32_t>(floor);
        const float far = across - floor;
        BlendPixel(raster, steep ? j : i, steep ? i : j, colour, strength * (1 - far));
        BlendPixel(raster, steep ? j + 1 : i, steep ? i : j + 1, colour, strength * far);
    }
}

void CloseSlits(Raster& raster, Colour background) {
    const auto width = static_cast<std::size_t>(raster.width);
    const auto height = static_cast<std::size_t>(raster.height);
    std::vector<Colour>& pixels = raster.pixels;
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            Colour& pixel = pixels[y * width + x];
            if (pixel != background) continue;
            const auto lies = [&](std::size_t step) {
                return (&pixel)[-static_cast<std::ptrdiff_t>(step)] != background && (&pixel)[step] != background;
            };
            if (x > 0 && x + 1 < width && lies(1)) {
                pixel = (&pixel)[-1];
            } else if (y > 0 && y + 1 < height && lies(width)) {
                pixel = (&pixel)[-static_cast<std::ptrdiff_t>(width)];
            }
        }
    }
}

}  // namespace kaldra
