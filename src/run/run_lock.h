// The lock on the data file by which two runs on one problem are told apart.
//
// StartAnalysis takes it and EndRun gives it back; who looks at the results on disk before a start takes it earlier.
// Front end's thread.
#pragma once

namespace kaldra {

// Holds the lock on dataFileName from now on; it may be held already. Gives 1, also where the file cannot be locked; 0
// after message 5001 while another run holds it.
[[nodiscard]] int HoldRunLock();

void ReleaseRunLock();

}  // namespace kaldra
