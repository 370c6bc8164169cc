// Initial conditions from the result files of an earlier run. Front end's thread, before the calculation thread lives.
#pragma once

#include <cstdint>
#include <string>

namespace kaldra {

// Reads the files in force by initialConditionMode into nodeStates, SolutionVector and the conductivities of
// PointResults, and writes the temperatures back as the node results of the step before the start. Gives 1, or 0 after
// message 1075 (no such file), 1024 or 1023 (open), 1152 or 1151 (a line), 1137 (another mesh) or those of
// WriteNodeResults.
[[nodiscard]] int ReadInitialConditions();

// What CheckInitialFile finds.
inline constexpr int initialFileFits = 1;
inline constexpr int initialFileBadExtension = -1;
inline constexpr int initialFileWrongStep = -2;
inline constexpr int initialFileWrongTime = -3;

// Checks a file that the user picked. A result of the data file itself has to be the one of the step before startStep
// and to have the elapsed time that the time sequence has now; a file of another problem passes on its extension alone:
// the letter and "in" or at least two digits. Stems are compared as they stand, so both paths should be absolute.
[[nodiscard]] int CheckInitialFile(const std::string& fileName, const std::string& dataFile, char letter,
                                   std::int32_t startStep);

// The same for the open document. Gives 1, or 0 after message 4030, 4031 or 4032.
[[nodiscard]] int ValidateInitialFile(const std::string& fileName, char letter);

}  // namespace kaldra
