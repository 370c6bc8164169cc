#include "view/picture.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <map>
#include <utility>

namespace kaldra {

static PictureItem& Add(Picture& picture, PictureShape shape, std::vector<PicturePoint> points) {
    PictureItem& item = picture.items.emplace_back();
    item.shape = shape;
    item.points = std::move(points);
    return item;
}

static std::vector<PicturePoint> TwoCorners(const PictureBox& box) {
    return {{box.left, box.top}, {box.right, box.bottom}};
}

void AddImage(Picture& picture, const PictureBox& box, Raster raster) {
    Add(picture, PictureShape::Image, TwoCorners(box)).raster = std::move(raster);
}

static void AddStroke(Picture& picture, PictureShape shape, std::vector<PicturePoint> points, Colour colour,
                      double width) {
    if (points.size() < 2) return;
    PictureItem& item = Add(picture, shape, std::move(points));
    item.colour = colour;
    item.size = width;
}

void AddSegments(Picture& picture, std::vector<PicturePoint> ends, Colour colour, double width) {
    AddStroke(picture, PictureShape::Segments, std::move(ends), colour, width);
}

void AddLine(Picture& picture, std::vector<PicturePoint> points, Colour colour, double width) {
    AddStroke(picture, PictureShape::Line, std::move(points), colour, width);
}

void AddPolygon(Picture& picture, std::vector<PicturePoint> points, Colour colour) {
    PictureItem& item = Add(picture, PictureShape::Polygon, std::move(points));
    item.colour = colour;
}

void AddBox(Picture& picture, const PictureBox& box, Colour colour) {
    AddPolygon(picture, {{box.left, box.top}, {box.right, box.top}, {box.right, box.bottom}, {box.left, box.bottom}},
               colour);
}

void AddFrame(Picture& picture, const PictureBox& box, Colour colour, double width) {
    AddLine(picture,
            {{box.left, box.top},
             {box.right, box.top},
             {box.right, box.bottom},
             {box.left, box.bottom},
             {box.left, box.top}},
            colour, width);
}

void AddText(Picture& picture, PicturePoint at, std::string text, const TextLook& look) {
    PictureItem& item = Add(picture, PictureShape::Text, {at});
    item.text = std::move(text);
    item.colour = look.colour;
    item.size = look.size;
    item.anchor = look.anchor;
    item.bold = look.bold;
    item.upright = look.upright;
}

void AddClip(Picture& picture, const PictureBox& box) { Add(picture, PictureShape::Clip, TwoCorners(box)); }

void AddUnclip(Picture& picture) { Add(picture, PictureShape::Unclip, {}); }

namespace {

using GridPlace = std::pair<std::int64_t, std::int64_t>;

GridPlace PlaceOf(const PicturePoint& p) { return {std::llround(100 * p.x), std::llround(100 * p.y)}; }

// Segments by the places of their ends; each is taken once.
struct SegmentNet {
    const std::vector<PicturePoint>& ends;
    std::multimap<GridPlace, std::size_t> byPlace;  // of points in `ends`
    std::vector<bool> taken;                        // by segment

    // The far end of a segment that has one end at `place` and was not taken yet, or nothing.
    const PicturePoint* Take(const GridPlace& place) {
        const auto [first, last] = byPlace.equal_range(place);
        for (auto at = first; at != last; ++at) {
            if (taken[at->second / 2]) continue;
            taken[at->second / 2] = true;
            return &ends[at->second ^ 1U];
        }
        return nullptr;
    }
};

void Prolong(SegmentNet& net, std::vector<PicturePoint>& line, std::size_t most) {
    while (line.size() < most) {
        const PicturePoint* const next = net.Take(PlaceOf(line.back()));
        if (next == nullptr) return;
        line.push_back(*next);
    }
}

}  // namespace

std::vector<std::vector<PicturePoint>> JoinSegments(const std::vector<PicturePoint>& ends, std::size_t most) {
    SegmentNet net{ends, {}, std::vector<bool>(ends.size() / 2)};
    for (std::size_t i = 0; i < ends.size(); ++i) net.byPlace.emplace(PlaceOf(ends[i]), i);
    std::vector<std::vector<PicturePoint>> lines;
    for (std::size_t i = 0; i + 1 < ends.size(); i += 2) {
        if (net.taken[i / 2]) continue;
        net.taken[i / 2] = true;
        std::vector<PicturePoint>& line = lines.emplace_back();
        line = {ends[i + 1], ends[i]};
        Prolong(net, line, most);
        std::ranges::reverse(line);
        Prolong(net, line, most);
    }
    return lines;
}

double RoughTextWidth(std::string_view text, double size) {
    constexpr double perCharacter = 0.58;  // of the height
    const auto characters =
        std::ranges::count_if(text, [](char c) { return (static_cast<unsigned>(c) & 0xC0U) != 0x80U; });
    return perCharacter * size * static_cast<double>(characters);
}

std::string ShortNumber(double value, int digits) {
    std::array<char, 64> text{};
    const double shown = value == 0 ? 0 : value;  // never -0
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), shown, std::chars_format::general, digits);
    return error == std::errc() ? std::string(text.data(), end) : std::string();
}

}  // namespace kaldra
