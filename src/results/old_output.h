// Clearing the result files of the steps that a run will make again.
#pragma once

namespace kaldra {

// Deletes the numbered .t, .g, .r and .j files from startStep on beside the data file, and at a steady-state start
// .tin, .gin, .rin and .jin. Number 0 stays at a steady-state start, and so does what is no letter and a number. The
// deleted numbered files are listed in the status list; a deletion that fails is passed over with a warning. Gives 1,
// or 0 after message 1074 for a name without a dot. Front end's thread.
[[nodiscard]] int ClearOldOutput();

}  // namespace kaldra
