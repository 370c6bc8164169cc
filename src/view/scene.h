// Scene: what there is to see of the ground, from the model and the results of one step.
//
// A cell is an element as it is drawn. Its sides may be bent by side nodes and its temperature is what the shape
// functions make of the nodes, so it is cut into n pieces per side for drawing: the finer, the larger it is shown.
//
//     2 --5-- 1       An infinite element shows its near part, as far as its mapping reaches within a tenth of the
//     |       |       mesh; its far sides are open.
//     6       8       Sides are numbered from 0: side i goes from corner i + 1 to the next.
//     3 --7-- 4
//
// Reads the model; no thread may change it meanwhile.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "model/problem_model.h"
#include "restart/step_results.h"

namespace kaldra {

enum class SceneKind { Active, Null, Infinite };

struct SceneCell {
    std::size_t element = 0;  // index
    SceneKind kind = SceneKind::Active;
    bool takesPart = true;                           // false: of a NULL material, finite or infinite
    std::int32_t sides = 0;                          // 4, 3 or 1
    std::uint32_t openSides = 0;                     // bit i for side i
    std::uint32_t sharedSides = 0;                   // those that an earlier cell has too
    float rEnd = 1, sEnd = 1;                        // local coordinates of the far sides
    float left = 0, bottom = 0, right = 0, top = 0;  // bounds of the nodes' or the mapped positions
};

// A place in a cell, in the coordinates of the mesh.
struct ScenePoint {
    float x = 0, y = 0;
    float temperature = 0;  // 0 without a step
};

// A cell in pieces: the points, the triangles between them, and the sides one after the other, `perSide` pieces each.
struct CellGrid {
    std::int32_t perSide = 1;
    std::vector<std::array<float, 2>> local;      // r, s
    std::vector<std::array<float, slotCount>> N;  // shape functions there
    std::vector<std::array<std::uint16_t, 3>> triangles;
    std::vector<std::uint16_t> rim;  // sides * perSide + 1 points
};

struct SceneSide {
    std::size_t cell = 0;
    std::int32_t side = 0;
};

struct SceneArrow {
    float x = 0, y = 0;
    float fluxX = 0, fluxY = 0;  // heat per time and area
};

struct BoundaryNode {
    float x = 0, y = 0;
    std::int32_t type = 0;  // bcType, or bcUnitFlux for a node of a flux edge
};

struct Scene {
    std::vector<SceneCell> cells;    // by element number; elements without a shape are left out
    std::vector<SceneSide> borders;  // of the mesh, and between materials
    std::vector<BoundaryNode> boundaryNodes;
    float left = 0, bottom = 0, right = 1, top = 1;  // bounds of all cells

    bool hasStep = false;
    std::vector<float> temperatures;  // by node index
    float least = 0, greatest = 0;    // of nodes in active cells
    std::vector<SceneArrow> arrows;   // at the points of finite cells; those of others mostly lie beyond what is shown
    std::vector<SectionResult> sections;

    std::map<std::uint32_t, CellGrid> grids;  // by slots in use and pieces per side, for cells that are not infinite
};

inline constexpr std::int32_t mostPieces = 16;

// Makes the scene of the model, without a step. Gives 1, or 0 after message 1138.
[[nodiscard]] int BuildScene(Scene& scene);

// Shows the results of a step. Gives 1, or 0 after message 1138.
[[nodiscard]] int SetSceneStep(Scene& scene, const StepResults& results);

// Least and greatest temperature of the nodes of active cells; false where there is none.
[[nodiscard]] bool TemperatureRange(const Scene& scene, std::span<const float> temperatures, float& least,
                                    float& greatest);

// The pieces of a cell. The reference holds until the next call.
[[nodiscard]] const CellGrid& GridOf(Scene& scene, const SceneCell& cell, std::int32_t perSide);

// Where the points of a grid lie.
void PlaceGrid(const Scene& scene, const SceneCell& cell, const CellGrid& grid, std::vector<ScenePoint>& points);

}  // namespace kaldra
