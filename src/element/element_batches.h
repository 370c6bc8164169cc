// The elements in batches of eight, with their geometry computed once per run.
//
// Everything here gives the same bits as the plain procedures of element_matrices. Calculation thread, but for the
// sorting, which a start does before that thread lives; the work is spread over all threads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "element/element_matrices.h"

namespace kaldra {

// Makes model.batches and gives every element with points its place in them; the geometry is still empty. Gives 1, or 0
// after message 1138.
[[nodiscard]] int SortElementsIntoBatches();

// Computes the geometry of all batches and takes over the functions. An element that cannot be integrated is noted for
// the first assembly. Gives 1; 0 after message 1138, or without a message when Stop was pressed.
[[nodiscard]] int FillElementBatches();

// Shows what is wrong with the first faulty element: the box of a zero or negative area (1194 ordinary, 1196 infinite)
// or message 1156. Gives 1 when there is none.
[[nodiscard]] int CheckElementBatches();

// Evaluates and records the values at all points, and forms the element matrices of the system, and Cap T old with
// them, where a value or the increment or the step is new. `changed` tells whether any matrix was formed. Gives 1, or 0
// when Stop was pressed.
[[nodiscard]] int FormElementMatrices(bool& changed);

// The shape at a point of an active element.
[[nodiscard]] PointShape ShapeAtPoint(std::size_t e, std::size_t point);

// Forms the matrices of an active element like ComputeElementMatrices, from what is recorded at its points.
void RecordedElementMatrices(std::size_t e, ElementMatrix& K, ElementMatrix& Cap);

// A point that has crossed the freezing point in this step and is not switched on.
struct PointCrossing {
    std::size_t pointIndex;  // counted through the elements
    std::size_t place;       // PointPlace
    float temperature;
    bool thaws;
};

// Finds all of them, in the order of the points. A temperature exactly at the freezing point at either end of the step
// is no crossing. Gives 1; 0 after message 1138, or without one when Stop was pressed.
[[nodiscard]] int FindPointCrossings(std::vector<PointCrossing>& crossings);

}  // namespace kaldra
