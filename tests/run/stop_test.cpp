// Stops at every notification and at random moments: what a stopped run leaves is the beginning of a whole one.

#include <atomic>
#include <chrono>
#include <filesystem>
#include <map>
#include <random>
#include <thread>

#include "convergence/graph_memory.h"
#include "frontend/commands.h"
#include "platform/files.h"
#include "platform/number_text.h"
#include "platform/parallel.h"
#include "run/analysis.h"
#include "run/run_state.h"
#include "solver/solution.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

using Contents = std::map<std::string, std::string>;

// Presses Stop within the notification number `at`, on the thread that makes it.
struct Notifications {
    static void Note() {
        if (++seen == at) Stop();
    }
    inline static std::atomic<int> seen{0};
    inline static std::atomic<int> at{0};
};

class Stops : public KaldraTest {
protected:
    Stops() { SetThreadCount(2); }
    ~Stops() override {
        SetThreadCount(0);
        WishSolver(Solver::Automatic);
    }
    // Frost from above into a square of n by n wet elements.
    static Problem FreezingSquare(int n, int steps) {
        Problem square;
        for (int i = 0; i <= n; ++i) {
            for (int j = 0; j <= n; ++j) square.Node(j, i, i == n ? "-6 1 0 0 1 2" : "0 0 0 0 1 2");
        }
        for (int low = 1; low + n + 2 <= (n + 1) * (n + 1); ++low) {
            if (low % (n + 1) == 0) continue;
            square.Element(FormatText("%d %d %d %d 0 0 0 0", low + n + 2, low + n + 1, low, low + 1), 4);
        }
        square.materials = {"1 1 1 2 3 0.4"};
        square.S = {FunctionRows(1, {"-10 0", "-0.5 0.1", "0 1", "10 1"}, "0 4")};
        square.flux = {"1 1\n1 -1 0.5 99 0.5"};
        square.analysis = steps == 0 ? "1 1 0 1 0" : "2 1 300 1 0";
        for (int i = 1; i <= steps; ++i) square.times.push_back(FormatText("%d 0.5 %.1f %d", i, 0.5 * i, i % 2));
        square.converge = "30 0.1 4";
        return square;
    }
    [[nodiscard]] Contents ResultFiles() const {
        Contents files;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            const std::string name = entry.path().filename().string();
            if (name != "case.kdr") files[name] = ReadFile(name);
        }
        return files;
    }
    // Starts with an empty folder. Notifications are counted from here on.
    bool Begin(const Problem& problem) {
        for (const auto& [name, bytes] : ResultFiles()) std::filesystem::remove(Path(name));
        recorder.posts = 0;
        recorder.status.clear();
        if (!OpenDataFile(WriteFile("case.kdr", problem.Text()))) return false;
        graphMemory.GraphWindow = 1;
        graphMemory.GraphLastIteration = 1000;
        Notifications::seen = 0;
        return Start() == 1;
    }
    int End() {
        if (!WaitForPost()) std::abort();
        HandleCalcThreadMsg(runFinishedMessage, recorder.result);
        return recorder.result;
    }
    void ExpectBeginningOf(const Contents& whole, int result) {
        EXPECT_FALSE(CalcThreadLives() || runState.running != 0);
        EXPECT_EQ(TakeMessages(), std::vector<int>{});
        FileLock lock;
        EXPECT_EQ(lock.Take(Path("case.kdr")), FileLock::Result::Held);
        const Contents files = ResultFiles();
        EXPECT_TRUE(result == 0 || files == whole);
        int cut = 0;
        for (const auto& [name, bytes] : files) {
            ASSERT_EQ(whole.count(name), 1U) << name;
            const std::string& all = whole.at(name);
            EXPECT_EQ(all.compare(0, bytes.size(), bytes), 0) << name;
            if (bytes.size() < all.size() && name != "case.cnp") ++cut;
        }
        EXPECT_LE(cut, 1) << "only the file under way may be short";
    }
    void NoteNotifications() {
        recorder.onStatus = [](std::string_view) { Notifications::Note(); };
        recorder.onGraphData = Notifications::Note;
        frontEnd.IterationDone = frontEnd.StartRunAnimation = frontEnd.StopRunAnimation = Notifications::Note;
        frontEnd.UpdateMenuState = frontEnd.UpdateButtonState = frontEnd.ResultsChanged = Notifications::Note;
        frontEnd.RepaintMainWindow = frontEnd.Beep = Notifications::Note;
        frontEnd.SetHaltEnabled = frontEnd.ShowRunIcon = [](bool) { Notifications::Note(); };
    }
};

TEST_F(Stops, AtEveryNotification) {
    NoteNotifications();
    for (const Solver solver : {Solver::Skyline, Solver::Sparse}) {
        WishSolver(solver);
        for (const int steps : {0, 3}) {
            const Problem problem = FreezingSquare(6, steps);
            Notifications::at = 0;
            ASSERT_TRUE(Begin(problem));
            ASSERT_EQ(End(), 1);
            const int last = Notifications::seen;
            const Contents whole = ResultFiles();
            int stopped = 0;
            for (int n = 1; n <= last; ++n) {
                SCOPED_TRACE(n);
                Notifications::at = n;
                ASSERT_TRUE(Begin(problem));
                const int result = End();
                stopped += result == 0;
                ExpectBeginningOf(whole, result);
            }
            EXPECT_GT(stopped, last / 2);
            EXPECT_LT(stopped, last);  // before the run and behind it there is nothing to stop
        }
    }
}

TEST_F(Stops, AtRandomMoments) {
    std::mt19937 random(20);  // NOLINT: the same runs each time
    const auto upTo = [&random](int most) { return static_cast<int>(random() % static_cast<unsigned>(most + 1)); };
    for (int round = 0; round < 12; ++round) {
        WishSolver(upTo(1) == 0 ? Solver::Skyline : Solver::Sparse);
        const Problem problem = FreezingSquare(8 + upTo(24), upTo(3));
        ASSERT_TRUE(Begin(problem));
        const auto begun = std::chrono::steady_clock::now();
        ASSERT_EQ(End(), 1);
        const std::chrono::duration<double, std::micro> length = std::chrono::steady_clock::now() - begun;
        const Contents whole = ResultFiles();
        for (int i = 0; i < 6; ++i) {
            const double moment = length.count() * upTo(110) / 100;
            SCOPED_TRACE(testing::Message() << "round " << round << ", after " << moment << " microseconds");
            ASSERT_TRUE(Begin(problem));
            std::this_thread::sleep_for(std::chrono::duration<double, std::micro>(moment));
            Stop();
            ExpectBeginningOf(whole, End());
        }
    }
}

}  // namespace
}  // namespace kaldra
