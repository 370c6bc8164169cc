// Scan conversion of triangles and lines into a raster.
//
// A pixel belongs to the triangle that has its centre; an edge that two triangles share is computed alike for both, so
// neighbours leave neither seams nor overlaps, in contrast to smoothed polygons side by side. Coordinates are pixels of
// the raster; pixel (i, j) has its centre at (i + 0.5, j + 0.5). What is outside is cut off.
#pragma once

#include <array>

#include "view/colour_scale.h"
#include "view/picture.h"

namespace kaldra {

struct RasterVertex {
    float x = 0, y = 0;
    float value = 0;
};

using RasterTriangle = std::array<RasterVertex, 3>;

[[nodiscard]] Raster MakeRaster(std::int32_t width, std::int32_t height, Colour background);

// Bands of the value, which is linear in the triangle.
void FillBands(Raster& raster, const RasterTriangle& triangle, const ColourScale& scale);

// One colour.
void FillPlain(Raster& raster, const RasterTriangle& triangle, Colour colour);

// A smoothed line of one pixel; `strength` of 0..1 mixes its colour with what is there.
void DrawThinLine(Raster& raster, RasterVertex from, RasterVertex to, Colour colour, float strength);

// Gives a lone background pixel between two others of its row or column the colour of the first: where curved edges of
// two elements are cut into different numbers of pieces, a slit opens.
void CloseSlits(Raster& raster, Colour background);

}  // namespace kaldra
