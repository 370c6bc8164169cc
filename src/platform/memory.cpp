#include "platform/memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/faults.h"
#include "run/front_end.h"
#include "run/messages.h"
#include "run/warnings.h"

namespace kaldra {

// Smaller requests are not worth a look at the system's figures.
static constexpr std::uint64_t alwaysTried = 64U << 20U;

// A number that the system tells in a file, scanned line by line; 0 where there is none.
static std::uint64_t SystemFigure(const char* file, const char* format) {
    unsigned long long value = 0;
    if (std::FILE* figures = std::fopen(file, "re")) {
        char line[128];
        while (value == 0 && std::fgets(line, sizeof line, figures) != nullptr) {
            if (std::sscanf(line, format, &value) != 1) value = 0;
        }
        std::fclose(figures);
    }
    return value;
}

// Bytes that the system can still hand out without swapping, in a container also without passing its limit.
static std::uint64_t AvailableMemory() {
    std::uint64_t available = SystemFigure("/proc/meminfo", "MemAvailable: %llu") * 1024;
    if (available == 0) {
        available =
            static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    }
    const std::uint64_t limit = SystemFigure("/sys/fs/cgroup/memory.max", "%llu");
    const std::uint64_t used = SystemFigure("/sys/fs/cgroup/memory.current", "%llu");
    if (limit != 0) available = std::min(available, limit > used ? limit - used : 0);
    return available;
}

bool MemoryAllows(std::uint64_t bytes) {
    if (FaultStrikes(FaultSeam::Allocation)) return false;
    return bytes < alwaysTried || bytes < AvailableMemory();
}

void* TakeLargeMemory(std::size_t bytes) {
    constexpr std::size_t hugePage = 2U << 20U;
    constexpr std::size_t cacheLine = 64;
    constexpr std::size_t worthHugePages = 8 * hugePage;
    const std::size_t step = bytes >= worthHugePages ? hugePage : cacheLine;
    const std::size_t rounded = (bytes + step - 1) / step * step;
    if (rounded < bytes) throw std::bad_alloc();
    void* const memory = std::aligned_alloc(step, rounded);
    if (memory == nullptr) throw std::bad_alloc();
    if (step == hugePage) (void)madvise(memory, rounded, MADV_HUGEPAGE);  // where it cannot be, small pages serve
    return memory;
}

void GiveLargeMemory(void* memory) { std::free(memory); }

// Ready before memory is short.
static const MessageBox outOfMemory{1138, "Error", std::string(StringText(1138)), boxExclamation};

int ShowOutOfMemory() {
    NoteLackOfMemory();
    try {
        return ShowError(1138);
    } catch (const std::bad_alloc&) {
        frontEnd.ShowMessage(outOfMemory);
        return 0;
    }
}

}  // namespace kaldra
