#include "platform/parallel.h"

#include <sched.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace kaldra {

static int ProcessorCount() {
    cpu_set_t set;
    if (sched_getaffinity(0, sizeof set, &set) == 0) return std::max(CPU_COUNT(&set), 1);
    return std::max(static_cast<int>(std::thread::hardware_concurrency()), 1);
}

void Patience::Wait() {
    constexpr int busyRounds = 2000;
    if (++rounds_ > busyRounds) return std::this_thread::yield();
#if defined(__x86_64__)
    __builtin_ia32_pause();
#endif
}

namespace {

thread_local std::size_t threadNumber = 0;

// One call of RunTaskList as the threads share it.
struct TaskList {
    void (*task)(const void*, std::size_t) = nullptr;
    const void* context = nullptr;
    std::size_t count = 0;
    std::atomic<std::size_t> next{0};

    void Work() {
        for (std::size_t number = next++; number < count; number = next++) task(context, number);
    }
};

// The helping threads. They sleep between calls, and after a call stay awake for a moment, as the next one is near.
//
// A helper that comes too late for a call is not waited for, since on a busy machine it may be long without a processor:
// it enters through a gate, which the caller closes when no task is left.
class Helpers {
public:
    ~Helpers() { SendHome(); }

    void Run(TaskList& list, int helpers) {
        Hire(helpers);
        list_ = &list;
        gate_.store(isOpen);
        ++call_;
        call_.notify_all();
        list.Work();
        gate_.fetch_and(~isOpen);
        for (Patience patience; gate_.load(std::memory_order_acquire) != 0;) patience.Wait();
    }

private:
    static constexpr std::uint32_t isOpen = 1;
    static constexpr std::uint32_t oneInside = 2;

    // A thread that cannot be had is done without.
    void Hire(int helpers) {
        if (static_cast<int>(threads_.size()) > helpers) SendHome();
        try {
            while (static_cast<int>(threads_.size()) < helpers) {
                threads_.emplace_back([this, number = threads_.size() + 1, seen = call_.load()] {
                    threadNumber = number;
                    Help(seen);
                });
            }
        } catch (const std::system_error&) {
        }
    }

    void SendHome() {
        leaving_ = true;
        ++call_;
        call_.notify_all();
        for (std::thread& thread : threads_) thread.join();
        threads_.clear();
        leaving_ = false;
    }

    void Help(std::uint32_t seen) {
        for (;;) {
            constexpr int awakeRounds = 5000;
            for (int round = 0; round < awakeRounds && call_.load(std::memory_order_acquire) == seen; ++round) {
#if defined(__x86_64__)
                __builtin_ia32_pause();
#endif
            }
            call_.wait(seen);
            seen = call_.load();
            if (leaving_) return;
            if (!Enter()) continue;
            list_.load()->Work();
            gate_.fetch_sub(oneInside, std::memory_order_release);
        }
    }

    bool Enter() {
        std::uint32_t gate = gate_.load();
        while ((gate & isOpen) != 0) {
            if (gate_.compare_exchange_weak(gate, gate + oneInside)) return true;
        }
        return false;
    }

    std::vector<std::thread> threads_;
    std::atomic<TaskList*> list_{nullptr};
    std::atomic<std::uint32_t> call_{0};
    std::atomic<std::uint32_t> gate_{0};  // open or not, and how many are inside
    std::atomic<bool> leaving_{false};
};

// One caller at a time.
struct Crew {
    std::mutex lock;
    Helpers helpers;
    std::atomic<int> threads{ProcessorCount()};
};

Crew crew;

}  // namespace

int ThreadCount() { return crew.threads; }

void SetThreadCount(int count) { crew.threads = count < 1 ? ProcessorCount() : count; }

std::size_t ThreadNumber() { return threadNumber; }

void RunTaskList(std::size_t count, void (*task)(const void*, std::size_t), const void* context) {
    TaskList list;
    list.task = task;
    list.context = context;
    list.count = count;
    const int helpers = std::min(ThreadCount() - 1, static_cast<int>(std::min<std::size_t>(count, 1U << 20U)) - 1);
    if (helpers <= 0) return list.Work();
    const std::scoped_lock lock(crew.lock);
    crew.helpers.Run(list, ThreadCount() - 1);
}

}  // namespace kaldra
