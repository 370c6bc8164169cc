// Rehearsed failures: lets a test make any one file call or table allocation of a run fail.
//
// Each seam asks FaultStrikes once per call. Outside tests nothing is armed and the answer is always false.
// The counters are atomic, as several threads pass here.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

namespace kaldra {

// Of platform/files, of platform/memory, and operator new, where a test has replaced it to ask here.
enum class FaultSeam { FileCall, Allocation, OperatorNew };

// Calls of one seam since the last ArmFault, counted from 1.
struct FaultCounter {
    std::atomic<std::int64_t> calls{0};
    std::atomic<std::int64_t> firstFailing{0};  // 0: nothing fails
    std::atomic<bool> onlyOnce{true};           // false: every call from firstFailing on fails
    std::string firstFailed;                    // what that call was
};

// Makes call number `firstFailing` of the seam fail, or that call and all after it; 0 disarms. Restarts the count.
void ArmFault(FaultSeam seam, std::int64_t firstFailing, bool onlyOnce = true);

// How often the seam was passed since the last ArmFault.
[[nodiscard]] std::int64_t FaultCalls(FaultSeam seam);

// The first call that failed since the last ArmFault, as "NAME PATH"; empty if none has. Not while a run is under way.
[[nodiscard]] const std::string& StruckCall(FaultSeam seam);

// Counts one call of the seam, told by its name and the file's path, and tells whether it has to fail.
[[nodiscard]] bool FaultStrikes(FaultSeam seam, std::string_view name = {}, std::string_view path = {});

}  // namespace kaldra
