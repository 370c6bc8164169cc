// Tidy tables of the results as comma-separated values, one row per thing and step.
//
//     NAME.nodes.csv      temperature and flow of every node
//     NAME.points.csv     all values of every integration point of active elements, with its place
//     NAME.sections.csv   flows through the flux sections, in all (no element) and by element; only if there are any
//     NAME.histories.csv  one row per step: extreme temperatures and heat flows
//
// The first line, begun by #, says that the units are those of the data file; the second names the columns.
#pragma once

#include <string>
#include <vector>

#include "post/output_file.h"
#include "restart/step_results.h"

namespace kaldra {

// Tables under work: they appear when they are ended.
struct CsvTables {
    OutputFile nodes, points, sections, histories;
};

// Line 1 of every table.
[[nodiscard]] std::string UnitLine();

// Each gives 1, or 0 after message 5003 or 1138. EndCsv adds the names of the files to `written`.
[[nodiscard]] int BeginCsv(CsvTables& tables);
[[nodiscard]] int AddToCsv(CsvTables& tables, const StepResults& results);
[[nodiscard]] int EndCsv(CsvTables& tables, std::vector<std::string>& written);

// What a step's row of the histories holds.
struct StepSummary {
    float least = 0, greatest = 0;                 // temperature of the nodes in active elements
    std::int32_t leastNode = 0, greatestNode = 0;  // their numbers
    double flowIn = 0, flowOut = 0;                // sums of the nodal flows into and out of the mesh, both positive
};

[[nodiscard]] StepSummary SummaryOf(const StepResults& results);

}  // namespace kaldra
