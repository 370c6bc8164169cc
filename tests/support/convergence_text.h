// The text of a convergence file, as a run writes it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/number_text.h"

namespace kaldra {

struct StepHistory {
    std::int32_t step;
    std::vector<double> norms;  // of iterations 1, 2, ...
};

// Every step has its blank line before and the line of the phase-change control within.
inline std::string ConvergenceText(const std::vector<StepHistory>& steps) {
    std::string text = "Title\r\nsub 1 title 2\r\ncase\r\nrevision\r\n  \r\n  \r\nConvergence information.\r\n";
    text += std::string(77, '=') + "\r\n";
    for (const StepHistory& history : steps) {
        text += "   \r\n";
        std::int32_t iteration = 0;
        for (const double norm : history.norms) {
            text += FormatText(" StepNum: %5d ItNum: %5d Vector Norm: %12.6E", history.step, ++iteration, norm);
            text += iteration == 1 ? "\r\nPhase change region established.\r\n" : " %Change:   1.0000E+000 \r\n";
        }
    }
    return text;
}

}  // namespace kaldra
