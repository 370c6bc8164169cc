#include "platform/processor.h"

#include <algorithm>
#include <atomic>

namespace kaldra {

static ProcessorLevel BestLevel() {
#if defined(__x86_64__)
    const bool avx512 = __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512dq") != 0 &&
                        __builtin_cpu_supports("avx512vl") != 0 && __builtin_cpu_supports("avx512bw") != 0;
    const bool avx2 = __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0;
    if (avx2) return avx512 ? ProcessorLevel::Avx512 : ProcessorLevel::Avx2;
#endif
    return ProcessorLevel::Plain;
}

static std::atomic<ProcessorLevel> limit{ProcessorLevel::Avx512};

ProcessorLevel UsedProcessorLevel() {
    static const ProcessorLevel best = BestLevel();
    return std::min(best, limit.load());
}

void LimitProcessorLevel(ProcessorLevel most) { limit = most; }

}  // namespace kaldra
