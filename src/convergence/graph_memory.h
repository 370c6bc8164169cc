// Graph memory: the convergence curve and what decides when it is drawn again.
//
// Everything here is guarded by hmtxGraphMem, which guards nothing else. The calculation thread takes it to store one
// point, the front end to read or refill the curve. It is re-entrant, and never held across a call that waits for the
// other thread.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace kaldra {

// Ids of the two radio buttons that choose when a live curve is drawn.
inline constexpr std::int32_t graphAutomatically = 150;
inline constexpr std::int32_t graphManually = 187;

// Bits of GraphDisplayFlags and of GraphFontStyle.
inline constexpr std::int32_t graphSymbols = 1;
inline constexpr std::int32_t graphColour = 2;
inline constexpr std::int32_t graphThickLines = 8;
inline constexpr std::int32_t graphBold = 1;
inline constexpr std::int32_t graphItalic = 2;

inline constexpr std::size_t longestFontName = 32;

struct GraphMemory {
    std::vector<double> GraphIterations;  // x: entry i holds iteration i + 1
    std::vector<double> GraphNorms;       // y: its vector norm
    std::int32_t GraphPointCount = 0;     // valid entries of both

    std::int32_t GraphWindow = 0;          // 1 while a graph window is open
    std::int32_t GraphFirstIteration = 1;  // display range
    std::int32_t GraphLastIteration = 0;   // maxIterations, copied by ReadDataFile
    std::int32_t GraphUpdateMode = graphAutomatically;
    std::int32_t GraphUpdateInterval = 1;  // draw every so many iterations, at least 1
    std::int32_t GraphStep = 0;            // the step that the curve belongs to; 0 in a steady-state run

    std::vector<std::int32_t> GraphStepList;        // steps found in the .cnp file, in file order
    std::vector<std::int32_t> GraphStepIterations;  // how many iterations it has for each
    std::int32_t GraphStepCount = 0;                // valid entries of both

    std::int32_t GraphDisplayFlags = graphSymbols | graphColour | graphThickLines;
    std::int32_t GraphFontStyle = 0;
    float GraphFontSize = 125.0F;  // per cent of the system's base text height
    std::string GraphFontName;     // font of all chart text; string 1213 from the first open file on
};

extern GraphMemory graphMemory;
extern std::recursive_mutex hmtxGraphMem;

// True while a graph window is open.
[[nodiscard]] bool GraphWindowIsOpen();

// Creates the curve and the lists with one zero entry each. Gives 1, or 0 after message 1138.
[[nodiscard]] int CreateGraphTables();

// Releases the curve and the lists.
void FreeGraphTables();

// Gives every setting that does not come from the data file its default, as for a freshly opened file.
void SetGraphDefaults();

// Cuts or grows the live curve to `iteration` points and stores the last one; tells whether the update rule now asks
// for a redraw. Gives 1, or 0 after message 1138. Calculation thread.
[[nodiscard]] int StoreGraphPoint(std::int32_t iteration, double norm, bool& redrawDue);

// Notes the step that the live curve belongs to.
void SetGraphStep(std::int32_t step);

}  // namespace kaldra
