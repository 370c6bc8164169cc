#include "platform/parallel.h"

#include <sched.h>

#include <algorithm>
#include <array>
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

// One call as the threads share it: its tasks in one share or several. A thread begins with its own share, so that it
// finds in its cache what it wrote in the last call, and then helps with the others.
class TaskList {
public:
    TaskList(std::size_t count, std::size_t shares, Task task, const void* context)
        : shareCount_(std::min(shares, shares_.size())), task_(task), context_(context) {
        for (std::size_t i = 0; i < shareCount_; ++i) {
            shares_[i].next = count * i / shareCount_;
            shares_[i].end = count * (i + 1) / shareCount_;
        }
    }

    void Work() {
        for (std::size_t i = 0; i < shareCount_; ++i) {
            Share& share = shares_[(threadNumber + i) % shareCount_];
            for (std::size_t number = share.next++; number < share.end; number = share.next++) task_(context_, number);
        }
    }

private:
    struct alignas(64) Share {
        std::atomic<std::size_t> next{0};
        std::size_t end = 0;
    };
    std::array<Share, 16> shares_;
    std::size_t shareCount_;
    Task task_;
    const void* context_;
};

// The helping threads. They sleep between calls, and after a call stay awake for a moment, as the next one is near.
//
// A helper that comes too late for a call is not waited for, since on a busy machine it may be long without a
// processor: it enters through a gate, which the caller closes when no task is left.
class Helpers {
public:
    ~Helpers() { SendHome(); }

    // own() is the caller's; it may throw, and the helpers that are inside are awaited all the same.
    template <class Own>
    void Run(TaskList& list, int helpers, const Own& own) {
        Hire(helpers);
        list_ = &list;
        gate_.store(isOpen);
        ++call_;
        call_.notify_all();
        const Closing closing{*this};
        own();
        list.Work();
    }

private:
    struct Closing {
        Helpers& helpers;
        ~Closing() {
            helpers.gate_.fetch_and(~isOpen);
            for (Patience patience; helpers.gate_.load(std::memory_order_acquire) != 0;) patience.Wait();
        }
    };

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
            constexpr int awakeRounds = 20000;  // some tenths of a millisecond
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

void RunTaskList(std::size_t count, TaskOrder order, Task task, const void* context, void (*own)(const void*)) {
    const auto threads = static_cast<std::size_t>(ThreadCount());
    TaskList list(count, order == TaskOrder::Rising ? 1 : threads, task, context);
    const auto runOwn = [&] {
        if (own != nullptr) own(context);
    };
    if (threads < 2 || count + (own != nullptr ? 1 : 0) < 2) {
        runOwn();
        return list.Work();
    }
    const std::scoped_lock lock(crew.lock);
    crew.helpers.Run(list, static_cast<int>(threads) - 1, runOwn);
}

}  // namespace kaldra
