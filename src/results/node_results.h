// The node result file of a step (.tNN): temperature and heat flow of every node.
#pragma once

namespace kaldra {

// Writes the file of the step under way from nodeStates and SolutionVector, which holds the nodal flows. Gives 1; 0
// after message 1021 (open), 1193 with the writer's own (write) or 1035 (close), or where Stop made it give the file up.
[[nodiscard]] int WriteNodeResults();

}  // namespace kaldra
