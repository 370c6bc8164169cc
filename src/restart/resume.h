// Where an interrupted run goes on: behind the last saved step whose result files are all whole.
//
// step_results tells what is whole. Front end's thread, with a data file open and its lock held.
#pragma once

#include <cstdint>

namespace kaldra {

struct ResumePoint {
    bool whole = false;          // every result that the run can leave is there
    std::int32_t lastStep = -1;  // whose results are built on; -1: none, the run has to start plainly
};

// Looks for results of the steps from `firstStep` on that are whole and fit the time sequence. Of a steady state only
// results count that are no older than the data file; older ones of a transient problem, and elapsed times that a
// result file cannot hold, are warned of.
[[nodiscard]] ResumePoint FindResumePoint(std::int32_t firstStep);

}  // namespace kaldra
