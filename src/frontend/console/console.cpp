#include "frontend/console/console.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <new>
#include <string_view>
#include <vector>

#include "convergence/convergence_monitor.h"
#include "frontend/commands.h"
#include "frontend/console/progress.h"
#include "model/problem_model.h"
#include "platform/memory.h"
#include "platform/number_text.h"
#include "run/front_end.h"
#include "run/run_state.h"
#include "run/warnings.h"

namespace kaldra {

namespace {

using Clock = std::chrono::steady_clock;
constexpr int redrawMilliseconds = 500;

// What both threads touch. The pipe stands by itself, as signal handlers write to it; all else is under `lock`.
struct Console {
    std::mutex lock;
    bool quiet = false;
    bool showsProgress = false;  // stderr is a terminal
    bool lineDrawn = false;
    bool haltEnabled = false;
    Clock::time_point start = Clock::now();
    Progress progress;
    ConsoleOutcome outcome;
    std::vector<std::string> messageLines;
    std::vector<std::string> warningLines;  // front end's thread alone
    std::array<int, 2> events{-1, -1};      // a pipe: read end, write end
};

Console console;

// ---------------------------------------------------------------------------------------------------------------------
// Lines. All with the lock held.

void Print(std::FILE* stream, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
}

std::size_t TerminalWidth() {
    winsize size{};
    const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
    return known ? static_cast<std::size_t>(size.ws_col) - 1 : 79;
}

void EraseProgress() {
    if (!console.lineDrawn) return;
    Print(stderr, "\r\x1b[K");
    console.lineDrawn = false;
}

// Does without the line where memory is short.
void DrawProgress() try {
    if (!console.showsProgress || console.progress.iteration == 0) return;
    console.progress.seconds = std::chrono::duration<double>(Clock::now() - console.start).count();
    Print(stderr, "\r\x1b[K" + ProgressLine(console.progress, TerminalWidth()));
    console.lineDrawn = true;
} catch (const std::bad_alloc&) {
}

void PrintStatus(std::string_view text) {
    if (console.quiet) return;
    EraseProgress();
    std::fwrite(text.data(), 1, text.size(), stdout);  // no text of its own: Stop has to get through without memory
    Print(stdout, "\n");
    if (std::ferror(stdout) != 0) AddWarning("some status lines are lost: standard output could not be written");
}

// ---------------------------------------------------------------------------------------------------------------------
// Notifications

void AppendStatus(std::string_view text) {
    const std::scoped_lock lock(console.lock);
    PrintStatus(text);
    DrawProgress();
}

// Comes on the calculation thread, which may read the run's figures.
void NoteIteration() {
    const std::scoped_lock lock(console.lock);
    Progress& p = console.progress;
    p.steady = model.analysisType == steadyState;
    p.step = runState.currentStep;
    p.firstStep = runState.startStep;
    p.lastStep = model.stepCount;
    p.iteration = runState.iteration;
    p.maxIterations = model.maxIterations;
    p.changeBefore = p.change;
    p.change = static_cast<double>(convergence.change);
    p.tolerance = static_cast<double>(model.tolerance);
    DrawProgress();
}

// The box's text on one line, put together without memory, which may be what the message is about.
void ShowMessage(const MessageBox& box) {
    std::array<char, 2048> line{};
    auto length = static_cast<std::size_t>(std::snprintf(line.data(), line.size(), "error %d: ", box.number));
    for (const char c : box.text) {
        if (length + 3 > line.size()) break;
        if (c == '\n') line[length++] = '\\';
        line[length++] = c == '\n' ? 'n' : c;
    }
    line[length++] = '\n';
    const std::scoped_lock lock(console.lock);
    ++console.outcome.messages;
    const std::string_view text(line.data(), length - 1);
    (void)TryMemory(text.size(), [&] { console.messageLines.emplace_back(text); });  // for the record, where it fits
    EraseProgress();
    Print(stderr, {line.data(), length});
    DrawProgress();
}

void RunFinished(int result) {
    {
        const std::scoped_lock lock(console.lock);
        console.outcome.result = result;
    }
    PostEvent(ConsoleEvent::RunFinished);
}

void SetHaltEnabled(bool enabled) {
    const std::scoped_lock lock(console.lock);
    console.haltEnabled = enabled;
}

bool IsHaltEnabled() {
    const std::scoped_lock lock(console.lock);
    return console.haltEnabled;
}

void UpdateButtonState() { SetHaltEnabled(CommandsNow().haltIteration); }

}  // namespace

void ConnectConsole(bool quiet) {
    console.quiet = quiet;
    console.showsProgress = isatty(STDERR_FILENO) != 0;
    if (pipe2(console.events.data(), O_CLOEXEC) != 0) {
        std::perror("kaldra-run: pipe");
        std::exit(1);
    }
    frontEnd.AppendStatus = AppendStatus;
    frontEnd.AppendStatusPlain = AppendStatus;
    frontEnd.IterationDone = NoteIteration;
    frontEnd.StartRunAnimation = [] { PostEvent(ConsoleEvent::RunBegun); };  // follows "Solving..."
    frontEnd.RunFinished = RunFinished;
    frontEnd.SetHaltEnabled = SetHaltEnabled;
    frontEnd.IsHaltEnabled = IsHaltEnabled;
    frontEnd.UpdateButtonState = UpdateButtonState;
    frontEnd.ShowMessage = ShowMessage;
}

void PostEvent(ConsoleEvent event) {
    const int error = errno;
    const char letter = static_cast<char>(event);
    while (write(console.events[1], &letter, 1) < 0 && errno == EINTR) {
    }
    errno = error;
}

ConsoleEvent WaitForEvent() {
    for (;;) {
        pollfd waiting{console.events[0], POLLIN, 0};
        const int ready = poll(&waiting, 1, console.showsProgress ? redrawMilliseconds : -1);
        char letter = 0;
        if (ready > 0 && read(console.events[0], &letter, 1) == 1) return static_cast<ConsoleEvent>(letter);
        const std::scoped_lock lock(console.lock);
        DrawProgress();
    }
}

void ClearProgressLine() {
    const std::scoped_lock lock(console.lock);
    EraseProgress();
    console.progress.iteration = 0;
}

ConsoleOutcome OutcomeOfRun() {
    const std::scoped_lock lock(console.lock);
    return console.outcome;
}

void Report(const std::string& line) {
    const std::scoped_lock lock(console.lock);
    PrintStatus(line);
}

static void PrintOnStderr(const std::string& line) {
    const std::scoped_lock lock(console.lock);
    EraseProgress();
    Print(stderr, line + '\n');
    DrawProgress();
}

void PrintLine(const std::string& line) {
    const std::scoped_lock lock(console.lock);
    Print(stdout, line + '\n');
}

void PrintWarnings() {
    for (const std::string& text : TakeWarnings()) {
        PrintOnStderr("warning: " + text);
        console.warningLines.push_back(text);
        ++console.outcome.warnings;
    }
}

std::vector<std::string> MessagesShown() {
    const std::scoped_lock lock(console.lock);
    return console.messageLines;
}

std::vector<std::string> WarningsShown() { return console.warningLines; }

void Complain(const std::string& sentence) { PrintOnStderr("kaldra-run: " + sentence); }

}  // namespace kaldra
