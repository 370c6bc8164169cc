// The commands that a front end gives to the engine, and when each of them is enabled. No toolkit here.
//
// All run on the front end's thread.
#pragma once

#include <cstdint>
#include <string>

namespace kaldra {

// Forgets the open document: state NoFile.
void NewDocument();

// Opens a data file that was chosen or named on the command line, and reads it once for its time sequence and kind.
// Gives 1 in state Ready; 0 after the reader's message, or message 1074 for a name without a dot or of more than 260
// characters, in state NoFile.
[[nodiscard]] int OpenDataFile(const std::string& path);

// The command Open Data File: the old document goes first, even if the new file then fails. Gives what OpenDataFile
// gives.
[[nodiscard]] int OpenChosenFile(const std::string& path);

// Opens the file named on the command line. One that does not exist, with its quotes or without, is passed over in
// silence: gives 0.
[[nodiscard]] int OpenNamedFile(const std::string& name);

// Removes one double quote at the end of a name, then one at its start.
[[nodiscard]] std::string StripQuotes(std::string name);

// Begins the next run at `step`, which lies in 1 to stepCount; message 4005 where default initial files are missing,
// and the step stands all the same.
void ChooseStartTime(std::int32_t step);

// Takes `file` as the initial temperatures of the next run, and the .r file beside it as its conductivities if it
// belongs to the open document. Gives 1, or 0 after message 1075 (no such file), 4030, 4031 or 4032 with nothing
// changed.
[[nodiscard]] int ChooseInitialConditions(const std::string& file);

// Starts a run. Gives 1 when the calculation thread runs; 0 after a message, in state Ready.
[[nodiscard]] int Start();

// Asks the run to end at its next look at `running`.
void Stop();

// Asks the step under way to end with its present iteration.
void HaltIteration();

// Enabled states of the menu items and buttons. They change when the front end is told to update them, and between
// those calls haltIteration by SetHaltEnabled and graph by SetGraphEnabled. Stop does not change them.
struct EnabledCommands {
    bool newDocument, openDataFile, openInitialConditions, exit, startTime;
    bool start, stop, haltIteration, graph;
};

[[nodiscard]] EnabledCommands CommandsNow();

}  // namespace kaldra
