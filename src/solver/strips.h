// The strips of one matrix on several threads: each begins before the one ahead of it has ended, and waits for it group
// by group. Calculation thread only.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "platform/parallel.h"
#include "run/run_state.h"
#include "solver/dense_kernels.h"

namespace kaldra {

// Waits until `*ready` is at least `wanted`.
void AwaitGroup(const std::uint32_t* ready, std::uint32_t wanted);

inline std::size_t StripsOf(const DenseSystem& system) {
    return (system.groupCount + groupsPerStrip - 1) / groupsPerStrip;
}

inline std::size_t GroupsInStrip(const DenseSystem& system, std::size_t group) {
    return std::min(groupsPerStrip, system.groupCount - group);
}

// Factorises a system by all threads. load(strip) fills in a strip before its turn; scratch() is what
// DenseKernels::factorStrip asks for, one for each thread. A Stop leaves the rest undone.
template <class Load, class Scratch>
void FactorStrips(DenseSystem system, const Load& load, const Scratch& scratch) {
    std::uint32_t ready = 0;
    system.ready = &ready;
    system.wait = AwaitGroup;
    const DenseKernels& kernels = ChosenDenseKernels();
    RunTasks(StripsOf(system), [&](std::size_t strip) {
        const std::size_t group = strip * groupsPerStrip;
        const std::size_t count = GroupsInStrip(system, group);
        if (IsRunning()) {
            load(strip);
            kernels.factorStrip(system, group, count, scratch());
        } else {  // only counted as ready, so that nobody waits for it
            AwaitGroup(&ready, static_cast<std::uint32_t>(group));
            __atomic_store_n(&ready, static_cast<std::uint32_t>(group + count), __ATOMIC_RELEASE);
        }
    });
}

// The same by the calling thread alone; system.ready is null.
template <class Load>
void FactorStripsHere(const DenseSystem& system, const Load& load, double* scratch) {
    const DenseKernels& kernels = ChosenDenseKernels();
    for (std::size_t strip = 0; strip < StripsOf(system) && IsRunning(); ++strip) {
        const std::size_t group = strip * groupsPerStrip;
        load(strip);
        kernels.factorStrip(system, group, GroupsInStrip(system, group), scratch);
    }
}

}  // namespace kaldra
