#include "convergence/convergence_file.h"

#include <array>

#include "model/problem_model.h"
#include "results/text_writer.h"
#include "run/messages.h"
#include "run/run_state.h"

namespace kaldra {

std::string ConvergencePath;

int CreateConvergenceFile() {
    ConvergencePath = model.baseName;
    ConvergencePath += StringText(1072);
    File file;
    if (!file.Create(ConvergencePath)) return ShowError(1025);
    runState.convergenceFileExists = 1;
    const std::array<std::string, 4> heading{"  ", "  ", "Convergence information.", std::string(77, '=')};
    return WriteLinesAndClose(file, 1038,
                              [&](File& out) { return WriteLines(out, model.titleLine) && WriteLines(out, heading); });
}

int OpenConvergenceFile(File& file) {
    return file.OpenForAppending(ConvergencePath) && file.SeekToEnd() ? 1 : ShowError(1025);
}

int AppendConvergenceLines(File& file, std::span<const std::string> lines) {
    return WriteLinesAndClose(file, 1038, [&](File& out) { return WriteLines(out, lines); });
}

}  // namespace kaldra
