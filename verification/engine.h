// Runs a problem through the engine's own commands and reads the printed results back.
#pragma once

#include <filesystem>
#include <vector>

#include "problem.h"

namespace verification {

// A new folder under the system's temporary folder, deleted with everything in it at the end of scope.
class Folder {
public:
    Folder();
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const std::filesystem::path& Path() const { return path_; }
    std::filesystem::path DataFile() const { return path_ / "case.kdr"; }

private:
    std::filesystem::path path_;
};

// Fills in the engine's front end record. Once, before the first run.
void ConnectEngine();

// Opens the data file of the folder and runs it, from `startStep` where it is above 1. Gives the number of steps that
// ended at maxIterations (0 or 1 for a steady-state run). Throws after a message or a failed run.
int RunFolder(const Folder& folder, int startStep = 1);

// Writes the problem into the folder and runs it. Throws if a step did not converge.
void Run(const Problem& problem, const Folder& folder);

// Rows of a .tNN file, by node.
struct NodeRow {
    double temperature, flow;
};
std::vector<NodeRow> ReadNodes(const Folder& folder, int step);

// Rows of a .rNN file, element by element and point by point.
struct PointRow {
    double temperature, conductivity, waterSlope, water, capacity;
};
std::vector<PointRow> ReadPoints(const Folder& folder, int step);

// The path of a step's result file.
std::filesystem::path StepFile(const Folder& folder, char letter, int step);

}  // namespace verification
