// The threads of one computation: tasks handed out to all processors, and awaited.
//
// Every result is the same for any number of threads: a task may write only what no other task of its call touches, and
// where tasks build on each other they wait for lower numbers alone. Tasks start in the order of their numbers, so that
// such a wait always ends, with one thread too. One call at a time; a task makes no call of its own.
#pragma once

#include <cstddef>

namespace kaldra {

// Threads in use, the caller's included; at first one per processor that the process may run on.
[[nodiscard]] int ThreadCount();

// Sets the number of threads in use; below 1 means one per processor. Not while tasks run.
void SetThreadCount(int count);

// Which of the threads in use runs the task that asks: 0 is the caller's, the last is ThreadCount() - 1.
[[nodiscard]] std::size_t ThreadNumber();

// Runs task(context, 0) .. task(context, count - 1) and returns when all have ended.
void RunTaskList(std::size_t count, void (*task)(const void* context, std::size_t number), const void* context);

template <class Task>
void RunTasks(std::size_t count, const Task& task) {
    RunTaskList(
        count, [](const void* context, std::size_t number) { (*static_cast<const Task*>(context))(number); }, &task);
}

// Cuts `total` items into tasks of `grain` and runs work(first, end) for each.
template <class Work>
void RunChunks(std::size_t total, std::size_t grain, const Work& work) {
    RunTasks((total + grain - 1) / grain, [&](std::size_t chunk) {
        const std::size_t first = chunk * grain;
        work(first, first + grain < total ? first + grain : total);
    });
}

// Waits a moment for another thread that is about to be done: busily at first, then leaving it the processor.
class Patience {
public:
    void Wait();

private:
    int rounds_ = 0;
};

}  // namespace kaldra
