// One workbook of the results for a report: NAME.xlsx.
//
//     Overview   titles, kind of analysis, size of the mesh, the units
//     Histories  a row per step: extreme temperatures, heat flows; with a chart of the temperatures
//     Nodes      temperature and flow of every node, step after step
//     Elements   means over the points of every active element, step after step
//     Sections   flows through the flux sections
//
// Add the steps in turn, then finish. Both give 1, or 0 after message 5003 or 1138.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "restart/step_results.h"

namespace kaldra {

class Workbook {
public:
    Workbook();
    ~Workbook();
    Workbook(const Workbook&) = delete;
    Workbook& operator=(const Workbook&) = delete;

    [[nodiscard]] int Begin();
    [[nodiscard]] int Add(const StepResults& results);
    // Adds the file's name to `written`, and to `remarks` a sentence on each sheet that has not held all rows.
    [[nodiscard]] int Finish(std::vector<std::string>& written, std::vector<std::string>& remarks);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace kaldra
