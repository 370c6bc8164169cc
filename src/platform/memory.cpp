#include "platform/memory.h"

#include <unistd.h>

#include <cstdio>

#include "platform/faults.h"
#include "run/messages.h"

namespace kaldra {

// Smaller requests are not worth a look at the system's figures.
static constexpr std::uint64_t alwaysTried = 64U << 20U;

// Bytes that the system can still hand out without swapping; all there is where it does not tell.
static std::uint64_t AvailableMemory() {
    std::uint64_t kibibytes = 0;
    if (std::FILE* figures = std::fopen("/proc/meminfo", "re")) {
        char line[128];
        unsigned long long value = 0;
        while (std::fgets(line, sizeof line, figures) != nullptr) {
            if (std::sscanf(line, "MemAvailable: %llu", &value) == 1) kibibytes = value;
        }
        std::fclose(figures);
    }
    if (kibibytes != 0) return kibibytes * 1024;
    return static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

bool MemoryAllows(std::uint64_t bytes) {
    if (FaultStrikes(FaultSeam::Allocation)) return false;
    return bytes < alwaysTried || bytes < AvailableMemory();
}

int ShowOutOfMemory() { return ShowError(1138); }

}  // namespace kaldra
