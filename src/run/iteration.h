// What both analysis loops do in the same way: the tables before the first iteration, and the solution of one system.
//
// Calculation thread. Each gives 1; 0 after a message, or without one when Stop was pressed.
#pragma once

namespace kaldra {

// Prepares profile, store, per-point tables, flux crossings, nodal areas and edges, once per run.
[[nodiscard]] int PrepareTables();

// Imposes the prescribed temperatures on the assembled system.
[[nodiscard]] int EliminatePrescribed();

// Solves the system and makes its solution the temperatures of the nodes. A node without an equation keeps its own.
[[nodiscard]] int SolveTemperatures();

// Makes the temperatures of all nodes the previous ones.
void KeepAsPrevious();

}  // namespace kaldra
