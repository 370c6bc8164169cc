// The measure of an iteration: the vector norm, its per cent change, and the convergence criterion.
#pragma once

namespace kaldra {

// What the monitor keeps from iteration to iteration. Calculation thread.
struct ConvergenceMeasure {
    float ConvergenceNorm = 0;  // sqrt(sum of the squared temperatures) + 1, of the latest iteration
    float change = 0;           // per cent against the iteration before; 1000 in iteration 1, which has none
};

extern ConvergenceMeasure convergence;

// Called once per iteration, after the solution is in nodeStates: measures it, stores a point of the graph's curve,
// appends a line to the .cnp file and to the status list. Gives 1 for a change below `tolerance` (and ends the step's
// iteration in mode phaseEstablished), 0 for no convergence yet, -1 after message 1025, 1038, 1136 (the solution is not
// a number) or 1193. A curve that cannot grow shows 1138, writes nothing and gives 0.
[[nodiscard]] int MonitorConvergence();

}  // namespace kaldra
