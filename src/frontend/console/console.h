// The console's side of the notifications: status lines, messages and the progress line.
//
// Both threads come here; one lock keeps their lines apart. A message box needs no answer in a console.
#pragma once

#include <string>
#include <vector>

namespace kaldra {

// What a run left for the exit status.
struct ConsoleOutcome {
    int result = 0;    // of the analysis loop
    int messages = 0;  // shown so far
    int warnings = 0;  // printed so far
};

// Fills in frontEnd. `quiet`: no status lines.
void ConnectConsole(bool quiet);

enum class ConsoleEvent : char { RunBegun = 'b', RunFinished = 'f', StopPressed = 's', HaltPressed = 'h' };

// Blocks until an event is there, and redraws the progress line meanwhile.
[[nodiscard]] ConsoleEvent WaitForEvent();

// Posts an event. Safe in a signal handler.
void PostEvent(ConsoleEvent event);

// Takes the progress line off the terminal.
void ClearProgressLine();

[[nodiscard]] ConsoleOutcome OutcomeOfRun();

// The messages and the warnings that were printed, as they stood on the screen without their "warning: ".
[[nodiscard]] std::vector<std::string> MessagesShown();
[[nodiscard]] std::vector<std::string> WarningsShown();

// Prints a line of the program's own on stdout, unless it is to be quiet.
void Report(const std::string& line);

// Prints a line on stdout, also where status lines are left out.
void PrintLine(const std::string& line);

// Prints the engine's warnings since the last call on stderr, "warning: " before each.
void PrintWarnings();

// Prints a sentence of the program's own on stderr.
void Complain(const std::string& sentence);

}  // namespace kaldra
