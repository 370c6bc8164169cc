#include "results/result_file.h"

#include "model/problem_model.h"
#include "model/time_sequence.h"
#include "platform/number_text.h"
#include "run/run_state.h"

namespace kaldra {

std::string StepFileName(char letter) {
    return model.baseName + '.' + letter + FormatText("%02d", runState.currentStep);
}

std::array<std::string, 5> CommonHeader() {
    const std::int32_t step = runState.currentStep;
    return {model.titleLine[0], model.titleLine[1], model.titleLine[2], model.titleLine[3],
            FormatText("%d   %+12.4E  = Step Number, Elapsed time", step, ElapsedTime(step))};
}

RowRoom& TheRowRoom() {
    static RowRoom room;
    return room;
}

}  // namespace kaldra
