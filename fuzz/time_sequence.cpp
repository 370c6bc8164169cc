// The time sequence of a data file, read alone, and what is done with it beside the results of another one.
#include <algorithm>

#include "frontend/commands.h"
#include "model/data_file.h"
#include "model/problem_model.h"
#include "model/time_sequence.h"
#include "restart/start_step.h"
#include "restart/step_files.h"
#include "run/analysis.h"
#include "support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kaldra;
    RestoreSmallProblem();
    WriteFuzzFile("case.kdr", BytesOf(data, size));
    if (!ReadTimeSequence()) return 0;
    ChooseStartStep();
    const std::int32_t last = LastConsistentStep('t');
    Require(last >= 0 && last <= model.stepCount, "the last consistent step is one of the sequence");
    for (std::int32_t step = 1; step <= std::min(model.stepCount, 50); ++step) {
        Require(InverseIncrement(step) == 0 || StepIncrement(step) != 0, "a step of length 0 has no inverse");
        WarnOfLostTime(step);
    }
    for (const std::int32_t step : {last, last + 1, model.stepCount}) {
        if (step >= 1 && step <= model.stepCount) ChooseStartTime(step);
    }
    return 0;
}
