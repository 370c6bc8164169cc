// The threads of one computation: tasks handed out to all processors, and awaited.
//
// Every result is the same for any number of threads: a task may write only what no other task of its call touches, and
// where tasks build on each other they wait for lower numbers alone. Such tasks start in the order of their numbers, so
// that a wait always ends, with one thread too. One call at a time; a task makes no call of its own.
#pragma once

#include <cstddef>

namespace kaldra {

// Threads in use, the caller's included; at first one per processor that the process may run on.
[[nodiscard]] int ThreadCount();

// Sets the number of threads in use; below 1 means one per processor. Not while tasks run.
void SetThreadCount(int count);

// Which of the threads in use runs the task that asks: 0 is the caller's, the last is ThreadCount() - 1.
[[nodiscard]] std::size_t ThreadNumber();

using Task = void (*)(const void* context, std::size_t number);

// In which order tasks start: by their numbers, or each thread with those that it also ran in the last such call.
enum class Order { Rising, ByThread };

// Runs task(context, 0) .. task(context, count - 1) and returns when all have ended.
void RunTaskList(std::size_t count, Order order, Task task, const void* context);

// The same for anything that can be called with a number.
template <class Work>
void RunTasks(std::size_t count, const Work& work, Order order = Order::Rising) {
    RunTaskList(
        count, order, [](const void* context, std::size_t number) { (*static_cast<const Work*>(context))(number); },
        &work);
}

// Cuts `total` items into tasks of `grain` and runs work(first, end) for each; none may wait for another.
template <class Work>
void RunChunks(std::size_t total, std::size_t grain, const Work& work) {
    const auto chunk = [&](std::size_t number) {
        const std::size_t first = number * grain;
        work(first, first + grain < total ? first + grain : total);
    };
    RunTasks((total + grain - 1) / grain, chunk, Order::ByThread);
}

// Waits a moment for another thread that is about to be done: busily at first, then leaving it the processor.
class Patience {
public:
    void Wait();

private:
    int rounds_ = 0;
};

}  // namespace kaldra
