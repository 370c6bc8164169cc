// What the fuzz targets share: a folder with a problem in it, and short runs of what was read.
//
// libFuzzer calls LLVMFuzzerTestOneInput with the bytes of one file, again and again in one process. A target writes
// them where the engine looks for such a file and lets it read them. What is wrong shows by itself: a report of a
// sanitizer, an input that takes too long or too much memory, or a broken promise, see Require. All on one thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "solver/solution.h"

namespace kaldra {

// Path in a folder of this process, which is removed at its end.
[[nodiscard]] std::string FuzzPath(std::string_view name);

[[nodiscard]] std::string_view BytesOf(const std::uint8_t* data, std::size_t size);

// Replaces a file in the folder.
void WriteFuzzFile(std::string_view name, std::string_view bytes);
[[nodiscard]] std::string ReadFuzzFile(std::string_view name);

// Ends the process with a report of the input when the engine breaks a promise.
void Require(bool kept, const char* promise);

// Puts the process back to where a program starts, without an open file, and empties the folder.
void BeginInput();

// A transient problem of seven nodes and three steps with a flux section, in which water freezes.
extern const std::string_view smallProblem;

// Opens smallProblem as case.kdr, runs it, and leaves its results beside it. Later calls only put the files there
// again.
void RestoreSmallProblem();

// Prepares and runs the open document from its start step as a start does, without thread and lock. A mesh that is not
// small is prepared but not run; of a small one a few iterations of two steps are made. Gives what the run gives, or -1
// where nothing was run.
int RunBriefly(Solver solver);

}  // namespace kaldra
