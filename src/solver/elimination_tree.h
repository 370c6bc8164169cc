// The plan of a sparse factorisation: which equations are eliminated together, what each elimination touches, and what
// all of it takes. Calculation thread only; the work is spread over all threads.
#pragma once

namespace kaldra {

// Makes model.tree for the free equations of model.system. Gives 1; 0 after message 1138, or without one when Stop was
// pressed.
[[nodiscard]] int BuildEliminationTree();

}  // namespace kaldra
