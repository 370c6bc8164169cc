// The fixture of all tests that touch the process-wide tables, the front end or files.
//
// Every test starts from a fresh process state and an empty folder of its own, and fails if it leaves a message unread
// or a thread alive.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "model/problem_model.h"
#include "run/front_end.h"
#include "support/problem.h"

namespace kaldra {

using testing::ElementsAre;

using Contents = std::map<std::string, std::string>;  // of files, by name

// Matches a sequence of numbers within a tolerance.
inline auto Near(float tolerance, std::vector<float> expected) {
    return testing::Pointwise(testing::FloatNear(tolerance), expected);
}

// What the front end was told, in order. Both threads write here.
struct Recorder {
    std::mutex lock;
    std::condition_variable finished;
    Rows status;
    std::vector<MessageBox> boxes;
    int posts = 0;   // of RunFinished
    int result = 0;  // of the last one
    bool haltEnabled = false;
    std::function<void(std::string_view)> onStatus = [](std::string_view) {};  // behind each line, on its thread
    std::function<void()> onGraphData = [] {};
};

// True while no thread holds the mutex of the graph memory. Tried on a thread of its own, as a holder may always take
// it again.
bool GraphMemoryIsFree();

// A run that was waited for.
struct Outcome {
    bool started = false;
    int result = 0;
    ProblemModel model;  // as the analysis loop left it
};

class KaldraTest : public testing::Test {
protected:
    KaldraTest();
    ~KaldraTest() override;

    [[nodiscard]] std::string Path(std::string_view name) const { return folder + '/' + std::string(name); }
    std::string WriteFile(std::string_view name, std::string_view bytes) const;  // gives its path
    [[nodiscard]] std::string ReadFile(std::string_view name) const;
    [[nodiscard]] bool HasFile(std::string_view name) const;
    [[nodiscard]] Contents FilesBeside() const;  // the data file case.kdr and the marker of its run

    // The boxes, or their numbers, that were shown since the last call. A box that is not taken fails the test.
    std::vector<MessageBox> TakeBoxes();
    std::vector<int> TakeMessages();
    std::string TakeText(int number);  // of the only box, which has this number

    // Reads the problem as a run does and makes every table that the element code needs. False after a message.
    bool Prepare(const Problem& problem);
    // Opens the problem as case.kdr, starts it and waits for its end.
    Outcome Run(const Problem& problem);
    Outcome RunOpened();  // starts the open document and waits for its end
    void WaitForPost();   // of the calculation thread
    int WaitForEnd();     // and hands the post over; gives the run's result
    // Presses a button once, behind the first status line that begins so.
    void PressBehind(const std::string& line, void (*press)());

    std::string folder;
    Recorder& recorder;
};

}  // namespace kaldra
