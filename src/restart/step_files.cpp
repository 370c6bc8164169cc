#include "restart/step_files.h"

#include "model/file_names.h"
#include "model/line_reader.h"
#include "model/problem_model.h"
#include "model/time_sequence.h"
#include "platform/files.h"
#include "platform/number_text.h"
#include "run/warnings.h"

namespace kaldra {

std::string StepExtension(char letter, std::int32_t step) {
    return std::string(".") + letter + FormatText("%02d", step);
}

std::string StepFileBesideData(char letter, std::int32_t step) {
    return ReplaceExtension(model.dataFileName, StepExtension(letter, step));
}

int HasExtensionFile(const std::string& path, const std::string& extension, std::string& fullName) {
    fullName = ReplaceExtension(path, extension);
    return FileExists(fullName) ? 1 : 0;
}

// The fifth line holds step number and elapsed time.
[[nodiscard]] static int ReadElapsed(File& file, float& elapsed) {
    LineBuffer line;
    for (int i = 0; i < 5; ++i) {
        if (ReadLine(file, line) != 1) return 0;
    }
    return ScanText(line.View(), " %*d %f", &elapsed).fields == 1;
}

int CheckStepTime(const std::string& fileName, float elapsed) {
    File file;
    if (!file.OpenForReading(fileName)) {
        (void)TakeLastSystemError();
        return -1;
    }
    float found = 0;
    const int read = ReadElapsed(file, found);
    ReadLine(file, clearbuf);
    return read && found == elapsed;
}

bool TimeSurvivesFile(float elapsed) {
    float found = 0;
    return ScanText(FormatText("%+12.4E", elapsed), "%f", &found).fields == 1 && found == elapsed;
}

void WarnOfLostTime(std::int32_t step) {
    const float elapsed = ElapsedTime(step);
    if (TimeSurvivesFile(elapsed)) return;
    WarnOfLine(
        model.dataFileName, model.firstStepLine + step - 1,
        FormatText("the elapsed time %s of step %d needs more than the five digits of a result file, so its "
                   "results look like those of another time sequence: give it five digits, and start from step 1",
                   PlainNumber(elapsed), step));
}

std::int32_t LastConsistentStep(char letter) {
    std::int32_t last = 0;
    for (std::int32_t step = 1; step <= model.stepCount; ++step) {
        if (CheckStepTime(StepFileBesideData(letter, step), ElapsedTime(step)) == 0) break;
        last = step;
    }
    return last;
}

}  // namespace kaldra
