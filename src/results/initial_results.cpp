#include "results/initial_results.h"

#include <string>

#include "model/file_names.h"
#include "model/problem_model.h"
#include "platform/number_text.h"
#include "results/result_file.h"
#include "run/run_state.h"
#include "run/warnings.h"

namespace kaldra {

static std::string_view UpToFirstDot(std::string_view path) { return path.substr(0, path.find('.')); }

static RowsEnd WriteInitialRows(File& file) {
    static constexpr RowFormat format("%5d %+14.6E %+14.6E %+14.6E ");
    return WriteRows(file, static_cast<std::size_t>(model.nodeCount), format, [](char* out, std::size_t n) {
        const NodeState& state = model.nodeStates[n];
        return PutRow(out, format, RowNumber(n), state.temperature, model.SolutionVector[n], state.sumVolume);
    });
}

// The initial set's file with the letter in place of the first letter of the extension, if there is one, becomes
// baseName.?in. The run goes on after a copy that fails: nothing here reads it.
[[nodiscard]] static int CopyCompanion(char letter) {
    std::string source = runState.initialTemperatureFile;
    std::int32_t dotPosition = 0;
    std::int32_t length = 0;
    if (!FindExtension(source, dotPosition, length)) return 0;
    if (dotPosition < length) source[static_cast<std::size_t>(dotPosition)] = letter;
    const std::string copy = model.baseName + '.' + letter + "in";
    if (!CopyFileIfThere(source, copy)) WarnOfBrokenFile(copy);
    (void)TakeLastSystemError();
    return 1;
}

int WriteInitialResults() {
    const bool sameProblem =
        EqualIgnoringCase(UpToFirstDot(model.dataFileName), UpToFirstDot(runState.initialTemperatureFile));
    if (runState.startStep > 1 && sameProblem) return 1;
    if (!WriteResultFile({model.baseName + ".tin", 1021, 1035}, "Node#  Temp           Flux(Q)        Sum_Volume", 50,
                         WriteInitialRows)) {
        return 0;
    }
    if (runState.initialConditionMode == 0) return 1;
    return CopyCompanion('m') && CopyCompanion('v') && CopyCompanion('f');
}

}  // namespace kaldra
