// Where an element lies: its coordinates, and the Jacobian that ties local to global coordinates at a point.
//
// An infinite element takes its geometry from the mapping functions, on coordinates measured from the pole:
//
//     one direction (along x; y alike)          both directions
//
//     2 ----- 5 ----- to infinity               6 ----- to infinity
//     6              r = 1                      |
//     3 ----- 7 ----- to infinity               3 ----- 7 ----- to infinity
//     r = -1  r = 0                             (which of 6 and 7 lies along x follows from the signs)
//
// Slots 5 and 7 (and 6 and 7) are positions at double the distance from the pole; they are computed, not read.
#pragma once

#include <array>

#include "element/shape_functions.h"
#include "model/problem_model.h"

namespace kaldra {

using ElementCoordinates = std::array<float, 2 * slotCount>;  // 8 by 2: x, y per slot

[[nodiscard]] bool IsInfinite(const ElementRec& element);

// Coordinates of the slots in use, 0 elsewhere; of an infinite element only the rows that its mapping takes.
void GetElementCoordinates(std::size_t e, ElementCoordinates& xy);

// What one integration point takes from the element's shape.
struct PointGeometry {
    SlotValues N;                  // interpolation functions
    SlotGradients dN;              // their local derivatives
    SlotValues M;                  // functions of the geometry: N, or the mapping functions of an infinite element
    std::array<float, 4> inverse;  // of the Jacobian, 2 by 2
    float determinant;             // area scale of the point, without any guard
};

// Sets N and dN of `at`, which depend on the slots in use alone.
void ComputePointShape(const ElementRec& element, const IntegrationPoint& point, PointGeometry& at);

// Sets M, the inverse and the determinant of `at` from its N and dN. False as for ComputePointGeometry.
[[nodiscard]] bool ComputePointMapping(const ElementRec& element, const ElementCoordinates& xy,
                                       const IntegrationPoint& point, PointGeometry& at);

// Fills `at` in. False where the area scale is zero or negative, and for an infinite element that lacks a near slot or
// is no quadrilateral: `inverse` is then of no use.
[[nodiscard]] bool ComputePointGeometry(const ElementRec& element, const ElementCoordinates& xy,
                                        const IntegrationPoint& point, PointGeometry& at);

// Shows one box: string `before`, the number of element index e, string `behind`. Gives 0.
int ShowBadArea(std::size_t e, int before, int behind);

}  // namespace kaldra
