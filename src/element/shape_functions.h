// The fixed mathematics of one element in local coordinates: integration rules, interpolation and mapping functions.
//
// The family follows from the node slots: slot 4 in use is a quadrilateral, else slot 3 in use a triangle, else a line.
// Results are f32, evaluated in f64. Array positions are slots; a slot without a function holds 0.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "model/problem_model.h"

namespace kaldra {

struct IntegrationPoint {
    float r, s;    // local coordinates
    float wr, ws;  // the weight is their product
};

inline constexpr std::size_t largestRule = 9;

using RuleTable = std::array<IntegrationPoint, largestRule>;
using SlotValues = std::array<float, slotCount>;         // one value per slot
using SlotGradients = std::array<float, 2 * slotCount>;  // 2 by 8: row 1 by r or x, row 2 by s or y
using Slots = std::span<const std::int32_t, slotCount>;

// Fills the first n rows for n of 1, 3 (triangle), 4 or 9 (quadrilateral); any other n leaves the table unchanged.
void GetIntegrationRule(RuleTable& table, std::size_t n);

// Interpolation functions at (r, s). A side node in use takes half of its function off the two corners of its side.
void ShapeFunctions(SlotValues& N, float r, float s, Slots nodes);

// Their derivatives, row 1 by r and row 2 by s.
void ShapeDerivatives(SlotGradients& dN, float r, float s, Slots nodes);

// Geometry of an element that is infinite in one direction: local r runs to infinity at r = 1.
void MappingFunctions1(SlotValues& M, float r, float s);
void MappingDerivatives1(SlotGradients& dM, float r, float s);

// Geometry of an element that is infinite in two directions, at r = 1 and s = 1. Acts on coordinates from the pole.
void MappingFunctions2(SlotValues& M, float r, float s);
void MappingDerivatives2(SlotGradients& dM, float r, float s);

}  // namespace kaldra
