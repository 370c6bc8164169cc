#include "restart/initial_conditions.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <limits>
#include <string_view>

#include "model/file_names.h"
#include "model/line_reader.h"
#include "model/problem_model.h"
#include "model/time_sequence.h"
#include "platform/number_text.h"
#include "restart/step_files.h"
#include "results/node_results.h"
#include "run/messages.h"
#include "run/run_state.h"

namespace kaldra {

// ---------------------------------------------------------------------------------------------------------------------
// Reading

namespace {

// An initial condition file and what its failures are called.
struct InitialFile {
    const std::string& path;
    int cannotOpen;
    int badLine;
    File file{};
    LineBuffer line{};
};

constexpr int otherMesh = 1137;

int BadLine(const InitialFile& in) { return ShowErrorWithText(in.badLine, in.line.View()); }

[[nodiscard]] int OpenInitialFile(InitialFile& in) {
    if (!FileExists(in.path)) return ShowError(1075);
    return in.file.OpenForReading(in.path) ? 1 : ShowError(in.cannotOpen);
}

// Everything up to the first line of equal signs is header.
[[nodiscard]] int SkipHeader(InitialFile& in, bool trimmed) {
    while (ReadLine(in.file, in.line) == 1) {
        if (trimmed) TrimLeadingBlanks(in.line);
        if (in.line.View().starts_with("==============")) return 1;
    }
    return BadLine(in);
}

// Reads a row that the mesh asks for: a file that ends here belongs to a smaller mesh.
[[nodiscard]] int NextRow(InitialFile& in) {
    const int result = ReadLine(in.file, in.line);
    if (result == 0) return ShowError(otherMesh);
    return result == 1 ? 1 : BadLine(in);
}

// A row behind the last one that is wanted belongs to a larger mesh. Text that is no row does no harm.
[[nodiscard]] int CheckEnd(InitialFile& in, std::int32_t count) {
    const int result = ReadLine(in.file, in.line);
    if (result < 0) return BadLine(in);
    std::int32_t number = 0;
    const ScanResult scan = result == 1 ? ScanText(in.line.View(), "%d", &number) : ScanResult{};
    return scan.outOfRange || (scan.fields == 1 && number > count) ? ShowError(otherMesh) : 1;
}

[[nodiscard]] int ReadTemperatureRow(InitialFile& in) {
    std::int32_t number = 0;
    float temperature = 0;
    float flow = 0;
    float ignored = 0;
    if (!NextRow(in)) return 0;
    const ScanResult scan = ScanText(in.line.View(), "%d %f %f %f", &number, &temperature, &flow, &ignored);
    if (scan.fields < 2 || (scan.fields == 2 && scan.outOfRange)) return BadLine(in);  // the fourth field is not used
    if (number < 1 || number > model.nodeCount) return ShowError(otherMesh);
    model.nodeStates[IndexOf(number)] = {temperature, temperature, 0};
    model.SolutionVector[IndexOf(number)] = flow;
    return 1;
}

[[nodiscard]] int ReadTemperatures(InitialFile& in) {
    if (!SkipHeader(in, false)) return 0;
    for (std::int32_t i = 0; i < model.nodeCount; ++i) {
        if (!ReadTemperatureRow(in)) return 0;
    }
    return CheckEnd(in, model.nodeCount);
}

[[nodiscard]] int ReadConductivityRow(InitialFile& in, std::size_t e, float& conductivity) {
    std::int32_t element = 0;
    std::int32_t point = 0;
    if (!NextRow(in)) return 0;
    const ScanResult scan = ScanText(in.line.View(), "%d %d %*e %e", &element, &point, &conductivity);
    if (scan.fields < 3) return BadLine(in);
    return static_cast<std::size_t>(element) == e + 1 ? 1 : ShowError(otherMesh);
}

[[nodiscard]] int ReadConductivities(InitialFile& in) {
    if (!SkipHeader(in, true)) return 0;
    for (std::size_t e = 0; e < static_cast<std::size_t>(model.elementCount); ++e) {
        for (std::size_t point = 0; point < PointCount(e); ++point) {
            if (!ReadConductivityRow(in, e, PointResultsOf(e).conductivity[point])) return 0;
        }
    }
    return CheckEnd(in, model.elementCount);
}

// Reads one file whole and ends the reader's stream on every way out.
[[nodiscard]] int ReadWhole(InitialFile in, int (*read)(InitialFile& in)) {
    if (!OpenInitialFile(in)) return 0;
    const int result = read(in);
    ReadLine(in.file, clearbuf);
    return result;
}

}  // namespace

int ReadInitialConditions() {
    const std::int32_t mode = runState.initialConditionMode;
    if (mode != 1 && mode != 2) return 1;
    if (!ReadWhole({runState.initialTemperatureFile, 1024, 1152}, ReadTemperatures)) return 0;
    if (!WriteNodeResults()) return 0;
    return mode == 1 || ReadWhole({runState.initialConductivityFile, 1023, 1151}, ReadConductivities);
}

// ---------------------------------------------------------------------------------------------------------------------
// Checking a file that the user picked

namespace {

constexpr std::int32_t invalidExtension = -2;
constexpr std::int32_t startFile = -1;  // "in"

// Step number of an extension: the letter and "in" or at least two digits.
std::int32_t StepOfExtension(std::string_view extension, char letter) {
    if (extension.empty() || !EqualIgnoringCase(extension.substr(0, 1), {&letter, 1})) return invalidExtension;
    const std::string_view rest = extension.substr(1);
    if (EqualIgnoringCase(rest, "in")) return startFile;
    const bool digits = std::ranges::all_of(rest, [](unsigned char c) { return std::isdigit(c) != 0; });
    if (rest.size() < 2 || !digits) return invalidExtension;
    std::int32_t step = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), step);
    return error == std::errc::result_out_of_range ? std::numeric_limits<std::int32_t>::max() : step;
}

bool FitsStartStep(std::int32_t step, std::int32_t startStep) {
    return startStep >= 2 ? step == startStep - 1 : step < 1;
}

}  // namespace

int CheckInitialFile(const std::string& fileName, const std::string& dataFile, char letter, std::int32_t startStep) {
    const std::size_t dot = fileName.rfind('.');
    const bool hasExtension = dot != std::string::npos && dot > 0;
    const std::int32_t step =
        hasExtension ? StepOfExtension(std::string_view(fileName).substr(dot + 1), letter) : invalidExtension;
    if (step == invalidExtension) return initialFileBadExtension;
    if (!HasSameStem(fileName, dataFile)) return initialFileFits;
    if (!FitsStartStep(step, startStep)) return initialFileWrongStep;
    const bool hasTime = step >= 1 && step <= model.stepCount;
    if (hasTime && CheckStepTime(fileName, ElapsedTime(step)) == 0) return initialFileWrongTime;
    return initialFileFits;
}

int ValidateInitialFile(const std::string& fileName, char letter) {
    switch (CheckInitialFile(fileName, model.dataFileName, letter, runState.startStep)) {
        case initialFileBadExtension:
            return ShowError(4030);
        case initialFileWrongStep:
            return ShowError(4031);
        case initialFileWrongTime:
            return ShowError(4032);
        default:
            return 1;
    }
}

}  // namespace kaldra
