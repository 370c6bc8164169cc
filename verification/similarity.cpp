#include "similarity.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "problem.h"

namespace verification {

namespace {

constexpr int bisections = 80;

// The root of a rising function in [a, b].
template <class Function>
double Bisect(double a, double b, Function f) {
    for (int i = 0; i < bisections; ++i) {
        const double c = (a + b) / 2;
        (f(c) < 0 ? a : b) = c;
    }
    return (a + b) / 2;
}

}  // namespace

double Ground::Unfrozen(double temperature) const { return Smooth((temperature - solidus) / -solidus); }

double Ground::Conductivity(double temperature) const {
    return frozenConductivity + (unfrozenConductivity - frozenConductivity) * Unfrozen(temperature);
}

double Ground::Enthalpy(double temperature) const {
    const double capacity = temperature <= 0 ? frozenCapacity : unfrozenCapacity;
    return capacity * temperature - latentHeat * (1 - Unfrozen(temperature));
}

double NeumannLambda(const Ground& g, double front, double initial, double surface) {
    const double af = g.frozenConductivity / g.frozenCapacity;
    const double au = g.unfrozenConductivity / g.unfrozenCapacity;
    const double root = std::sqrt(af / au);
    const double below = g.unfrozenConductivity * root * (initial - front) / (g.frozenConductivity * (front - surface));
    const double stefan = g.frozenCapacity * (front - surface) / g.latentHeat;
    return Bisect(1e-6, 5, [&](double l) {
        return l * std::sqrt(std::numbers::pi) / stefan - std::exp(-l * l) / std::erf(l) +
               below * std::exp(-l * l * root * root) / std::erfc(l * root);
    });
}

FreezingHalfSpace::FreezingHalfSpace(const Ground& ground, double initial, double surface, int intervals)
    : ground_(ground), surface_(surface) {
    const double fastest = std::max(ground.frozenConductivity / ground.frozenCapacity,
                                    ground.unfrozenConductivity / ground.unfrozenCapacity);
    step_ = 6 * std::sqrt(fastest) / intervals;  // erfc(6) is far below f64
    temperatures_.resize(static_cast<std::size_t>(intervals) + 1);
    // Without latent heat and with the larger capacity and conductivity the flux would be smaller than this.
    const double most = 10 * (initial - surface) * std::sqrt((ground.latentHeat / -ground.solidus * 1.5 + 1) * 10) *
                        std::sqrt(std::max(ground.frozenConductivity, ground.unfrozenConductivity)) *
                        std::sqrt(std::max(ground.frozenCapacity, ground.unfrozenCapacity));
    flux_ = Bisect(0, most, [&](double flux) { return Shoot(flux) - initial; });
    Shoot(flux_);
}

double FreezingHalfSpace::Shoot(double flux) {
    const auto slopes = [this](double z, double T, double q) {
        const double latent =
            ground_.latentHeat * SmoothSlope((T - ground_.solidus) / -ground_.solidus) / -ground_.solidus;
        const double capacity = (T <= 0 ? ground_.frozenCapacity : ground_.unfrozenCapacity) + latent;
        const double slope = q / ground_.Conductivity(T);
        return std::pair(slope, -2 * z * capacity * slope);
    };
    double T = surface_, q = flux, h = step_;
    temperatures_[0] = T;
    for (std::size_t i = 1; i < temperatures_.size(); ++i) {
        const double z = h * static_cast<double>(i - 1);
        const auto [T1, q1] = slopes(z, T, q);
        const auto [T2, q2] = slopes(z + h / 2, T + h / 2 * T1, q + h / 2 * q1);
        const auto [T3, q3] = slopes(z + h / 2, T + h / 2 * T2, q + h / 2 * q2);
        const auto [T4, q4] = slopes(z + h, T + h * T3, q + h * q3);
        T += h / 6 * (T1 + 2 * T2 + 2 * T3 + T4);
        q += h / 6 * (q1 + 2 * q2 + 2 * q3 + q4);
        temperatures_[i] = T;
    }
    return T;
}

double FreezingHalfSpace::Temperature(double x, double t) const {
    const double place = x / (2 * std::sqrt(t)) / step_;
    const auto i = static_cast<std::size_t>(place);
    if (i + 1 >= temperatures_.size()) return temperatures_.back();
    return std::lerp(temperatures_[i], temperatures_[i + 1], place - static_cast<double>(i));
}

double FreezingHalfSpace::DepthOverRoot(double temperature) const {
    const auto above = std::ranges::lower_bound(temperatures_, temperature);
    const auto i = static_cast<double>(above - temperatures_.begin());
    const double before = *(above - 1);
    return 2 * step_ * (i - 1 + (temperature - before) / (*above - before));
}

// The flux is k dT/dx = (k T') / (2 sqrt(t)); its integral over time is (k T') sqrt(t).
double FreezingHalfSpace::HeatOverRoot() const { return flux_; }

}  // namespace verification
