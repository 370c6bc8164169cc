// The kernels in terms of a vector of eight f64, Vec, that the including file defines for its processor, with
//
//     Load, Store, Broadcast, Multiply, Add, and Reduce(a, b, c) = c - a b, rounded once;
//     Totals(v): lane r is the sum of the lanes of v[r], ((0 + 4) + (2 + 6)) + ((1 + 5) + (3 + 7)), for eight vectors;
//     AddLanes(to, mask, v): to += v in the lanes of the mask;
//     Stream(to, v): a store past the caches, and EndStream() after the last;
//     tileRows (8 or 4) and tileGroups (3 or 1): what of a product its registers hold.
//
// NOLINTBEGIN: no include guard, on purpose.
namespace kaldra {
namespace {

constexpr std::size_t width = groupWidth;

// Reduces `tileRows` rows of `Groups` blocks by `count` rows: c(r, .) -= sum over k of u(k, r) g(k, .). The rows that
// are needed next lie `ahead` of those of u: they are fetched meanwhile, mostly from the cache of another processor.
template <std::size_t Groups>
inline void SubtractTile(const double* u, const double* const* g, double* const* c, std::size_t first,
                         std::size_t count, std::ptrdiff_t ahead) {
    Vec sum[tileRows][Groups];
#pragma GCC unroll 8
    for (std::size_t r = 0; r < tileRows; ++r) {
#pragma GCC unroll 3
        for (std::size_t s = 0; s < Groups; ++s) sum[r][s] = Load(c[s] + (first + r) * width);
    }
    const double* column[Groups];
    for (std::size_t s = 0; s < Groups; ++s) column[s] = g[s];
    u += first;
    for (std::size_t k = 0; k < count; ++k) {
        __builtin_prefetch(u + k * width + ahead);
        Vec row[Groups];
#pragma GCC unroll 3
        for (std::size_t s = 0; s < Groups; ++s) row[s] = Load(column[s] + k * width);
#pragma GCC unroll 8
        for (std::size_t r = 0; r < tileRows; ++r) {
            const Vec factor = Broadcast(u[k * width + r]);
#pragma GCC unroll 3
            for (std::size_t s = 0; s < Groups; ++s) sum[r][s] = Reduce(factor, row[s], sum[r][s]);
        }
    }
#pragma GCC unroll 8
    for (std::size_t r = 0; r < tileRows; ++r) {
#pragma GCC unroll 3
        for (std::size_t s = 0; s < Groups; ++s) Store(c[s] + (first + r) * width, sum[r][s]);
    }
}

// The same for eight rows of one to three groups.
template <std::size_t Groups>
inline void SubtractRows(const double* u, const double* const* g, double* const* c, std::size_t count,
                         std::ptrdiff_t ahead) {
    constexpr std::size_t together = Groups < tileGroups ? Groups : tileGroups;
    for (std::size_t first = 0; first < width; first += tileRows) {
        for (std::size_t s = 0; s < Groups; s += together) SubtractTile<together>(u, g + s, c + s, first, count, ahead);
    }
}

// Reduces the eight rows of `c` by each other: the square `u` stands on the diagonal above them.
template <std::size_t Groups>
inline void SolveSquare(const double* u, double* const* c) {
    for (std::size_t s = 0; s < Groups; ++s) {
        Vec row[width];
#pragma GCC unroll 8
        for (std::size_t r = 0; r < width; ++r) row[r] = Load(c[s] + r * width);
#pragma GCC unroll 8
        for (std::size_t k = 0; k < width; ++k) {
#pragma GCC unroll 8
            for (std::size_t r = k + 1; r < width; ++r) row[r] = Reduce(Broadcast(u[k * width + r]), row[k], row[r]);
        }
#pragma GCC unroll 8
        for (std::size_t r = 0; r < width; ++r) Store(c[s] + r * width, row[r]);
    }
}

inline void Await(const DenseSystem& system, std::size_t group) {
    const auto wanted = static_cast<std::uint32_t>(group + 1);
    if (system.ready == nullptr || __atomic_load_n(system.ready, __ATOMIC_ACQUIRE) >= wanted) return;
    system.wait(system.ready, wanted);
}

inline void Publish(const DenseSystem& system, std::size_t group) {
    if (system.ready != nullptr) {
        __atomic_store_n(system.ready, static_cast<std::uint32_t>(group + 1), __ATOMIC_RELEASE);
    }
}

inline std::int64_t Lower(std::int64_t a, std::int64_t b) { return a < b ? a : b; }
inline std::int64_t Higher(std::int64_t a, std::int64_t b) { return a > b ? a : b; }

// Eight rows of a group, whether they are pivots or remainder.
inline double* RowsAt(const DenseSystem& system, const ColumnGroup& column, std::int64_t row) {
    return row < system.pivots ? column.Row(row) : column.remainder + (row - system.pivots) * 8;
}

// Reduces `Groups` groups by the groups first .. end - 1.
template <std::size_t Groups>
void ReduceByGroups(const DenseSystem& system, std::size_t group, std::size_t first, std::size_t end) {
    const ColumnGroup* const column = system.groups + group;
    for (std::size_t by = first; by < end; ++by) {
        Await(system, by);
        const ColumnGroup& divided = system.groups[by];
        const auto row = static_cast<std::int64_t>(by * width);
        const std::int64_t from = Higher(divided.top, column->top);
        const std::int64_t to = Lower(row, system.pivots);
        const double* g[Groups];
        double* c[Groups];
        for (std::size_t s = 0; s < Groups; ++s) {
            g[s] = column[s].Row(from);
            c[s] = RowsAt(system, column[s], row);
        }
        const std::ptrdiff_t ahead = by + 1 < end ? system.groups[by + 1].rows - divided.rows : 0;
        if (to > from) SubtractRows<Groups>(divided.Row(from), g, c, static_cast<std::size_t>(to - from), ahead);
        if (row < system.pivots) SolveSquare<Groups>(divided.Row(row), c);
    }
}

void ReduceGroups(const DenseSystem& system, std::size_t group, std::size_t count, std::size_t first, std::size_t end) {
    if (count == 3) return ReduceByGroups<3>(system, group, first, end);
    if (count == 2) return ReduceByGroups<2>(system, group, first, end);
    if (count == 1) return ReduceByGroups<1>(system, group, first, end);
}

// Factorises the square on the diagonal and keeps its pivots.
void FactorSquare(double* square, double* reciprocal) {
    for (std::size_t j = 0; j < width; ++j) {
        double* const row = square + j * width;
        reciprocal[j] = 1.0 / row[j];
        for (std::size_t i = j + 1; i < width; ++i) {
            const double divided = row[i] * reciprocal[j];
            const Vec factor = Broadcast(divided);
            Store(square + i * width, Reduce(factor, Load(row), Load(square + i * width)));
        }
        for (std::size_t i = j + 1; i < width; ++i) row[i] *= reciprocal[j];
    }
}

// Divides a group that is reduced down to its square, and factorises the square.
void FinishGroup(const DenseSystem& system, std::size_t group, double* scratch) {
    const ColumnGroup& column = system.groups[group];
    const auto row = static_cast<std::int64_t>(group * width);
    const std::int64_t to = Lower(row, system.pivots);
    const auto count = static_cast<std::size_t>(Higher(to - column.top, 0));
    double* const g = column.rows;
    for (std::size_t k = 0; k < count; ++k) {
        const Vec factor = Broadcast(system.reciprocal[column.top + static_cast<std::int64_t>(k)]);
        Store(scratch + k * width, Multiply(Load(g + k * width), factor));
    }
    const double* above[1] = {g};
    double* square[1] = {RowsAt(system, column, row)};
    if (count > 0) SubtractRows<1>(scratch, above, square, count, 0);
    for (std::size_t k = 0; k < count; ++k) Store(g + k * width, Load(scratch + k * width));
    if (row < system.pivots) FactorSquare(square[0], system.reciprocal + row);
    Publish(system, group);
}

void FactorStrip(const DenseSystem& system, std::size_t group, std::size_t count, double* scratch) {
    const auto first = static_cast<std::size_t>(system.groups[group].top) / width;
    ReduceGroups(system, group, count, first, group);
    if (group > 0) Await(system, group - 1);  // groups are made known in order, also where they share no row
    for (std::size_t i = 0; i < count; ++i) {
        FinishGroup(system, group + i, scratch);
        ReduceGroups(system, group + i + 1, count - i - 1, group + i, group + i + 1);
    }
}

template <std::size_t Blocks>
inline void ForwardBlocks(const double* const* u, std::size_t rows, const double* y, double* w) {
    Vec sum[Blocks];
    const double* block[Blocks];
    for (std::size_t b = 0; b < Blocks; ++b) {
        sum[b] = Load(w + b * width);
        block[b] = u[b];
    }
    for (std::size_t k = 0; k < rows; ++k) {
        const Vec value = Broadcast(y[k]);
#pragma GCC unroll 4
        for (std::size_t b = 0; b < Blocks; ++b) sum[b] = Reduce(value, Load(block[b] + k * width), sum[b]);
    }
    for (std::size_t b = 0; b < Blocks; ++b) Store(w + b * width, sum[b]);
}

void Forward(const double* const* u, std::size_t blocks, std::size_t rows, const double* y, double* w) {
    static_assert(groupsAtOnce == 4);
    if (blocks == 4) return ForwardBlocks<4>(u, rows, y, w);
    if (blocks == 3) return ForwardBlocks<3>(u, rows, y, w);
    if (blocks == 2) return ForwardBlocks<2>(u, rows, y, w);
    if (blocks == 1) return ForwardBlocks<1>(u, rows, y, w);
}

void Backward(const double* u, std::size_t rows, std::size_t blocks, std::size_t stride, const double* w, double* x) {
    for (std::size_t first = 0; first < rows; first += width) {
        Vec sum[width];
        for (std::size_t r = 0; r < width; ++r) sum[r] = Broadcast(0);
        for (std::size_t block = 0; block < blocks; ++block) {
            const Vec values = Load(w + block * width);
            const double* const rowsOfBlock = u + block * stride + first * width;
#pragma GCC unroll 8
            for (std::size_t r = 0; r < width; ++r) sum[r] = Reduce(Load(rowsOfBlock + r * width), values, sum[r]);
        }
        Store(x + first, Add(Load(x + first), Totals(sum)));
    }
}

void AddRows(const double* from, std::size_t rows, unsigned mask, double* to) {
    for (std::size_t r = 0; r < rows; ++r) AddLanes(to + r * width, mask, Load(from + r * width));
}

void StreamValues(const double* from, std::size_t count, double* to) {
    for (std::size_t i = 0; i < count; i += width) Stream(to + i, Load(from + i));
    EndStream();
}

}  // namespace

const DenseKernels KALDRA_KERNELS{FactorStrip, Forward, Backward, AddRows, StreamValues};

}  // namespace kaldra
// NOLINTEND
