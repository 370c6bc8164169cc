// A place inside an element by its local coordinates: where it lies, and how the nodes' values combine there.
#pragma once

#include <cstdint>

#include "element/shape_functions.h"

namespace kaldra {

struct LocalPoint {
    double x = 0, y = 0;  // in the mesh; of an infinite element by its mapping, not as it is drawn
    SlotValues N{};       // interpolation functions by slot
};

// Needs an element with its corners; r and s below 1 along a direction of infinity.
[[nodiscard]] LocalPoint PointAt(std::size_t e, double r, double s);

}  // namespace kaldra
