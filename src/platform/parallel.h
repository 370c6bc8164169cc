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
enum class TaskOrder { Rising, ByThread };

// Runs task(context, 0) .. task(context, count - 1) and returns when all have ended. `own`, where there is one, the
// caller runs once before it takes part; it gets the same context.
void RunTaskList(std::size_t count, TaskOrder order, Task task, const void* context,
                 void (*own)(const void* context) = nullptr);

// The same for anything that can be called with a number.
template <class Work>
void RunTasks(std::size_t count, const Work& work, TaskOrder order = TaskOrder::Rising) {
    RunTaskList(
        count, order, [](const void* context, std::size_t number) { (*static_cast<const Work*>(context))(number); },
        &work);
}

// A number of items, cut into chunks of `grain`, and what is done for each.
template <class Work>
struct Chunks {
    std::size_t total, grain;
    const Work& work;

    [[nodiscard]] std::size_t Count() const { return (total + grain - 1) / grain; }
    static void Run(const void* context, std::size_t number) {
        const Chunks& chunks = *static_cast<const Chunks*>(context);
        const std::size_t first = number * chunks.grain;
        const std::size_t end = first + chunks.grain;
        chunks.work(first, end < chunks.total ? end : chunks.total);
    }
};

// Runs work(first, end) for pieces of `grain` of `total` items; none may wait for another.
template <class Work>
void RunChunks(std::size_t total, std::size_t grain, const Work& work) {
    const Chunks<Work> chunks{total, grain, work};
    RunTaskList(chunks.Count(), TaskOrder::ByThread, Chunks<Work>::Run, &chunks);
}

// The same, and meanwhile own() by the caller.
template <class Own, class Work>
void RunChunksBeside(const Own& own, std::size_t total, std::size_t grain, const Work& work) {
    struct Both : Chunks<Work> {
        const Own& own;
    };
    const Both both{{total, grain, work}, own};
    RunTaskList(
        both.Count(), TaskOrder::ByThread, Chunks<Work>::Run, static_cast<const Chunks<Work>*>(&both),
        [](const void* context) { static_cast<const Both*>(static_cast<const Chunks<Work>*>(context))->own(); });
}

// Waits a moment for another thread that is about to be done: busily at first, then leaving it the processor.
class Patience {
public:
    void Wait();

private:
    int rounds_ = 0;
};

}  // namespace kaldra
