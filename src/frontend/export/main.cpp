// kaldra-export: the results beside a data file, as files that other programs open.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

#include "frontend/export/pictures.h"
#include "frontend/export/workbook.h"
#include "model/file_names.h"
#include "model/problem_model.h"
#include "platform/number_text.h"
#include "post/result_set.h"
#include "post/step_exports.h"
#include "post/thaw_depth.h"
#include "post/thaw_tables.h"
#include "run/front_end.h"
#include "run/run_state.h"
#include "run/warnings.h"

namespace {

using namespace kaldra;

enum ExitStatus : int { exitDone = 0, exitFailed = 1, exitUsage = 2 };

struct Options {
    std::string file;
    std::vector<std::string> formats;
    std::string step = "all";
    std::vector<double> verticals;
    PictureOrder pictures;
};

// ---------------------------------------------------------------------------------------------------------------------
// Lines

void PrintError(const std::string& line) { std::fprintf(stderr, "%s\n", line.c_str()); }

int Complain(const std::string& sentence, ExitStatus status) {
    PrintError("kaldra-export: " + sentence);
    return status;
}

void PrintWarnings() {
    for (const std::string& text : TakeWarnings()) PrintError("warning: " + text);
}

void ShowMessage(const MessageBox& box) {
    std::string line = FormatText("error %d: ", box.number);
    for (const char c : box.text) c == '\n' ? line.append("\\n") : line.append(1, c);
    PrintError(line);
}

int PrintWritten(const std::vector<std::string>& written) {
    for (const std::string& path : written) std::printf("%s\n", path.c_str());
    return std::fflush(stdout) == 0 ? exitDone : exitFailed;
}

// ---------------------------------------------------------------------------------------------------------------------
// The export

// The steps that --step asks for. Gives exitDone or the status of a refusal.
int ChooseSteps(const Options& options, std::vector<SavedStep>& steps) {
    if (steps.empty())
        return Complain("no saved step beside " + options.file + " has all its result files whole", exitFailed);
    if (options.step == "all") return exitDone;
    std::int32_t wanted = -1;
    const char* const end = options.step.data() + options.step.size();
    const auto [at, error] = std::from_chars(options.step.data(), end, wanted);
    if (error != std::errc() || at != end) return Complain("--step takes the number of a step, or all", exitUsage);
    const auto found = std::ranges::find(steps, wanted, &SavedStep::step);
    if (found == steps.end()) {
        std::string there;
        for (const SavedStep& step : steps) there += FormatText(" %d", step.step);
        return Complain(FormatText("step %d has no whole results; there are those of", wanted) + there, exitFailed);
    }
    steps = {*found};
    return exitDone;
}

int CutVerticals(const Options& options, std::vector<ThawHistory>& histories) {
    for (const double x : options.verticals) {
        ThawHistory& history = histories.emplace_back();
        if (!CutVertical(x, history.line)) return exitFailed;
        if (history.line.samples.empty()) {
            return Complain("no active element lies on the vertical at x = " + PlainNumber(static_cast<float>(x)),
                            exitFailed);
        }
    }
    return exitDone;
}

struct Targets {
    StepExports exports;
    bool wantsBook = false;
    Workbook book;
    std::vector<ThawHistory> histories;
};

[[nodiscard]] int AddStep(Targets& to, std::int32_t step) {
    StepResults results;
    if (!ReadStepResults(step, results) || !ExportStep(to.exports, results)) return 0;
    if (to.wantsBook && !to.book.Add(results)) return 0;
    return std::ranges::all_of(to.histories, [&](ThawHistory& h) { return AddToHistory(h, results) == 1; });
}

[[nodiscard]] int Finish(Targets& to) {
    std::vector<std::string>& written = to.exports.written;
    if (!EndExports(to.exports)) return 0;
    std::vector<std::string> remarks;
    if (to.wantsBook && !to.book.Finish(written, remarks)) return 0;
    for (const std::string& remark : remarks) AddWarning(remark);
    return to.histories.empty() || WriteThawTables(to.histories, written);
}

bool Wants(const Options& options, const char* format) { return std::ranges::count(options.formats, format) > 0; }

int Export(const Options& options) {
    const std::string path = TruePath(options.file);
    if (path.empty()) return Complain("cannot find the working folder", exitFailed);
    ResultSet set;
    const bool opened = OpenResultSet(path, set) == 1;
    PrintWarnings();
    if (!opened) return exitFailed;
    const bool anyStep = !options.formats.empty() || !options.verticals.empty() || !NeedsNoStep(options.pictures);
    std::vector<SavedStep> steps;
    if (anyStep) steps = set.steps;
    if (const int refused = anyStep ? ChooseSteps(options, steps) : exitDone; refused != exitDone) return refused;
    if (!set.remark.empty()) PrintError("warning: " + set.remark);
    Targets to;
    to.exports.vtu = Wants(options, "vtu");
    to.exports.csv = Wants(options, "csv");
    to.wantsBook = Wants(options, "xlsx");
    if (const int refused = CutVerticals(options, to.histories); refused != exitDone) return refused;
    bool whole = !to.wantsBook || to.book.Begin();
    for (std::size_t i = 0; whole && i < steps.size(); ++i) whole = AddStep(to, steps[i].step) == 1;
    whole = whole && Finish(to) && MakePictures(options.pictures, set, steps, to.exports.written);
    PrintWarnings();
    const int printed = PrintWritten(to.exports.written);
    return whole ? printed : exitFailed;
}

}  // namespace

// What declaring the options may throw is lack of memory, before anything has begun.
int main(int argc, char** argv) {  // NOLINT(bugprone-exception-escape)
    CLI::App app("Turns the results beside a data file into files that other programs open.", "kaldra-export");
    Options options;
    app.add_option("FILE.kdr", options.file, "problem data file")->required();
    app.add_option("--to", options.formats, "what to make: vtu, csv, xlsx; of --picture png, svg, pdf")
        ->option_text("FORMAT[,FORMAT...]")
        ->delimiter(',')
        ->check(CLI::IsMember({"vtu", "csv", "xlsx", "png", "svg", "pdf"}));
    app.add_option("--step", options.step, "the step to export (default: all saved ones)")->option_text("N|all");
    app.add_option("--thaw-depth", options.verticals,
                   "freezing along the verticals at x: crossings, depths, trumpet curves")
        ->option_text("X[,X...]")
        ->delimiter(',');
    AddPictureOptions(app, options.pictures);
    app.set_version_flag("--version", "kaldra-export " KALDRA_VERSION);
    app.footer(
        "The files are made beside the data file and listed on stdout. Steps whose result files are not whole are "
        "passed "
        "over.\nExit status: 0 done, 1 failed, 2 wrong usage.");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) return app.exit(error);
        return Complain(error.what() + std::string("; see --help"), exitUsage);
    }
    if (options.file.empty()) return Complain("a file name is empty; see --help", exitUsage);
    const std::string complaint = CheckPictureOrder(options.pictures, options.formats);
    if (!complaint.empty()) return Complain(complaint + "; see --help", exitUsage);
    if (options.formats.empty() && options.verticals.empty() && options.pictures.kind.empty()) {
        return Complain("nothing to make: give --to, --picture or --thaw-depth; see --help", exitUsage);
    }
    if (std::ranges::any_of(options.verticals, [](double x) { return !std::isfinite(x); })) {
        return Complain("--thaw-depth takes numbers", exitUsage);
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    frontEnd.ShowMessage = ShowMessage;
    InitModel(0);
    InitModel(1);
    return Export(options);
}
