// Nested dissection of the free equations by the coordinates of their nodes.
//
// A region is cut in two across x or across y, whichever separates it better; the nodes on the cut, eliminated after
// both halves, are its separator. So the elimination of one half touches nothing of the other. Calculation thread only;
// the work is spread over all threads.
#pragma once

#include <cstdint>
#include <vector>

namespace kaldra {

// A separator, or a region too small to be cut.
struct DissectionPart {
    std::int32_t begin;  // in Dissection::order
    std::int32_t end;
    std::int32_t depth;  // separators that stand above it
};

struct Dissection {
    std::vector<std::int32_t> order;        // indices of the free equations, in the order of elimination
    std::vector<DissectionPart> parts;      // in that order too: a part comes after all that it separates
    std::vector<std::int32_t> regionBegin;  // regions that are worked on apart: their ranges in `order`
    std::vector<std::int32_t> regionEnd;
};

// Orders the equations of model.system that are free by model.EquationCode. Gives 1; 0 after message 1138, or without
// one when Stop was pressed.
[[nodiscard]] int DissectEquations(Dissection& dissection);

}  // namespace kaldra
