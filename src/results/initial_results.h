// The record of the state from which a transient run begins: the .tin file and its companions.
#pragma once

namespace kaldra {

// Writes baseName.tin, and copies the .m, .v and .f files beside an initial temperature file to baseName.min, .vin and
// .fin. A restart of the same problem (startStep above 1, initial file with the data file's stem) leaves those of the
// first run alone. Gives 1, or 0 after message 1021, 1193, 1035 or 1074. Front end's thread.
[[nodiscard]] int WriteInitialResults();

}  // namespace kaldra
