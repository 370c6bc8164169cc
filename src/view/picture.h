// Picture: a drawing as a plain list of operations that any device can paint. No toolkit here.
//
// Lengths are pixels of 1/96 inch, x to the right and y down, from the upper left corner. The desktop paints a picture
// with its toolkit, picture_file into PNG, SVG and PDF; both show the same.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kaldra {

using Colour = std::uint32_t;  // 0xAARRGGBB; those of a raster are opaque

[[nodiscard]] constexpr Colour Rgb(std::uint32_t rgb) { return 0xFF000000U | rgb; }

inline constexpr Colour inkColour = Rgb(0x202020);
inline constexpr Colour paperColour = Rgb(0xFFFFFF);

struct PicturePoint {
    double x = 0, y = 0;
};

struct PictureBox {
    double left = 0, top = 0, right = 0, bottom = 0;
    [[nodiscard]] double Width() const { return right - left; }
    [[nodiscard]] double Height() const { return bottom - top; }
    [[nodiscard]] bool Has(PicturePoint p) const { return p.x >= left && p.x <= right && p.y >= top && p.y <= bottom; }
};

struct Raster {
    std::int32_t width = 0, height = 0;
    std::vector<Colour> pixels;  // row by row from the top
};

enum class PictureShape {
    Image,     // points: upper left and lower right corner
    Segments,  // points: the two ends of one straight line after the other
    Line,      // points: one line from point to point
    Polygon,   // points: filled, without an edge
    Text,      // points: where it is anchored
    Clip,      // points: two corners; what follows shows within them alone
    Unclip
};

enum class TextAnchor { Start, Middle, End };  // along the text; across it always in the middle of its height

struct PictureItem {
    PictureShape shape = PictureShape::Line;
    std::vector<PicturePoint> points;
    Colour colour = inkColour;
    double size = 1;  // width of lines, height of text
    std::string text;
    TextAnchor anchor = TextAnchor::Start;
    bool bold = false;
    bool upright = false;  // text that reads from below
    Raster raster;
};

struct Picture {
    double width = 0, height = 0;
    std::vector<PictureItem> items;  // later ones over earlier ones
};

struct TextLook {
    TextAnchor anchor = TextAnchor::Start;
    double size = 13;
    bool bold = false;
    bool upright = false;
    Colour colour = inkColour;
};

void AddImage(Picture& picture, const PictureBox& box, Raster raster);
void AddSegments(Picture& picture, std::vector<PicturePoint> ends, Colour colour, double width);
void AddLine(Picture& picture, std::vector<PicturePoint> points, Colour colour, double width);
void AddPolygon(Picture& picture, std::vector<PicturePoint> points, Colour colour);
void AddBox(Picture& picture, const PictureBox& box, Colour colour);  // filled
void AddFrame(Picture& picture, const PictureBox& box, Colour colour, double width);
void AddText(Picture& picture, PicturePoint at, std::string text, const TextLook& look = {});
void AddClip(Picture& picture, const PictureBox& box);
void AddUnclip(Picture& picture);

// Joins segments that end where others begin, within a hundredth of a pixel, into lines of at most `most` points.
[[nodiscard]] std::vector<std::vector<PicturePoint>> JoinSegments(const std::vector<PicturePoint>& ends,
                                                                  std::size_t most = 64);

// A text's length where it is set in a plain face, roughly: the devices measure exactly, the layout need not.
[[nodiscard]] double RoughTextWidth(std::string_view text, double size);

// A number in at most so many digits, without zeros at its end.
[[nodiscard]] std::string ShortNumber(double value, int digits = 4);

}  // namespace kaldra
