// A run from Start to "Done.": its preparation, the calculation thread and its end.
//
// StartAnalysis, HandleCalcThreadMsg and EndRun belong to the front end's thread. At most one calculation thread lives
// at a time; the front end must not start a run while one does.
#pragma once

#include <cstdint>

namespace kaldra {

// First parameter of HandleCalcThreadMsg.
inline constexpr int runFinishedMessage = 100;

// Locks the data file until EndRun, reads it anew, prepares every table and starts the calculation thread. Gives 1 when
// the thread runs, else 0 after a message (5001: another run holds the lock); the front end then calls EndRun.
[[nodiscard]] int StartAnalysis();

// What the calculation thread runs: the lock marker, the analysis loop, and RunFinished as the last act. Gives the
// result of the loop: 1 finished; 0 failed, stopped or of an unknown kind.
int CalcThreadProc();

// Answers RunFinished (100, result) on the front end's thread.
void HandleCalcThreadMsg(int first, int second);

// Puts the state back to Ready after a run, a failed start or a failed graph load, and empties the model.
void EndRun();

// True from a successful StartAnalysis until the thread has been waited for.
[[nodiscard]] bool CalcThreadLives();

// True while a run owns the model: from `running` on until its thread has been waited for, so also after Stop. The
// front end then leaves the tables alone.
[[nodiscard]] bool RunUnderWay();

// Sizes the tables per element, point and node for the model that was read. Gives 1, or 0 after message 1138.
[[nodiscard]] int MakePointTables();

// PointResultOffset and pointTotal from integrationPoints; a count below 1 is an element without points.
void BuildPointResultOffsets();

// Gives a freshly opened data file its start: step 0 for a steady-state analysis, else step 1.
void ChooseStartStep();

}  // namespace kaldra
