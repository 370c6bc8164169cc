// The results that lie beside a data file: the model as the file gives it, and the saved steps that can be read.
//
//     ResultSet set;
//     if (!OpenResultSet(path, set)) return 0;                        // the model is read, set.steps is filled
//     StepResults step;
//     if (!ReadStepResults(set.steps[0].step, step)) return 0;        // restart/step_results
//     step.points[PointsBegin(e) + p], step.nodes[IndexOf(node)]      // and model.nodes, model.elements, ...
//
// For programs that look at results while no run of their own is under way. Another process may be running on the data
// file: a file that it is writing is never taken for a result. No toolkit, no state but the model.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/files.h"
#include "restart/step_results.h"

namespace kaldra {

// Of the files .r, .t, .g and .j of a step.
using StepStamps = std::array<FileStamp, 4>;

// A step whose result files are all whole.
struct SavedStep {
    std::int32_t step = 0;  // 0: steady state
    float elapsed = 0;      // at its end, as the time sequence has it
    StepStamps stamps{};    // of the files that were found whole
};

struct ResultSet {
    std::string path;  // of the data file, as it was given
    FileStamp dataFile;
    std::vector<SavedStep> steps;  // in rising order
    std::string remark;            // a sentence on results that may not belong to the data file; empty: none
};

// Reads the data file into the model, in place of what was there, and looks for its results. `path` is absolute or
// relative. Gives 1, also where no step is there; 0 after a message of ReadDataFile (1020, 1150, ...), 1074 for a name
// without a dot, or 1138. A set that is opened anew remembers which files were whole and reads only those that changed.
[[nodiscard]] int OpenResultSet(const std::string& path, ResultSet& set);

// The files of a step of the open data file as they are now.
[[nodiscard]] StepStamps StampsOf(std::int32_t step);

// Where the points of element index e begin in StepResults::points; it has PointCount(e) of them.
[[nodiscard]] std::size_t PointsBegin(std::size_t e);

}  // namespace kaldra
