#include "solver/dissection.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <span>
#include <utility>

#include "model/problem_model.h"
#include "platform/memory.h"
#include "platform/parallel.h"
#include "run/messages.h"
#include "run/run_state.h"

namespace kaldra {

namespace {

// A region of fewer equations is eliminated as a whole.
constexpr std::size_t smallestRegion = 24;

// A region is worked on by one thread when it is this deep or has no more equations than this.
constexpr std::int32_t depthOfTasks = 4;
constexpr std::size_t regionOfTask = 2000;

// A free equation and where its node stands.
struct Place {
    std::array<float, 2> at;  // x, y
    std::int32_t equation;
};

using Places = std::span<Place>;

std::size_t EquationOf(const Place& place) { return static_cast<std::size_t>(place.equation); }

// What the search for a cut writes beside every equation: which half of its region holds it (0: none is being cut), and
// whether the cut touches it.
enum Mark : std::uint8_t { noHalf = 0, lowHalf = 1, highHalf = 2, touched = 4 };

struct Workspace {
    std::vector<Place> places;
    std::vector<std::uint8_t> marks;
};

bool IsBefore(const Place& a, const Place& b, std::size_t axis) {
    return a.at[axis] < b.at[axis] || (a.at[axis] == b.at[axis] && a.equation < b.equation);
}

// Where a region is cut: below are the places with at[axis] < value, or <= value where `inclusive`.
struct Cut {
    std::size_t axis = 0;
    float value = 0;
    bool inclusive = false;
    bool separatorIsLow = false;  // the separator is taken from the low half
    double cost = -1;             // -1: there is no such cut

    [[nodiscard]] bool IsLow(const Place& place) const {
        return inclusive ? place.at[axis] <= value : place.at[axis] < value;
    }
};

// Marks the halves of the region, and the equations of either that are coupled with the other.
void MarkHalves(Places region, const Cut& cut, std::vector<std::uint8_t>& marks) {
    const SystemMatrix& m = model.system;
    for (const Place& place : region) marks[EquationOf(place)] = cut.IsLow(place) ? lowHalf : highHalf;
    for (const Place& place : region) {
        const auto j = EquationOf(place);
        for (auto p = m.columnStart[j]; p + 1 < m.columnStart[j + 1]; ++p) {
            const auto i = static_cast<std::size_t>(m.row[static_cast<std::size_t>(p)]);
            const int halves = (marks[i] | marks[j]) & (lowHalf | highHalf);
            if ((marks[i] & (lowHalf | highHalf)) == noHalf || halves != (lowHalf | highHalf)) continue;
            marks[i] |= touched;
            marks[j] |= touched;
        }
    }
}

// The cut nearest to the middle that leaves something on either side.
Cut MiddleCut(Places region, std::size_t axis) {
    const auto middle = region.begin() + static_cast<std::ptrdiff_t>(region.size() / 2);
    std::nth_element(region.begin(), middle, region.end(),
                     [axis](const Place& a, const Place& b) { return IsBefore(a, b, axis); });
    Cut cut{axis, middle->at[axis], false, false, -1};
    const auto below =
        static_cast<std::size_t>(std::ranges::count_if(region, [&](const Place& p) { return cut.IsLow(p); }));
    cut.inclusive = true;
    const auto upTo =
        static_cast<std::size_t>(std::ranges::count_if(region, [&](const Place& p) { return cut.IsLow(p); }));
    const std::size_t n = region.size();
    const std::size_t lesser = std::min(below, n - below);
    const std::size_t lesserUpTo = std::min(upTo, n - upTo);
    cut.inclusive = lesserUpTo > lesser;
    if (lesser > 0 || lesserUpTo > 0) cut.cost = 0;
    return cut;
}

// Finds what the cut costs: the size of its separator for every equation in the lesser half.
void JudgeCut(Places region, Cut& cut, std::vector<std::uint8_t>& marks) {
    MarkHalves(region, cut, marks);
    std::array<std::size_t, 8> count{};  // by marks
    for (const Place& place : region) ++count[marks[EquationOf(place)]];
    const std::size_t low = count[lowHalf | touched];
    const std::size_t high = count[highHalf | touched];
    cut.separatorIsLow = low < high;
    const std::size_t lesser = std::min(count[lowHalf] + low, count[highHalf] + high);
    cut.cost = static_cast<double>(std::min(low, high)) / static_cast<double>(lesser);
}

// Sorts a part along its longer side, so that neighbours come to stand beside each other.
void SortPart(Places part) {
    std::array<float, 2> least = part[0].at;
    std::array<float, 2> greatest = part[0].at;
    for (const Place& place : part) {
        for (std::size_t axis = 0; axis < 2; ++axis) {
            least[axis] = std::min(least[axis], place.at[axis]);
            greatest[axis] = std::max(greatest[axis], place.at[axis]);
        }
    }
    const std::size_t axis = greatest[0] - least[0] > greatest[1] - least[1] ? 0 : 1;
    std::ranges::sort(part, [axis](const Place& a, const Place& b) { return IsBefore(a, b, axis); });
}

// Reorders the region into its low half, its high half and its separator; gives the sizes of the halves.
std::pair<std::size_t, std::size_t> ApplyCut(Places region, const Cut& cut, std::vector<std::uint8_t>& marks) {
    MarkHalves(region, cut, marks);
    const int separator = touched | (cut.separatorIsLow ? lowHalf : highHalf);
    const auto inLow = [&](const Place& p) { return cut.IsLow(p) && marks[EquationOf(p)] != separator; };
    const auto inHigh = [&](const Place& p) { return !cut.IsLow(p) && marks[EquationOf(p)] != separator; };
    const auto high = std::partition(region.begin(), region.end(), inLow);
    const auto rest = std::partition(high, region.end(), inHigh);
    for (const Place& place : region) marks[EquationOf(place)] = noHalf;
    return {static_cast<std::size_t>(high - region.begin()), static_cast<std::size_t>(rest - high)};
}

// A region on its way.
struct Region {
    std::size_t begin;
    std::size_t end;
    std::int32_t depth;
};

// Cuts one region: appends its parts, and what is still to be cut to `next`.
void CutRegion(Workspace& w, const Region& region, std::vector<DissectionPart>& parts, std::vector<Region>& next) {
    const auto addPart = [&](std::size_t begin, std::size_t end) {
        if (begin == end) return;
        SortPart(Places(w.places).subspan(begin, end - begin));
        parts.push_back({static_cast<std::int32_t>(begin), static_cast<std::int32_t>(end), region.depth});
    };
    const Places places = Places(w.places).subspan(region.begin, region.end - region.begin);
    Cut best;
    for (std::size_t axis = 0; axis < 2 && places.size() > smallestRegion; ++axis) {
        Cut cut = MiddleCut(places, axis);
        if (cut.cost < 0) continue;
        JudgeCut(places, cut, w.marks);
        if (best.cost < 0 || cut.cost < best.cost) best = cut;
    }
    if (best.cost < 0) return addPart(region.begin, region.end);
    const auto [low, high] = ApplyCut(places, best, w.marks);
    const std::size_t middle = region.begin + low;
    addPart(middle + high, region.end);
    const std::int32_t deeper = region.depth + (middle + high < region.end ? 1 : 0);
    if (low > 0) next.push_back({region.begin, middle, deeper});
    if (high > 0) next.push_back({middle, middle + high, deeper});
}

[[nodiscard]] int CollectFreeEquations(Workspace& w) {
    const std::size_t n = model.EquationCode.size();
    const auto isFree = [](std::int32_t code) { return code == equationFree; };
    if (!ReserveTable(w.places, static_cast<std::size_t>(std::ranges::count_if(model.EquationCode, isFree)))) return 0;
    if (!MakeTable(w.marks, n)) return 0;
    for (std::size_t i = 0; i < n; ++i) {
        if (!isFree(model.EquationCode[i])) continue;
        w.places.push_back({{model.nodes[i].x, model.nodes[i].y}, static_cast<std::int32_t>(i)});
    }
    return 1;
}

// Cuts the whole until the regions are small enough for one thread each.
[[nodiscard]] int CutTop(Workspace& w, Dissection& d, std::vector<Region>& regions) {
    std::vector<Region> open;
    if (!w.places.empty()) open.push_back({0, w.places.size(), 0});
    while (!open.empty()) {
        if (!IsRunning()) return 0;
        const Region region = open.back();
        open.pop_back();
        if (region.depth >= depthOfTasks || region.end - region.begin <= regionOfTask) {
            regions.push_back(region);
        } else {
            CutRegion(w, region, d.parts, open);
        }
    }
    std::ranges::sort(regions, {}, &Region::begin);
    return 1;
}

}  // namespace

int DissectEquations(Dissection& d) {
    Workspace w;
    std::vector<Region> regions;
    if (!CollectFreeEquations(w) || !CutTop(w, d, regions)) return 0;
    std::vector<std::vector<DissectionPart>> parts(regions.size());
    std::atomic<bool> fits{true};
    RunTasks(regions.size(), [&](std::size_t task) {
        const bool done = TryMemory((regions[task].end - regions[task].begin) * sizeof(DissectionPart), [&] {
            std::vector<Region> open{regions[task]};
            while (!open.empty() && IsRunning()) {
                const Region region = open.back();
                open.pop_back();
                CutRegion(w, region, parts[task], open);
            }
        });
        if (!done) fits = false;
    });
    if (!fits) return ShowOutOfMemory();
    if (!IsRunning()) return 0;
    const std::size_t extra = w.places.size() * sizeof(std::int32_t);
    return WithMemory(extra, [&] {
        for (const auto& some : parts) d.parts.insert(d.parts.end(), some.begin(), some.end());
        std::ranges::sort(d.parts, {}, &DissectionPart::begin);
        for (const Place& place : w.places) d.order.push_back(place.equation);
        for (const Region& region : regions) {
            d.regionBegin.push_back(static_cast<std::int32_t>(region.begin));
            d.regionEnd.push_back(static_cast<std::int32_t>(region.end));
        }
    });
}

}  // namespace kaldra
