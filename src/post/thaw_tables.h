// Freezing crossings, deepest thaw and trumpet curves as comma-separated tables.
//
//     NAME.thaw.csv          every crossing of every step: step, time, x, y, depth, what lies above it
//     NAME.thaw-deepest.csv  per period and vertical: the deepest thaw, when, and whether it met the end of the ground
//     NAME.trumpet.csv       per period, vertical and depth: least, mean and greatest temperature
#pragma once

#include <span>
#include <string>
#include <vector>

#include "post/thaw_depth.h"

namespace kaldra {

// Writes the three tables and adds their names to `written`. Gives 1, or 0 after message 5003 or 1138.
[[nodiscard]] int WriteThawTables(std::span<const ThawHistory> histories, std::vector<std::string>& written);

}  // namespace kaldra
