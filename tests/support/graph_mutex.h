// Whether hmtxGraphMem is free. It is re-entrant, so only another thread can tell.
#pragma once

#include <future>

#include "convergence/graph_memory.h"

namespace kaldra {

inline bool GraphMutexIsFree() {
    const auto tryIt = [] {
        const bool free = hmtxGraphMem.try_lock();
        if (free) hmtxGraphMem.unlock();
        return free;
    };
    return std::async(std::launch::async, tryIt).get();
}

}  // namespace kaldra
