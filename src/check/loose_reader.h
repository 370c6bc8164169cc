// The reader of the check: it reads the data file to its end, whatever it finds there, and notes what it could not
// read.
//
// What it could read goes into the tables of the model, so that the procedures of the engine can work on it. Unlike
// after ReadDataFile, references between records may reach nothing.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "check/findings.h"
#include "model/data_rows.h"

namespace kaldra {

struct FunctionLines {
    std::int64_t header = 0;
    std::vector<std::int64_t> points;
};

// Where the records of the model stand in the file; a record without a row, or with
// one that cannot be read, has line 0.
struct ReadLines {
    std::array<std::int64_t, sectionCount> keyword{};  // of the last section of the kind; 0: missing
    std::int64_t analysis = 0;                         // the rows of these sections
    std::int64_t converge = 0;
    std::vector<std::int64_t> steps, materials, nodes, elements, edges, fluxSections;
    std::array<std::vector<FunctionLines>, 4> functions;  // K, S, M, B
    std::vector<NodeRow> nodeRows;                        // of model.nodes, with their start
};

// Reads dataFileName into the model, which InitModel(1) has made. Gives false, with an error found, where the file
// cannot be opened or read; memory that cannot be had shows message 1138.
[[nodiscard]] bool ReadLoosely(ReadLines& lines, Findings& findings);

[[nodiscard]] inline std::int64_t LineOf(const std::vector<std::int64_t>& lines, std::size_t index) {
    return index < lines.size() ? lines[index] : 0;
}

}  // namespace kaldra
