// Phase-change control: brings the latent heat into a time step by stages.
//
// Latent heat is an apparent heat capacity (CapacityAtPoint). At first no point of a step has any. Whenever the
// iteration has converged, the points that crossed the freezing point in this step are found and those that went
// furthest are switched on, at most maxPhasePoints in each direction. With nothing left to switch the region is
// established: every point takes latent heat, and the next convergence ends the step.
#pragma once

namespace kaldra {

// Values of PhaseState.
inline constexpr unsigned char pointThawing = 1;
inline constexpr unsigned char pointFreezing = 2;

// Called when the iteration has converged and PhaseChangeMode is not phaseEnded. Gives 1; 0 after message 1138, 1025,
// 1193 or 1038, or without one when Stop was pressed. Calculation thread.
[[nodiscard]] int ControlPhaseChange();

}  // namespace kaldra
