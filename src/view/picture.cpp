#include "view/picture.h"

#include <algorithm>
#include <array>
#include <charconv>
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
    Add(picture, PictureShape::Polygon, std::move(points)).colour = colour;
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
