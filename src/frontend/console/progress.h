// The progress line of the console: what it says, and the estimate of the time left. No terminal here.
#pragma once

#include <cstdint>
#include <string>

namespace kaldra {

// Where a run stands after an iteration.
struct Progress {
    bool steady = true;
    std::int32_t step = 0;
    std::int32_t firstStep = 0;
    std::int32_t lastStep = 0;
    std::int32_t iteration = 0;
    std::int32_t maxIterations = 0;
    double change = 0;  // per cent
    double changeBefore = 0;
    double tolerance = 0;  // per cent
    double seconds = 0;    // since the start
};

// Seconds until the end, below 0 where nothing can be said yet. A steady-state iteration is taken to go on converging
// by the factor of its last two changes; a transient run to need as long for each step as for those done.
[[nodiscard]] double EstimateSecondsLeft(const Progress& progress);

// One line without line end, at most `width` characters.
[[nodiscard]] std::string ProgressLine(const Progress& progress, std::size_t width);

}  // namespace kaldra
