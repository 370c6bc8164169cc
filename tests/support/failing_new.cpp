// operator new of the test program: a seam like those of the engine. A file of its own, so that no compiler sees new
// and free side by side.

#include <cstdlib>
#include <new>

#include "platform/faults.h"

void* operator new(std::size_t size) {
    void* const memory = kaldra::FaultStrikes(kaldra::FaultSeam::OperatorNew) ? nullptr : std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

// Who asks so has a way without.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size); }

void operator delete(void* memory) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
