// The problem data file (.kdr): reading it into the ProblemModel.
//
// docs/formats.md describes the format. Both readers run on the front end's thread while no calculation thread lives,
// and end the line reader's stream and close the file on every way out.
#pragma once

namespace kaldra {

// Reads dataFileName, sets baseName and fills the ProblemModel, which InitModel(1) has made. Gives 1, or 0 after a
// message: 1020 (open), 1054 (version), 1053 (end of file), 1150 (a line), 1051, 1133 (sequence), 1052 (no active
// element), 1138. What had been read by then stays.
[[nodiscard]] int ReadDataFile();

// Reads only the sections ANALYSIS and TIME of dataFileName. Gives 1, or 0 after message 1020, 1053, 1150 or 1138.
[[nodiscard]] int ReadTimeSequence();

}  // namespace kaldra
