// Freezing of a half space from its surface: solutions in the one variable x / sqrt(t).
#pragma once

#include <vector>

namespace verification {

// Ground that freezes between `solidus` and 0 degrees: all water is frozen below, none above, and between them the
// unfrozen part and the conductivity follow Smooth (problem.h). The units are consistent; `latentHeat` is per volume of
// ground.
struct Ground {
    double frozenConductivity, unfrozenConductivity;
    double frozenCapacity, unfrozenCapacity;
    double latentHeat;
    double solidus;

    double Conductivity(double temperature) const;
    double Unfrozen(double temperature) const;
    // The heat above that at 0 degrees with all water unfrozen, per volume.
    double Enthalpy(double temperature) const;
};

// Neumann's solution for a sharp front at `front` degrees: gives lambda of the depth 2 lambda sqrt(a t), a the frozen
// diffusivity. (H. S. Carslaw and J. C. Jaeger, Conduction of Heat in Solids, 2nd ed., 1959, section 11.2.)
double NeumannLambda(const Ground& ground, double front, double initial, double surface);

// The solution with the whole freezing range, by shooting: (k T')' = -2 z C T' with z = x / (2 sqrt(t)), T(0) and
// T(infinity) given, C the capacity with its latent term. Fourth-order Runge-Kutta in f64.
class FreezingHalfSpace {
public:
    FreezingHalfSpace(const Ground& ground, double initial, double surface, int intervals = 40000);

    double Temperature(double x, double t) const;
    // Depth of a temperature over sqrt(t).
    double DepthOverRoot(double temperature) const;
    // Heat that has left through the surface over sqrt(t), per area.
    double HeatOverRoot() const;

private:
    double Shoot(double flux);

    Ground ground_;
    double surface_;
    double step_;
    std::vector<double> temperatures_;  // at z = i * step_
    double flux_ = 0;                   // k T' at the surface
};

}  // namespace verification
