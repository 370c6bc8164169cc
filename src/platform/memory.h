// All table growth of the engine: the one place that turns memory that cannot be had into message 1138.
//
// Each gives 1, or 0 with the message shown and the table as it was (MakeTable: empty).
// A request larger than the memory that the machine has left is refused here: the system would grant it and end the
// process later without a word.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <stdexcept>
#include <utility>
#include <vector>

namespace kaldra {

// Memory for LargeTable: from 16 MiB on in pages of 2 MiB where the system has them, whose addresses are found faster.
// For less memory that gains less than it costs to clear such a page at its first touch. Throws std::bad_alloc.
[[nodiscard]] void* TakeLargeMemory(std::size_t bytes);
void GiveLargeMemory(void* memory);

template <class Record>
struct LargeAllocator {
    using value_type = Record;
    LargeAllocator() = default;
    template <class Other>
    LargeAllocator(const LargeAllocator<Other>&) {}
    [[nodiscard]] Record* allocate(std::size_t count) {
        return static_cast<Record*>(TakeLargeMemory(count * sizeof(Record)));
    }
    void deallocate(Record* memory, std::size_t) { GiveLargeMemory(memory); }
    template <class... Arguments>
    void construct(Record* place, Arguments&&... arguments) {
        if constexpr (sizeof...(Arguments) > 0) ::new (place) Record(std::forward<Arguments>(arguments)...);
    }
    template <class Other>
    bool operator==(const LargeAllocator<Other>&) const {
        return true;
    }
};

// A table of numbers that is not filled when it is made: its owner writes every value before it is read.
template <class Record>
using LargeTable = std::vector<Record, LargeAllocator<Record>>;

// True when `bytes` may be asked for now.
[[nodiscard]] bool MemoryAllows(std::uint64_t bytes);

// Shows message 1138 and gives 0.
int ShowOutOfMemory();

// Runs `grow`, which allocates `bytes`. Gives false, without a message, if they cannot be had.
template <class Growth>
[[nodiscard]] bool TryMemory(std::uint64_t bytes, Growth grow) {
    if (!MemoryAllows(bytes)) return false;
    try {
        grow();
        return true;
    } catch (const std::bad_alloc&) {
    } catch (const std::length_error&) {
    }
    return false;
}

// The same with message 1138.
template <class Growth>
[[nodiscard]] int WithMemory(std::uint64_t bytes, Growth grow) {
    return TryMemory(bytes, grow) ? 1 : ShowOutOfMemory();
}

// Replaces a table by `count` zero-filled records (a LargeTable: unfilled ones); whatever it held is released first.
template <class Record, class Allocator>
[[nodiscard]] int MakeTable(std::vector<Record, Allocator>& table, std::size_t count) {
    std::vector<Record, Allocator>().swap(table);
    return WithMemory(count * sizeof(Record), [&] { table.resize(count); });
}

// MakeTable that leaves the message to the caller.
template <class Record, class Allocator>
[[nodiscard]] bool TryMakeTable(std::vector<Record, Allocator>& table, std::size_t count) {
    std::vector<Record, Allocator>().swap(table);
    return TryMemory(count * sizeof(Record), [&] { table.resize(count); });
}

// Resizes a table, keeps its leading records and zero-fills new ones.
template <class Record>
[[nodiscard]] int ResizeTable(std::vector<Record>& table, std::size_t count) {
    return WithMemory(count * sizeof(Record), [&] { table.resize(count); });
}

// ResizeTable for a caller that holds a lock and must not wait for the user: the message is left to it.
template <class Record>
[[nodiscard]] bool TryResizeTable(std::vector<Record>& table, std::size_t count) {
    return TryMemory(count * sizeof(Record), [&] { table.resize(count); });
}

// Makes room for `count` records without adding any; the first form leaves the message to the caller.
template <class Record>
[[nodiscard]] bool TryReserveTable(std::vector<Record>& table, std::size_t count) {
    return TryMemory(count * sizeof(Record), [&] { table.reserve(count); });
}

template <class Record>
[[nodiscard]] int ReserveTable(std::vector<Record>& table, std::size_t count) {
    return WithMemory(count * sizeof(Record), [&] { table.reserve(count); });
}

// Adds one record at the end.
template <class Record>
[[nodiscard]] int AppendRecord(std::vector<Record>& table, const Record& record) {
    if (table.size() < table.capacity()) {
        table.push_back(record);
        return 1;
    }
    return WithMemory((2 * table.size() + 1) * sizeof(Record), [&] { table.push_back(record); });
}

}  // namespace kaldra
