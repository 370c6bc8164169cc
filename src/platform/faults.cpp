#include "platform/faults.h"

namespace kaldra {

static FaultCounter& CounterOf(FaultSeam seam) {
    static FaultCounter fileCalls;
    static FaultCounter allocations;
    static FaultCounter news;
    if (seam == FaultSeam::OperatorNew) return news;
    return seam == FaultSeam::FileCall ? fileCalls : allocations;
}

void ArmFault(FaultSeam seam, std::int64_t firstFailing, bool onlyOnce) {
    FaultCounter& counter = CounterOf(seam);
    counter.calls = 0;
    counter.firstFailed.clear();
    counter.onlyOnce = onlyOnce;
    counter.firstFailing = firstFailing;
}

std::int64_t FaultCalls(FaultSeam seam) { return CounterOf(seam).calls; }

const std::string& StruckCall(FaultSeam seam) { return CounterOf(seam).firstFailed; }

bool FaultStrikes(FaultSeam seam, std::string_view name, std::string_view path) {
    FaultCounter& counter = CounterOf(seam);
    const std::int64_t call = ++counter.calls;
    const std::int64_t first = counter.firstFailing;
    if (first == 0 || call < first) return false;
    if (call == first) counter.firstFailed.append(name).append(" ").append(path);
    return call == first || !counter.onlyOnce;
}

}  // namespace kaldra
