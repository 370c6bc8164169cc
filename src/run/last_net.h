// The last net under a command and under the calculation thread: memory that is short for a text or a name.
//
// Tables grow through platform/memory, which gives message 1138 where they grow. Texts are put together everywhere; the
// failure of one unwinds to here, where it becomes the same message.
#pragma once

#include <new>

namespace kaldra {

// Drops the lines of the streams that were left open, and shows message 1138. Gives 0.
int AbandonForMemory();

// Gives what `work` gives, or 0 after message 1138.
template <class Work>
[[nodiscard]] int CatchLackOfMemory(Work work) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return AbandonForMemory();
    }
}

}  // namespace kaldra
