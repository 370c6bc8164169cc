// The mesh as cells that other programs know, and the values of points gathered for them.
//
//     all side nodes      no side nodes       some: split around the first side node
//     2 --5-- 1           2 ----- 1           2 --5-- 1
//     |       |           |       |           |  /|\  |
//     6       8           |       |           | / | \ |
//     |       |           |       |           |/  |  \|
//     3 --7-- 4           3 ----- 4           3 --7-- 4
//     one quadratic       one linear          triangles, none of them flat
//
// An infinite element is drawn by the coordinates of the data file.
#pragma once

#include <cstdint>
#include <vector>

#include "restart/step_results.h"

namespace kaldra {

// Kinds of cells, by their numbers in files of the Visualization Toolkit.
enum class CellKind : std::uint8_t {
    Line = 3,
    Triangle = 5,
    Polygon = 7,
    Quadrilateral = 9,
    QuadraticLine = 21,
    QuadraticTriangle = 22,
    QuadraticQuadrilateral = 23,
};

struct MeshCells {
    std::vector<std::int32_t> nodes;    // of all cells: node indices, corners first
    std::vector<std::int64_t> ends;     // per cell: where its nodes end
    std::vector<CellKind> kinds;        // per cell
    std::vector<std::int32_t> element;  // per cell: its element index
};

// What the points of an element say of it as a whole: means by the weights of the integration rule.
struct ElementMeans {
    float fluxX = 0, fluxY = 0;
    float conductivity = 0;
    float unfrozenWater = 0;
    float heatCapacity = 0;
};

// Makes the cells of the model's mesh. An element with fewer than two nodes has none. Gives 1, or 0 after message 1138.
[[nodiscard]] int BuildCells(MeshCells& cells);

// Zeros for NULL elements and those without points.
[[nodiscard]] ElementMeans MeansOf(const StepResults& results, std::size_t e);

}  // namespace kaldra
