#include "view/picture_file.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>
#include <cairo.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <memory>
#include <numbers>

#include "model/file_names.h"
#include "post/output_file.h"

namespace kaldra {

namespace {

struct Release {
    void operator()(cairo_t* context) const { cairo_destroy(context); }
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
using Context = std::unique_ptr<cairo_t, Release>;
using Surface = std::unique_ptr<cairo_surface_t, Release>;

constexpr double pointsPerUnit = 0.75;  // 72 per inch against 96

void SetColour(cairo_t* to, Colour colour) {
    const auto part = [colour](int shift) { return static_cast<double>((colour >> shift) & 0xFFU) / 255; };
    cairo_set_source_rgb(to, part(16), part(8), part(0));
}

// Pixels as they are, whatever they are scaled to: a smoothed edge of a band would have colours that no band has.
void PaintImage(cairo_t* to, const PictureItem& item) {
    if (item.raster.pixels.empty()) return;
    std::vector<Colour> pixels = item.raster.pixels;
    const Surface image(cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(pixels.data()),
                                                            CAIRO_FORMAT_RGB24, item.raster.width, item.raster.height,
                                                            4 * item.raster.width));
    const PicturePoint& from = item.points[0];
    const PicturePoint& end = item.points[1];
    cairo_save(to);
    cairo_translate(to, from.x, from.y);
    cairo_scale(to, (end.x - from.x) / item.raster.width, (end.y - from.y) / item.raster.height);
    cairo_set_source_surface(to, image.get(), 0, 0);
    cairo_pattern_set_filter(cairo_get_source(to), CAIRO_FILTER_NEAREST);
    cairo_rectangle(to, 0, 0, item.raster.width, item.raster.height);
    cairo_fill(to);
    cairo_restore(to);
    cairo_surface_finish(image.get());
}

void AddPath(cairo_t* to, const PictureItem& item, bool pairs) {
    for (std::size_t i = 0; i < item.points.size(); ++i) {
        const PicturePoint& p = item.points[i];
        if (i == 0 || (pairs && i % 2 == 0)) {
            cairo_move_to(to, p.x, p.y);
        } else {
            cairo_line_to(to, p.x, p.y);
        }
    }
}

bool IsContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

// cairo refuses a text with bytes that are no UTF-8, as the name of a file may have, and all after it: they become '?'.
std::string ReadableText(std::string_view text) {
    std::string readable;
    while (!text.empty()) {
        const auto ones = static_cast<std::size_t>(std::countl_one(static_cast<unsigned char>(text[0])));
        const std::string_view whole = text.substr(0, std::max<std::size_t>(ones, 1));
        const bool good = ones == 0 || (ones >= 2 && ones <= 4 && whole.size() == ones &&
                                        std::ranges::all_of(whole.substr(1), IsContinuation));
        readable += good ? whole : "?";
        text.remove_prefix(good ? whole.size() : 1);
    }
    return readable;
}

void PaintText(cairo_t* to, const PictureItem& item) {
    cairo_select_font_face(to, "sans-serif", CAIRO_FONT_SLANT_NORMAL,
                           item.bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(to, item.size);
    const std::string text = ReadableText(item.text);
    cairo_text_extents_t extents;
    cairo_text_extents(to, text.c_str(), &extents);
    constexpr double middleOfCapitals = 0.36;  // of the size, above the base line
    const double part = item.anchor == TextAnchor::Start ? 0 : item.anchor == TextAnchor::Middle ? 0.5 : 1;
    cairo_save(to);
    cairo_translate(to, item.points[0].x, item.points[0].y);
    if (item.upright) cairo_rotate(to, -std::numbers::pi / 2);
    cairo_move_to(to, -part * extents.x_advance, middleOfCapitals * item.size);
    cairo_show_text(to, text.c_str());
    cairo_restore(to);
}

void PaintItem(cairo_t* to, const PictureItem& item) {
    SetColour(to, item.colour);
    cairo_set_line_width(to, item.size);
    switch (item.shape) {
        case PictureShape::Image:
            return PaintImage(to, item);
        case PictureShape::Segments:
        case PictureShape::Line:
            AddPath(to, item, item.shape == PictureShape::Segments);
            return cairo_stroke(to);
        case PictureShape::Polygon:
            AddPath(to, item, false);
            cairo_close_path(to);
            return cairo_fill(to);
        case PictureShape::Text:
            return PaintText(to, item);
        case PictureShape::Clip:
            cairo_save(to);
            cairo_rectangle(to, item.points[0].x, item.points[0].y, item.points[1].x - item.points[0].x,
                            item.points[1].y - item.points[0].y);
            return cairo_clip(to);
        case PictureShape::Unclip:
            return cairo_restore(to);
    }
}

void PaintPicture(cairo_t* to, const Picture& picture) {
    cairo_set_line_cap(to, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(to, CAIRO_LINE_JOIN_ROUND);
    for (const PictureItem& item : picture.items) PaintItem(to, item);
}

cairo_status_t Gather(void* bytes, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(bytes)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

Surface MakeSurface(const Picture& picture, PictureFormat format, double pixelsPerUnit, std::string& bytes) {
    const double width = picture.width;
    const double height = picture.height;
    switch (format) {
        case PictureFormat::Png:
            break;
        case PictureFormat::Svg:
            return Surface(
                cairo_svg_surface_create_for_stream(Gather, &bytes, pointsPerUnit * width, pointsPerUnit * height));
        case PictureFormat::Pdf:
            return Surface(
                cairo_pdf_surface_create_for_stream(Gather, &bytes, pointsPerUnit * width, pointsPerUnit * height));
    }
    return Surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(std::lround(width * pixelsPerUnit)),
                                              static_cast<int>(std::lround(height * pixelsPerUnit))));
}

}  // namespace

bool PictureFormatOf(std::string_view name, PictureFormat& format) {
    const std::string_view extension = name.substr(name.rfind('.') + 1);
    constexpr std::array<std::pair<std::string_view, PictureFormat>, 3> formats{
        {{"png", PictureFormat::Png}, {"svg", PictureFormat::Svg}, {"pdf", PictureFormat::Pdf}}};
    for (const auto& [known, its] : formats) {
        if (!EqualIgnoringCase(extension, known)) continue;
        format = its;
        return true;
    }
    return false;
}

std::string PictureBytes(const Picture& picture, PictureFormat format, double pixelsPerUnit) {
    std::string bytes;
    const Surface surface = MakeSurface(picture, format, pixelsPerUnit, bytes);
    const bool isPng = format == PictureFormat::Png;
    const Context context(cairo_create(surface.get()));
    const double scale = isPng ? pixelsPerUnit : pointsPerUnit;
    cairo_scale(context.get(), scale, scale);
    PaintPicture(context.get(), picture);
    bool good = cairo_status(context.get()) == CAIRO_STATUS_SUCCESS;
    if (isPng) good = good && cairo_surface_write_to_png_stream(surface.get(), Gather, &bytes) == CAIRO_STATUS_SUCCESS;
    cairo_surface_finish(surface.get());
    return good && cairo_surface_status(surface.get()) == CAIRO_STATUS_SUCCESS ? bytes : std::string();
}

int WritePicture(const Picture& picture, const std::string& path, PictureFormat format, double pixelsPerUnit) {
    const std::string bytes = PictureBytes(picture, format, pixelsPerUnit);
    return bytes.empty() ? ShowCannotWrite(path) : WriteOutput(path, bytes);
}

}  // namespace kaldra
