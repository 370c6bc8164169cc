// kaldra-run: one analysis from the console.
//
// The main thread is the front end's thread: it opens the file, gives Start, and then waits for the end of the run or
// for a signal. Signals reach it as events, so that the commands Stop and Halt Iteration run where they belong.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <map>
#include <new>
#include <string>
#include <vector>

#include "check/check.h"
#include "frontend/commands.h"
#include "frontend/console/console.h"
#include "frontend/console/run_extras.h"
#include "model/file_names.h"
#include "model/problem_model.h"
#include "platform/files.h"
#include "platform/number_text.h"
#include "platform/parallel.h"
#include "restart/resume.h"
#include "run/analysis.h"
#include "run/front_end.h"
#include "run/messages.h"
#include "run/run_lock.h"
#include "run/run_state.h"
#include "run/warnings.h"
#include "solver/solution.h"

namespace {

using namespace kaldra;

enum ExitStatus : int {
    exitDone = 0,
    exitFailed = 1,
    exitUsage = 2,
    exitCannotStart = 3,
    exitDoubtful = 4,
    exitSignal = 128
};

// ---------------------------------------------------------------------------------------------------------------------
// Signals

std::atomic<int> stopSignal{0};
std::atomic<bool> runExists{false};

// The first stop signal presses Stop, also when it comes before the run exists: its event waits in the queue. The
// second one ends the process as if nobody had caught it.
void OnStopSignal(int signal) {
    if (stopSignal.exchange(signal) == 0) return PostEvent(ConsoleEvent::StopPressed);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void OnHaltSignal(int) {
    if (runExists) PostEvent(ConsoleEvent::HaltPressed);
}

void Catch(int signal, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigaction(signal, &action, nullptr);
}

void CatchSignals() {
    Catch(SIGINT, OnStopSignal);
    Catch(SIGTERM, OnStopSignal);
    Catch(SIGUSR1, OnHaltSignal);
    Catch(SIGPIPE, SIG_IGN);  // a reader that goes away must not end the analysis
    Catch(SIGXFSZ, SIG_IGN);  // a file beyond the size limit is a failed write like any other
}

// ---------------------------------------------------------------------------------------------------------------------
// The run

struct Options {
    std::string file;
    std::int32_t startStep = 0;  // 0: not given
    std::string initialFile;     // empty: not given
    bool check = false;
    bool resume = false;
    Solver solver = Solver::Automatic;
    int threads = 0;  // 0: not given
    bool quiet = false;
    bool strict = false;
    std::vector<std::string> exports;
    bool balance = false;
};

// The path as the engine keeps it, or an empty one after a complaint.
std::string AbsolutePath(const std::string& file) {
    std::string path = TruePath(file);
    if (path.empty()) Complain("cannot find the working folder");
    if (path.size() > longestPath) {
        Complain(FormatText("the path has %d characters, %d is the most: %s", static_cast<std::int64_t>(path.size()),
                            static_cast<std::int64_t>(longestPath), path));
        return {};
    }
    return path;
}

// A run writes and deletes files beside its data file; a data file with one of their names would be lost.
bool IsNameOfOutput(std::string_view name) {
    const std::string_view extension = name.substr(name.rfind('.') + 1);
    if (extension == "cnp" || extension == "lkp") return true;
    constexpr std::array others{".run.json",         ".balance.csv",  ".vtu",           ".pvd",      ".nodes.csv",
                                ".points.csv",       ".sections.csv", ".histories.csv", ".thaw.csv", ".trumpet.csv",
                                ".thaw-deepest.csv", ".xlsx",         ".part"};
    if (std::ranges::any_of(others, [&](std::string_view ending) { return name.ends_with(ending); })) return true;
    const std::size_t letter = std::string_view("tgrjmvf").find(extension.empty() ? '\0' : extension.front());
    if (letter == std::string_view::npos) return false;
    const std::string_view rest = extension.substr(1);
    return rest == "in" || rest.find_first_not_of("0123456789") == std::string_view::npos;
}

bool NamesADataFile(const std::string& path) {
    const std::string name = path.substr(FileNameOffset(path));
    std::int32_t dotPosition = 0;
    std::int32_t length = 0;
    if (!FindExtension(name, dotPosition, length)) return false;
    if (!FileExists(path)) return ShowError(1020) != 0;
    if (IsNameOfOutput(name)) {
        Complain("a run writes and deletes files of this name, so it cannot be a data file: " + path);
        return false;
    }
    return true;
}

// Prints what is wrong or doubtful in the file, as FILE:LINE: KIND: SENTENCE, and a summary.
int Check(const Options& options) {
    const std::string path = AbsolutePath(options.file);
    if (path.empty() || !NamesADataFile(path)) return exitCannotStart;
    const Findings findings = CheckDataFile(path);
    std::int64_t errors = 0;
    for (const Finding& finding : findings.list) {
        const bool isError = finding.severity == Severity::Error;
        if (isError) ++errors;
        const std::string place = finding.line == 0 ? "" : FormatText("%d:", finding.line);
        PrintLine(FormatText("%s:%s %s: %s", options.file, place, isError ? "error" : "warning", finding.text));
    }
    const std::int64_t doubts = static_cast<std::int64_t>(findings.list.size()) - errors;
    if (!options.quiet) {
        PrintLine(FormatText("%s: an analysis %s start: %s, %s", options.file, errors > 0 ? "cannot" : "can",
                             Counted(errors, "error"), Counted(doubts, "warning")));
    }
    return errors > 0 ? exitCannotStart : exitDone;
}

// The start that the options ask for. Gives the exit status of a refusal, exitDone for none.
int PrepareStart(const Options& options) {
    if (options.startStep == 0 && options.initialFile.empty()) return exitDone;
    if (model.analysisType == steadyState) {
        Complain("a steady-state problem has no start step and no initial conditions");
        return exitUsage;
    }
    if (options.startStep != 0) {
        if (options.startStep < 1 || options.startStep > model.stepCount) {
            Complain(FormatText("the start step has to lie between 1 and %d", model.stepCount));
            return exitUsage;
        }
        ChooseStartTime(options.startStep);
    }
    if (options.initialFile.empty()) return exitDone;
    const std::string path = AbsolutePath(options.initialFile);
    return !path.empty() && ChooseInitialConditions(path) ? exitDone : exitFailed;
}

// What --resume makes of the results on disk: the next start goes on behind them. Gives false where nothing is left to
// do; `refused` is then the exit status.
bool PrepareResume(const Options& options, int& refused) {
    refused = HoldRunLock() ? exitDone : exitFailed;  // a run under way is still writing them
    if (refused != exitDone) return false;
    const ResumePoint point = FindResumePoint(options.startStep);
    std::string sentence = "nothing to resume: a plain start";
    if (point.whole) {
        sentence = "the results are whole: nothing is left to do";
        (void)DeleteFile(runState.lockFilePath);  // of a run that was killed behind its last file
    } else if (point.lastStep > 0) {
        ChooseStartTime(point.lastStep + 1);
        if (runState.initialConditionMode != 2) refused = exitFailed;  // they are gone since they were found
        sentence = FormatText("resuming at step %d, behind the results of step %d", point.lastStep + 1, point.lastStep);
    } else {
        refused = PrepareStart(options);
    }
    if (!options.quiet && refused == exitDone) PrintLine(options.file + ": " + sentence);
    return !point.whole && refused == exitDone;
}

// A Stop that came while the start was still preparing is kept until the run shows itself.
void WaitForEnd() {
    bool begun = false;
    bool stopKept = false;
    for (;;) {
        switch (WaitForEvent()) {
            case ConsoleEvent::RunBegun:
                begun = true;
                if (stopKept) Stop();
                break;
            case ConsoleEvent::StopPressed:
                stopKept = !begun;
                if (begun) Stop();
                break;
            case ConsoleEvent::HaltPressed:
                if (frontEnd.IsHaltEnabled()) HaltIteration();
                break;
            case ConsoleEvent::RunFinished:
                ClearProgressLine();
                EndExtras(OutcomeOfRun().result == 1);
                return HandleCalcThreadMsg(runFinishedMessage, OutcomeOfRun().result);
        }
    }
}

using Clock = std::chrono::steady_clock;

// The closing line: how the systems were solved, and what the whole run took.
void ShowSummary(Clock::time_point begun) {
    const double seconds = std::chrono::duration<double>(Clock::now() - begun).count();
    const char* const solver = UsedSolver() == Solver::Sparse ? "sparse" : "skyline";
    const int threads = ThreadCount();
    Report(FormatText("Solved by the %s solver on %d %s in %.2f s.", solver, threads,
                      threads == 1 ? "thread" : "threads", seconds));
}

// What the end of a run that was waited for comes to.
struct Ending {
    ExitStatus status = exitFailed;
    int signal = 0;
    std::string reason;
};

Ending EndingOf(const Options& options, std::int32_t kind, int messagesOfStart) {
    const ConsoleOutcome outcome = OutcomeOfRun();
    if (outcome.result == 1) {
        if (!ResultsAreWhole()) {
            Complain("the analysis came to its end, but its results are not whole");
            return {exitFailed, 0, "finished, but its results are not whole"};
        }
        if (!ExtrasAreWhole()) {
            Complain("the analysis came to its end, but not every file that was asked for could be made");
            return {exitFailed, 0, "finished, but not every file that was asked for could be made"};
        }
        const bool doubtful = outcome.warnings > 0 || outcome.messages > 0;
        return {options.strict && doubtful ? exitDoubtful : exitDone, 0, "finished"};
    }
    if (kind != steadyState && kind != transient) {
        Complain(FormatText("analysis type %d is neither 1 (steady state) nor 2 (transient)", kind));
    } else if (stopSignal != 0 && outcome.messages == messagesOfStart) {
        return {exitSignal, stopSignal, FormatText("stopped by signal %d", stopSignal.load())};
    }
    return {exitFailed, 0, "failed"};
}

// Runs the open document.
int RunDocument(const Options& options, const std::string& path, Clock::time_point begun) {
    const std::int32_t kind = model.analysisType;
    NoteDocument(path);
    const bool started = Start() == 1;
    PrintWarnings();
    if (!started) {
        NoteFailedStart(exitFailed);
        return exitFailed;
    }
    const int messagesOfStart = OutcomeOfRun().messages;
    runExists = true;
    NoteBegin();
    WaitForEnd();
    PrintWarnings();
    if (OutcomeOfRun().result == 1) ShowSummary(begun);
    ReportExtras();
    const Ending ending = EndingOf(options, kind, messagesOfStart);
    return NoteEnd(ending.reason, ending.status + ending.signal);
}

int Run(const Options& options) {
    const Clock::time_point begun = Clock::now();
    const std::string path = AbsolutePath(options.file);
    if (path.empty() || !NamesADataFile(path)) {
        PrintWarnings();
        return exitFailed;
    }
    if (!OpenDataFile(path)) {
        PrintWarnings();
        NoteDocument(path);
        NoteFailedStart(exitFailed);
        return exitFailed;
    }
    int refused = exitDone;
    if (options.resume) {
        const bool goesOn = PrepareResume(options, refused);
        PrintWarnings();
        if (!goesOn) return refused;
    } else {
        refused = PrepareStart(options);
    }
    return refused != exitDone ? refused : RunDocument(options, path, begun);
}

WantedExtras ExtrasOf(const Options& options, int argc, char** argv) {
    const auto wants = [&](const char* format) { return std::ranges::count(options.exports, format) > 0; };
    return {wants("vtu"), wants("csv"), options.balance, {argv, argv + argc}};
}

int RunProgram(int argc, char** argv) {
    CLI::App app("Runs one analysis of heat in freezing and thawing ground.", "kaldra-run");
    Options options;
    app.add_option("FILE.kdr", options.file, "problem data file")->required();
    CLI::Option* const startStep =
        app.add_option("--start-step", options.startStep, "begin at step N of a transient problem")->option_text("N");
    CLI::Option* const initial =
        app.add_option("--initial", options.initialFile, "begin from the temperatures of a result file")
            ->option_text("FILE");
    CLI::Option* const resume =
        app.add_flag("--resume", options.resume, "go on behind the last results that an interrupted run left whole")
            ->option_text(" ");
    CLI::Option* const exports = app.add_option("--export", options.exports,
                                                "also make files for other programs as the steps are saved: vtu, csv")
                                     ->option_text("FORMAT[,FORMAT]")
                                     ->delimiter(',')
                                     ->check(CLI::IsMember({"vtu", "csv"}));
    CLI::Option* const balance =
        app.add_flag("--balance", options.balance, "also write the heat balance of every step")->option_text(" ");
    app.add_flag("--check", options.check, "list what is wrong or doubtful in the file, and run nothing")
        ->option_text(" ")
        ->excludes(startStep, initial, resume, exports, balance);
    app.add_option("--solver", options.solver, "how to solve the systems (default: the better one)")
        ->option_text("skyline|sparse")
        ->transform(CLI::CheckedTransformer(
            std::map<std::string, Solver>{{"skyline", Solver::Skyline}, {"sparse", Solver::Sparse}}));
    app.add_option("--threads", options.threads, "threads to compute with (default: one per processor)")
        ->option_text("N")
        ->check(CLI::Range(1, 64));
    app.add_flag("-q,--quiet", options.quiet, "no status lines");
    app.add_flag("--strict", options.strict, "exit 4 when a message or a warning was shown");
    app.set_version_flag("--version", "kaldra-run " KALDRA_VERSION);
    app.footer(
        "Status lines go to stdout, messages to stderr; the results are written beside the data file.\n"
        "SIGINT and SIGTERM stop the run, SIGUSR1 ends the iteration of the step under way.\n"
        "Exit status: 0 finished, 1 failed, 2 wrong usage, 3 with --check: cannot start, 4 doubtful with --strict, 128 "
        "+ n stopped by signal n.");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) return app.exit(error);
        Complain(error.what() + std::string("; see --help"));
        return exitUsage;
    }
    if (startStep->count() > 0 && options.startStep == 0) {
        Complain("the start step has to be 1 or more");
        return exitUsage;
    }
    if (options.file.empty() || (initial->count() > 0 && options.initialFile.empty())) {
        Complain("a file name is empty; see --help");
        return exitUsage;
    }
    ConnectConsole(options.quiet);
    ConnectExtras(ExtrasOf(options, argc, argv));
    CatchSignals();
    SetThreadCount(options.threads);
    WishSolver(options.solver);
    InitModel(0);
    InitModel(1);
    return options.check ? Check(options) : Run(options);
}

}  // namespace

// What else the options may throw is a mistake of the program.
int main(int argc, char** argv) {  // NOLINT(bugprone-exception-escape)
    try {
        return RunProgram(argc, argv);
    } catch (const std::bad_alloc&) {
        std::fputs("error 1138: Insufficient available memory.\n", stderr);
        return exitFailed;
    }
}
