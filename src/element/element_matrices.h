// Conductivity and capacity matrix of one element, and the values at its integration points.
//
//     K   = sum over the points of  B^T D B  d wr ws A
//     Cap = sum over the points of  N N^T    d wr ws A c
//
// with B the global derivatives (2 by 8), D the conductivity (2 by 2), N the interpolation functions, d the Jacobian's
// determinant, c the volumetric heat capacity with the latent term, and A the thickness, in an axisymmetric problem
// times the radius. Rows and columns are node slots; those of absent slots stay 0. Calculation thread only, nothing
// allocated.
#pragma once

#include <array>

#include "element/element_geometry.h"
#include "element/shape_functions.h"
#include "model/problem_model.h"

namespace kaldra {

using ElementMatrix = std::array<float, slotCount * slotCount>;
using Conductivity = std::array<float, 4>;  // D, 2 by 2

// What the matrices take from the shape of an element at one point: 0 in the slots without a node.
struct PointShape {
    SlotValues N;
    SlotGradients B;  // global derivatives: by x, then by y
    float weight;     // d wr ws
    float depth;
};

// Adds B' D B and N N' times the capacity, each with weight and depth.
void AddConduction(ElementMatrix& K, const PointShape& at, const Conductivity& D);
void AddCapacity(ElementMatrix& Cap, const PointShape& at, float capacity);

// Forms the matrices of the active element index e; Cap stays 0 in a steady-state run. The values at the points come
// from the functions at the present temperatures and are recorded in PointResults. Gives 1, or 0 after the box of a
// zero or negative area (1194 ordinary, 1196 infinite) or message 1156.
[[nodiscard]] int ComputeElementMatrices(std::size_t e, ElementMatrix& K, ElementMatrix& Cap);

// B(a, j) = sum over k of inverse(a, k) dN(k, j)
void GlobalDerivatives(SlotGradients& B, const std::array<float, 4>& inverse, const SlotGradients& dN);

// Conductivity of a point, evaluated at its temperature (in a transient run at the mean of the step's old and present
// temperature) and recorded together with the temperature. In the first iteration of the start step a conductivity that
// was read from an earlier run holds instead.
void ConductivityAtPoint(Conductivity& D, const SlotValues& N, std::size_t e, std::size_t point);

// Conductivity of a point from the record.
void StoredConductivityAtPoint(Conductivity& D, std::size_t e, std::size_t point);

// Volumetric heat capacity of a point with its latent term, recorded with the water content and its slope. Gives 1, or
// 0 after message 1156 for a material without water content function.
[[nodiscard]] int CapacityAtPoint(float& capacity, const SlotValues& N, std::size_t e, std::size_t point);

// The conductivities of an earlier run hold in the first iteration of the step that starts from them.
[[nodiscard]] bool InitialConductivityHolds();

// Weight of a point in its element's area, d wr ws.
[[nodiscard]] float WeightOfPoint(const IntegrationPoint& point, float determinant);

// Thickness, in an axisymmetric problem times the radius. The radius of an element that is infinite along x is measured
// from the pole, as its coordinates are.
[[nodiscard]] float DepthAtPoint(const ElementRec& element, const ElementCoordinates& xy, const PointGeometry& at);

// A field of the nodes in an element's slots, 0 in the slots without a node.
[[nodiscard]] SlotValues SlotTemperatures(const ElementRec& element, float NodeState::*field);

}  // namespace kaldra
