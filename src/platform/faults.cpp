#include "platform/faults.h"

namespace kaldra {

static FaultCounter& CounterOf(FaultSeam seam) {
    static FaultCounter fileCalls;
    static FaultCounter allocations;
    return seam == FaultSeam::FileCall ? fileCalls : allocations;
}

void ArmFault(FaultSeam seam, std::int64_t firstFailing, bool onlyOnce) {
    FaultCounter& counter = CounterOf(seam);
    counter.calls = 0;
    counter.onlyOnce = onlyOnce;
    counter.firstFailing = firstFailing;
}

std::int64_t FaultCalls(FaultSeam seam) { return CounterOf(seam).calls; }

bool FaultStrikes(FaultSeam seam) {
    FaultCounter& counter = CounterOf(seam);
    const std::int64_t call = ++counter.calls;
    const std::int64_t first = counter.firstFailing;
    if (first == 0 || call < first) return false;
    return call == first || !counter.onlyOnce;
}

}  // namespace kaldra
