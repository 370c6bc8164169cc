#include "frontend/console/progress.h"

#include <algorithm>
#include <cmath>

#include "platform/number_text.h"

namespace kaldra {

static double SteadySecondsLeft(const Progress& p) {
    const double factor = p.change / p.changeBefore;
    if (p.iteration < 3 || p.change <= 0 || p.tolerance <= 0 || !(factor < 1)) return -1;
    if (p.change < p.tolerance) return 0;
    const double wanted = std::ceil(std::log(p.tolerance / p.change) / std::log(factor));
    const double left = std::min(wanted, static_cast<double>(p.maxIterations - p.iteration));
    return left * p.seconds / p.iteration;
}

static double TransientSecondsLeft(const Progress& p) {
    const double done = p.step - p.firstStep;
    if (done < 1) return -1;
    return p.seconds / done * (p.lastStep - p.step + 1);
}

double EstimateSecondsLeft(const Progress& progress) {
    return progress.steady ? SteadySecondsLeft(progress) : TransientSecondsLeft(progress);
}

// h:mm:ss or m:ss
static std::string ClockText(double seconds) {
    const auto whole = static_cast<std::int64_t>(seconds);
    const std::int64_t hours = whole / 3600;
    const std::int64_t minutes = whole / 60 % 60;
    const std::string tail = FormatText(":%02d", whole % 60);
    return (hours > 0 ? FormatText("%d:%02d", hours, minutes) : FormatText("%d", minutes)) + tail;
}

std::string ProgressLine(const Progress& p, std::size_t width) {
    std::string line;
    if (!p.steady) line = FormatText("step %d of %d, ", p.step, p.lastStep);
    line += FormatText("iteration %d", p.iteration);
    if (p.iteration > 1) line += FormatText(", change %.3f %% (tolerance %.3f %%)", p.change, p.tolerance);
    line += FormatText(", %s elapsed", ClockText(p.seconds));
    const double left = EstimateSecondsLeft(p);
    if (left >= 0) line += FormatText(", about %s left", ClockText(std::ceil(left)));
    line.resize(std::min(line.size(), width));
    return line;
}

}  // namespace kaldra
