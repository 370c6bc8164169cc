// A column of moist ground that freezes from its surface: the one problem of the fronts, heat balances and restarts.
#pragma once

#include <vector>

#include "engine.h"
#include "problem.h"
#include "similarity.h"

namespace verification {

// How the column is posed. Lengths in metres, times in days, heat in kJ.
struct Pose {
    double range = 0.1;     // the water freezes between 0 and -range degrees
    double spacing = 0.05;  // of the nodes; two points of each element lie at one depth
    double dt = 0.25;
    double tolerance = 0.5;  // per cent
    int maxPhasePoints = 2;
    double origin = 0;  // added to every temperature of the data file
    double days = 100;
    int saves = 20;              // steps that are saved
    double latentHeat = 334000;  // per volume of water
    bool equalCapacities = false;
};

inline constexpr double initialTemperature = 4, surfaceTemperature = -10;
inline constexpr double columnDepth = 4;  // the front stays above 1.7, where the ground below is all but undisturbed

Ground GroundOf(const Pose& pose);
Problem FreezingColumn(const Pose& pose);
int StepCount(const Pose& pose);

// Heat in the column above that at 0 degrees with all water unfrozen, by the material functions at the temperatures of
// the nodes and the column's own integration points. Per area.
double StoredHeat(const Problem& problem, const Pose& pose, const std::vector<NodeRow>& rows);

// Heat taken up in a step as the engine counts it: recorded capacity by change of temperature.
double HeatByCapacity(const Problem& problem, const Pose& pose, const std::vector<NodeRow>& before,
                      const std::vector<NodeRow>& after, const std::vector<PointRow>& points);

// Depth of a temperature above the origin of the scale, linear between nodes, the mean of both sides of the column.
double DepthOf(const Problem& problem, const Pose& pose, const std::vector<NodeRow>& rows, double temperature);

// Largest difference of temperature between two nodes at one depth: 0 for a solution that depends on depth alone.
double SideDifference(const std::vector<NodeRow>& rows);

double SumOfFlows(const std::vector<NodeRow>& rows);

}  // namespace verification
