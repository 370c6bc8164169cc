// A problem with an exact solution, built in memory and written as a data file.
//
// One material, one conductivity curve, one water content curve: more is not needed to compare with a formula.
#pragma once

#include <array>
#include <filesystem>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

namespace verification {

enum class Family { Triangle3, Triangle6, Quad4, Quad8 };

struct Node {
    double x = 0, y = 0;
    double initial = 0;
    int bcType = 0;  // 0 free, 1 temperature, 2 nodal flow, 3 flow per area in plan view
    double bcValue = 0;
    int bcFunction = 0;  // 1: `history`
};

struct Element {
    std::array<int, 8> nodes{};  // numbers from 1, 0 for an empty slot
    int points = 4;
    int infiniteR = 0, infiniteS = 0;
};

using Curve = std::vector<std::pair<double, double>>;

struct Step {
    double increment = 0, elapsed = 0;
    bool saved = true;
};

struct Problem {
    bool isTransient = false;
    int view = 1;  // 1 plane, 2 axisymmetric, 3 plan
    double latentHeat = 0, freezingPoint = 0;
    int maxIterations = 50;
    double tolerance = 1e-4;  // per cent
    int maxPhasePoints = 0;
    std::vector<Step> steps{};
    double frozenCapacity = 1, unfrozenCapacity = 1, waterContent = 0;
    Curve conductivity{}, water{};
    Curve history{};  // of boundary values, repeating; empty: none
    std::vector<Node> nodes{};
    std::vector<Element> elements{};
    double poleX = 0, poleY = 0;
};

// A curve of one value.
Curve Constant(double value);

// A curve that is `below` up to `from` and `above` beyond `to`. Between them the steep segment has all but no weight in
// the fit, so that the slopes at both ends are 0 and the curve is the cubic 3u^2 - 2u^3, u from 0 to 1.
Curve Ramp(double from, double to, double below, double above);

// The value of that cubic, held to 0 and 1 outside, and its slope by u.
double Smooth(double u);
double SmoothSlope(double u);

// n + 1 values from a to b; each interval is `growth` times the one before it.
std::vector<double> Divide(double a, double b, int n, double growth = 1);

// Count steps of one length, every `saveEvery`-th saved.
std::vector<Step> EqualSteps(int count, double increment, int saveEvery = 1);

// Fills nodes and elements with a rectangular grid, numbered along the shorter direction. `move` displaces a corner of
// the grid; sides stay straight.
using Displacement = std::function<std::pair<double, double>(double x, double y)>;
void MakeGrid(Problem& problem, Family family, int points, const std::vector<double>& xs, const std::vector<double>& ys,
              const Displacement& move = {});

// A column of quadrilaterals of unit width and thickness from y = 0 down, with the surface held at a temperature and
// the foot insulated.
void MakeColumn(Problem& problem, Family family, int points, const std::vector<double>& depths, double initial,
                double surface);

void SetTemperature(Node& node, double value);

// The number of the node at a position, to within a millionth; 0 where there is none.
int NodeAt(const Problem& problem, double x, double y);

void WriteDataFile(const Problem& problem, const std::filesystem::path& path);

}  // namespace verification
