#include "solver/dissection.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <numeric>
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

std::size_t EquationOf(const Place& place) { return static_cast<std::size_t>(place.equation); }

// What the search for a cut writes beside every equation: which half of its region holds it (0: none is being cut), and
// whether the cut touches it.
enum Mark : std::uint8_t { noHalf = 0, lowHalf = 1, highHalf = 2, touched = 4 };

// What is known of the free equations along one axis. The places of a region are one range of `places`, the same for
// both axes.
struct Axis {
    std::vector<Place> places;  // sorted along the axis
    std::vector<Place> room;    // for places on their way to another range
    std::vector<std::uint8_t> marks;
};

struct Workspace {
    std::array<Axis, 2> axes;
    std::vector<std::int32_t> order;
};

// A region on its way.
struct Region {
    std::size_t begin;
    std::size_t end;
    std::int32_t depth;

    [[nodiscard]] std::size_t Size() const { return end - begin; }
    [[nodiscard]] std::span<Place> Of(std::vector<Place>& places) const {
        return std::span(places).subspan(begin, Size());
    }
};

// A cut of a region.
struct Cut {
    std::uint8_t separator = 0;  // the mark of its places
    std::size_t low = 0;         // places of the low half and of the high one, without the separator
    std::size_t high = 0;
    double cost = -1;  // -1: there is no such cut
};

// How many places of a region are below the cut nearest to its middle that leaves something on either side; 0 if there
// is none. Places that stand equally far are not parted.
std::size_t BelowMiddle(std::span<const Place> region, std::size_t axis) {
    const float middle = region[region.size() / 2].at[axis];
    const auto along = [axis](const Place& place) { return place.at[axis]; };
    const auto below = static_cast<std::size_t>(std::ranges::lower_bound(region, middle, {}, along) - region.begin());
    const auto upTo = static_cast<std::size_t>(std::ranges::upper_bound(region, middle, {}, along) - region.begin());
    const std::size_t lesser = std::min(below, region.size() - below);
    const std::size_t lesserUpTo = std::min(upTo, region.size() - upTo);
    if (lesser == 0 && lesserUpTo == 0) return 0;
    return lesserUpTo > lesser ? upTo : below;
}

// Marks the halves of the region, of which the first has `low` places, and the equations of either that are coupled
// with the other.
void MarkHalves(std::span<const Place> region, std::size_t low, std::vector<std::uint8_t>& marks) {
    const SystemMatrix& m = model.system;
    for (const Place& place : region.first(low)) marks[EquationOf(place)] = lowHalf;
    for (const Place& place : region.subspan(low)) marks[EquationOf(place)] = highHalf;
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

// Finds the cut across one axis, leaves its marks, and judges it: it costs the size of its separator for every equation
// in the lesser half.
Cut FindCut(Workspace& w, const Region& region, std::size_t number) {
    Axis& axis = w.axes[number];
    const std::span<const Place> places = region.Of(axis.places);
    Cut cut;
    const std::size_t below = BelowMiddle(places, number);
    if (below == 0) return cut;
    MarkHalves(places, below, axis.marks);
    std::array<std::size_t, 8> count{};  // by marks
    for (const Place& place : places) ++count[axis.marks[EquationOf(place)]];
    const std::size_t low = count[lowHalf | touched];
    const std::size_t high = count[highHalf | touched];
    const std::size_t lesser = std::min(count[lowHalf] + low, count[highHalf] + high);
    cut.cost = static_cast<double>(std::min(low, high)) / static_cast<double>(lesser);
    cut.separator = touched | (low < high ? lowHalf : highHalf);
    cut.low = count[lowHalf] + (low < high ? 0 : low);
    cut.high = count[highHalf] + (low < high ? high : 0);
    return cut;
}

// Reorders the places of the region along one axis into its low half, its high half and its separator, as `marks` has
// them; each stays sorted.
void ApplyCut(Axis& axis, const Region& region, const Cut& cut, const std::vector<std::uint8_t>& marks) {
    const std::span<Place> places = region.Of(axis.places);
    const std::span<Place> room = region.Of(axis.room);
    std::array<std::size_t, 3> next{0, cut.low, cut.low + cut.high};
    for (const Place& place : places) {
        const std::uint8_t mark = marks[EquationOf(place)];
        const std::size_t part = mark == cut.separator ? 2 : (mark & highHalf) != 0 ? 1 : 0;
        room[next[part]++] = place;
    }
    std::ranges::copy(room, places.begin());
}

// Orders the equations of a part along its longer side, so that neighbours come to stand beside each other.
void OrderPart(Workspace& w, const Region& part) {
    const auto extent = [&](std::size_t number) {
        const std::span<const Place> places = part.Of(w.axes[number].places);
        return places.back().at[number] - places.front().at[number];
    };
    const std::size_t longer = extent(0) > extent(1) ? 0 : 1;
    std::ranges::transform(part.Of(w.axes[longer].places), w.order.begin() + static_cast<std::ptrdiff_t>(part.begin),
                           &Place::equation);
}

constexpr auto oneAfterAnother = [](const auto& work) {
    work(0);
    work(1);
};
constexpr auto sideBySide = [](const auto& work) { RunTasks(2, work); };

// Cuts one region: appends its parts, and what is still to be cut to `next`. forAxes calls for both axes.
template <class ForAxes>
void CutRegion(Workspace& w, const Region& region, std::vector<DissectionPart>& parts, std::vector<Region>& next,
               const ForAxes& forAxes) {
    const auto addPart = [&](std::size_t begin, std::size_t end) {
        if (begin == end) return;
        OrderPart(w, {begin, end, region.depth});
        parts.push_back({static_cast<std::int32_t>(begin), static_cast<std::int32_t>(end), region.depth});
    };
    if (region.Size() <= smallestRegion) return addPart(region.begin, region.end);
    std::array<Cut, 2> cuts;
    forAxes([&](std::size_t axis) { cuts[axis] = FindCut(w, region, axis); });
    const std::size_t better = cuts[0].cost < 0 || (cuts[1].cost >= 0 && cuts[1].cost < cuts[0].cost) ? 1 : 0;
    const Cut& cut = cuts[better];
    if (cut.cost < 0) return addPart(region.begin, region.end);
    forAxes([&](std::size_t axis) { ApplyCut(w.axes[axis], region, cut, w.axes[better].marks); });
    forAxes([&](std::size_t axis) {
        for (const Place& place : region.Of(w.axes[axis].places)) w.axes[axis].marks[EquationOf(place)] = noHalf;
    });
    const std::size_t middle = region.begin + cut.low;
    const std::size_t rest = middle + cut.high;
    addPart(rest, region.end);
    const std::int32_t deeper = region.depth + (rest < region.end ? 1 : 0);
    if (middle > region.begin) next.push_back({region.begin, middle, deeper});
    if (rest > middle) next.push_back({middle, rest, deeper});
}

// A number that rises with a coordinate; one for both zeros.
std::uint32_t KeyOf(float coordinate) {
    const auto bits = std::bit_cast<std::uint32_t>(coordinate + 0.0F);
    return (bits >> 31) != 0 ? ~bits : bits | 0x80000000;
}

// Sorts along an axis; places that stand equally far stay in their order. By digits, the lowest first.
void SortAlong(std::size_t number, Axis& axis) {
    constexpr int digitBits = 11;
    for (int shift = 0; shift < 32; shift += digitBits) {
        const auto digit = [=](const Place& place) {
            return std::size_t{KeyOf(place.at[number]) >> shift & ((1U << digitBits) - 1)};
        };
        std::array<std::size_t, 1 << digitBits> next{};
        for (const Place& place : axis.places) ++next[digit(place)];
        std::exclusive_scan(next.begin(), next.end(), next.begin(), std::size_t{0});
        for (const Place& place : axis.places) axis.room[next[digit(place)]++] = place;
        axis.places.swap(axis.room);
    }
}

[[nodiscard]] int CollectFreeEquations(Workspace& w) {
    const std::size_t n = model.EquationCode.size();
    const auto isFree = [](std::int32_t code) { return code == equationFree; };
    const auto count = static_cast<std::size_t>(std::ranges::count_if(model.EquationCode, isFree));
    for (Axis& axis : w.axes) {
        if (!ReserveTable(axis.places, count) || !MakeTable(axis.room, count) || !MakeTable(axis.marks, n)) return 0;
    }
    if (!MakeTable(w.order, count)) return 0;
    sideBySide([&](std::size_t number) {
        std::vector<Place>& places = w.axes[number].places;
        for (std::size_t i = 0; i < n; ++i) {
            if (!isFree(model.EquationCode[i])) continue;
            places.push_back({{model.nodes[i].x, model.nodes[i].y}, static_cast<std::int32_t>(i)});
        }
        SortAlong(number, w.axes[number]);
    });
    return 1;
}

// Cuts the whole until the regions are small enough for one thread each.
[[nodiscard]] int CutTop(Workspace& w, Dissection& d, std::vector<Region>& regions) {
    std::vector<Region> open;
    if (!w.order.empty()) open.push_back({0, w.order.size(), 0});
    while (!open.empty()) {
        if (!IsRunning()) return 0;
        const Region region = open.back();
        open.pop_back();
        if (region.depth >= depthOfTasks || region.Size() <= regionOfTask) {
            regions.push_back(region);
        } else {
            CutRegion(w, region, d.parts, open, sideBySide);
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
        const bool done = TryMemory(regions[task].Size() * sizeof(DissectionPart), [&] {
            std::vector<Region> open{regions[task]};
            while (!open.empty() && IsRunning()) {
                const Region region = open.back();
                open.pop_back();
                CutRegion(w, region, parts[task], open, oneAfterAnother);
            }
        });
        if (!done) fits = false;
    });
    if (!fits) return ShowOutOfMemory();
    if (!IsRunning()) return 0;
    d.order = std::move(w.order);
    return WithMemory(0, [&] {
        for (const auto& some : parts) d.parts.insert(d.parts.end(), some.begin(), some.end());
        std::ranges::sort(d.parts, {}, &DissectionPart::begin);
        for (const Region& region : regions) {
            d.regionBegin.push_back(static_cast<std::int32_t>(region.begin));
            d.regionEnd.push_back(static_cast<std::int32_t>(region.end));
        }
    });
}

}  // namespace kaldra
