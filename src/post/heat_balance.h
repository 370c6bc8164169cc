// Whether the heat of a run adds up: what came in through the boundary against what the ground holds more of.
//
// Stored heat is taken from the material functions at the temperatures before and after a step, not from the apparent
// heat capacity of the equations. The equations conserve what they count; where they counted latent heat more than
// once, heat came in that the ground does not hold, and that is the residual.
//
//     residual    = heat in - (sensible + latent)
//     turned over = half of: the sum of |heat| over the nodes + the sum of |stored| over the points
//
// A steady state stores nothing; its heat is that of one unit of time.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kaldra {

struct StepBalance {
    std::int32_t step = 0;
    float elapsed = 0;
    // Heat into the mesh during the step.
    double atTemperatures = 0;  // through nodes of prescribed temperature
    double nodalFlows = 0;      // prescribed at nodes
    double unitFluxes = 0;      // prescribed on edges or areas
    double byFunctions = 0;     // the part of these three whose values functions of time give
    // Heat that the ground holds more of.
    double sensible = 0;
    double latent = 0;
    double latentCounted = 0;  // as the equations counted it
    double turnedOver = 0;

    [[nodiscard]] double In() const { return atTemperatures + nodalFlows + unitFluxes; }
    [[nodiscard]] double Stored() const { return sensible + latent; }
    [[nodiscard]] double Residual() const { return In() - Stored(); }
    // Relative to the heat turned over; 0 where nothing was.
    [[nodiscard]] double Miss() const { return turnedOver > 0 ? Residual() / turnedOver : 0; }
};

struct HeatBalance {
    std::vector<StepBalance> steps;
    std::vector<bool> givenByFunction;  // per node
};

// Adds the step under way, which has just ended; a Stop leaves it out. Gives 1, or 0 after message 1138. Calculation
// thread, on StepDone.
[[nodiscard]] int AddStepBalance(HeatBalance& balance);

// All steps together; `step` and `elapsed` are those of the last one.
[[nodiscard]] StepBalance SumOf(const HeatBalance& balance);

// FILE.balance.csv: a row per step, and their sum. Gives 1, or 0 after message 5003.
[[nodiscard]] int WriteBalance(const HeatBalance& balance);
[[nodiscard]] std::string BalanceName();

// One line for the end of a run.
[[nodiscard]] std::string BalanceSentence(const HeatBalance& balance);

// Adds a warning when the sum misses by more than 5 % of the heat turned over. The model has to be there.
void WarnOfBalance(const HeatBalance& balance);

// "3-7, 12 and 4 more" of rising numbers.
[[nodiscard]] std::string NumberRanges(const std::vector<std::int32_t>& numbers);

}  // namespace kaldra
