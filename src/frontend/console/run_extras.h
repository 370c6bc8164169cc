// What kaldra-run keeps beside the system's own files: exports as the steps are saved, the heat balance, and the record
// of the run.
//
// StepDone reaches it on the calculation thread while the run goes on; all else is the front end's thread before that
// thread lives or after it has ended.
#pragma once

#include <string>
#include <vector>

namespace kaldra {

struct WantedExtras {
    bool vtu = false;
    bool csv = false;
    bool balance = false;
    std::vector<std::string> commandLine;
};

// Fills in frontEnd.StepDone and notes the time.
void ConnectExtras(const WantedExtras& wanted);

// Notes the document that is about to be started. Nothing is written yet.
void NoteDocument(const std::string& dataFile);

// The start has succeeded: writes the record of a run under way.
void NoteBegin();

// The start has failed: writes the record, unless there is one of results that may still stand.
void NoteFailedStart(int exitStatus);

// The calculation thread has ended, and the model still stands: ends the exports, writes the balance and adds its
// warning. A file that cannot be made is a message.
void EndExtras(bool finished);

// The lines of the closing summary: the balance, and the files that were made.
void ReportExtras();

// False if a file that was asked for could not be made.
[[nodiscard]] bool ExtrasAreWhole();

// The last act: writes the record with the reason of the end. Gives the exit status: 1 in place of 0 if the record
// could not be written.
[[nodiscard]] int NoteEnd(const std::string& reason, int exitStatus);

}  // namespace kaldra
