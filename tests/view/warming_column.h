// A column whose temperature rises from -1 at its foot to 9, 14 and 19 at its top in three steps, linear in height.
#pragma once

#include "support/problem.h"

namespace kaldra {

inline Problem WarmingColumn() {
    Problem column = Column();
    column.analysis = "2 1 0 1 0";
    column.materials = {"1 1 1 1e-6 1e-6 0.5"};
    column.S = {FunctionRows(1, {"-100 0", "100 1"})};
    column.times = {"1 1 1 1", "2 1 2 1", "3 1 3 1"};
    column.B = {FunctionRows(1, {"0 4", "3 19"}, "0 0 0 0 0")};
    column.nodes[4] = "5 0 2 0 1 1 0 0 0";
    column.nodes[5] = "6 1 2 0 1 1 0 0 0";
    return column;
}

}  // namespace kaldra
