// The result files of a step on disk: their names beside the data file, and whether they fit the time sequence.
#pragma once

#include <cstdint>
#include <string>

namespace kaldra {

// Extension of a step's file: .t07, .r100.
[[nodiscard]] std::string StepExtension(char letter, std::int32_t step);

// dataFileName with the extension of a step's file.
[[nodiscard]] std::string StepFileBesideData(char letter, std::int32_t step);

// Replaces the extension of `path` by `extension`, gives the name in `fullName` and tells whether such a file exists.
[[nodiscard]] int HasExtensionFile(const std::string& path, const std::string& extension, std::string& fullName);

// Compares the elapsed time in a result file's header with `elapsed`, exactly, as f32: the file holds five digits.
// Gives 1 equal, 0 different or not to be read, -1 where there is no file, which contradicts nothing.
[[nodiscard]] int CheckStepTime(const std::string& fileName, float elapsed);

// True for an elapsed time that five printed digits give back, as CheckStepTime asks for.
[[nodiscard]] bool TimeSurvivesFile(float elapsed);

// Warns of a step whose results no restart finds, as its elapsed time does not survive.
void WarnOfLostTime(std::int32_t step);

// The last step that the result files on disk do not contradict: the one before the first whose time differs.
[[nodiscard]] std::int32_t LastConsistentStep(char letter);

}  // namespace kaldra
