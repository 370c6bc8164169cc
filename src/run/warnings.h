// Warnings: what the engine takes without a message box, but the user of a run should know and can mend.
//
// The engine adds, a front end may take and print. A text says what is wrong and what to do, and is kept once; one
// about a line of the data file begins with "FILE:LINE: ". Both threads.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kaldra {

// Forgets all warnings: a run begins.
void ClearWarnings();

// Adds a text, unless it is there.
void AddWarning(std::string text);

// Adds a text about a line of a file.
void WarnOfLine(std::string_view file, std::int64_t line, std::string_view text);

// Warns that an output file lacks what should stand in it.
void WarnOfBrokenFile(std::string_view path);

// Takes note that memory could not be had, so that something may have been left out.
void NoteLackOfMemory();

// False once an output file of the run was broken, or memory could not be had.
[[nodiscard]] bool ResultsAreWhole();

// The warnings added since the last call, in order.
[[nodiscard]] std::vector<std::string> TakeWarnings();

// The shortest text that gives the number back, for sentences.
[[nodiscard]] std::string PlainNumber(float value);

}  // namespace kaldra
