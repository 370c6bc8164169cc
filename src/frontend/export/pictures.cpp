#include "frontend/export/pictures.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

#include "model/file_names.h"
#include "model/problem_model.h"
#include "platform/memory.h"
#include "platform/number_text.h"
#include "view/view_session.h"

namespace kaldra {

namespace {

constexpr double leastSide = 200;
constexpr double greatestSide = 8000;
constexpr double imageFineness = 2;  // of the image within SVG and PDF, per pixel of the picture

struct Layer {
    const char* name;
    bool GroundLook::*field;
};

constexpr std::array<Layer, 5> layers{{{"isotherm", &GroundLook::isotherm},
                                       {"mesh", &GroundLook::mesh},
                                       {"arrows", &GroundLook::arrows},
                                       {"nodes", &GroundLook::boundaryNodes},
                                       {"sections", &GroundLook::sections}}};

// Two numbers with a character between them.
bool ReadPair(std::string_view text, char between, double& a, double& b) {
    const char* const end = text.data() + text.size();
    const auto first = std::from_chars(text.data(), end, a);
    if (first.ec != std::errc() || first.ptr == end || *first.ptr != between) return false;
    const auto second = std::from_chars(first.ptr + 1, end, b);
    return second.ec == std::errc() && second.ptr == end && std::isfinite(a) && std::isfinite(b);
}

// The name of a picture, without its folder's part changed.
std::string PictureName(const PictureOrder& order, std::int32_t step, PictureFormat format) {
    const std::string extension = pictureFormats[static_cast<std::size_t>(format)];
    const std::string number = NeedsNoStep(order) ? std::string() : FormatText("%02d.", step);
    return ReplaceExtension(model.dataFileName, FormatText(".%s.%s%s", order.kind, number, extension));
}

[[nodiscard]] int MakePicture(const PictureOrder& order, Scene& scene, GroundLook look, std::int32_t step,
                              std::vector<std::string>& written) {
    for (const PictureFormat format : order.formats) {
        look.fineness = format == PictureFormat::Png ? 1 : imageFineness;
        const std::string path = PictureName(order, step, format);
        if (!WritePicture(DrawGround(scene, look), path, format)) return 0;
        if (!AppendRecord(written, path)) return 0;
    }
    return 1;
}

// The range of all steps in turn, for a scale that stays the same.
[[nodiscard]] int ReadRange(ViewSession& session) {
    while (ReadAhead(session)) continue;
    return session.readAhead == session.set.steps.size();
}

ScaleChoice ChoiceOf(const PictureOrder& order) {
    return {order.scale == "fixed", !order.range.empty(), order.low, order.high, order.bands};
}

}  // namespace

void AddPictureOptions(CLI::App& app, PictureOrder& order) {
    app.add_option("--picture", order.kind, "draw the temperature of the steps, or the materials")
        ->option_text("temperature|materials")
        ->check(CLI::IsMember({"temperature", "materials"}));
    app.add_option("--size", order.size, "size of a picture in pixels of 1/96 inch (default: 960x640)")
        ->option_text("WIDTHxHEIGHT");
    app.add_option("--range", order.range, "temperatures of the first and the last band (default: of the results)")
        ->option_text("LOW:HIGH");
    app.add_option("--bands", order.bands, "number of bands, 1 to 100 (default: of a readable width)")
        ->option_text("N");
    app.add_option("--scale", order.scale, "the same colours in all steps, or those of each (default: fixed)")
        ->option_text("fixed|step")
        ->check(CLI::IsMember({"fixed", "step"}));
    app.add_option("--layers", order.layers,
                   "isotherm, mesh, arrows, nodes, sections (default: isotherm,mesh,sections)")
        ->option_text("NAME[,NAME...]")
        ->delimiter(',')
        ->check(CLI::IsMember({"isotherm", "mesh", "arrows", "nodes", "sections", "none"}));
}

std::string CheckPictureOrder(PictureOrder& order, std::vector<std::string>& formats) {
    for (std::size_t i = 0; i < std::size(pictureFormats); ++i) {
        if (std::erase(formats, pictureFormats[i]) == 0) continue;
        order.formats.push_back(static_cast<PictureFormat>(i));
        if (order.kind.empty()) return FormatText("%s is a format of --picture", pictureFormats[i]);
    }
    if (order.formats.empty()) order.formats.push_back(PictureFormat::Png);
    GroundLook& look = order.look;
    if (!ReadPair(order.size, 'x', look.width, look.height) || std::min(look.width, look.height) < leastSide ||
        std::max(look.width, look.height) > greatestSide) {
        return "--size takes WIDTHxHEIGHT, each from 200 to 8000";
    }
    if (!order.range.empty() && (!ReadPair(order.range, ':', order.low, order.high) || order.low >= order.high)) {
        return "--range takes LOW:HIGH, the lower one first";
    }
    if (order.bands < 0 || order.bands > mostBands) return "--bands takes a number from 1 to 100";
    for (const Layer& layer : layers) look.*layer.field = std::ranges::count(order.layers, layer.name) > 0;
    look.fill = order.kind == "materials" ? GroundFill::Materials : GroundFill::Temperature;
    return {};
}

bool NeedsNoStep(const PictureOrder& order) { return order.kind == "materials"; }

int MakePictures(const PictureOrder& order, const ResultSet& set, const std::vector<SavedStep>& steps,
                 std::vector<std::string>& written) {
    if (order.kind.empty()) return 1;
    ViewSession session;
    session.path = model.dataFileName;
    session.isOpen = true;
    if (!BuildScene(session.scene)) return 0;
    GroundLook look = order.look;
    look.title = TitleOf(session);
    if (NeedsNoStep(order)) return MakePicture(order, session.scene, look, 0, written);
    session.set = set;
    const ScaleChoice choice = ChoiceOf(order);
    if (choice.fixedOverSteps && !choice.given && !ReadRange(session)) return 0;
    for (std::size_t i = 0; i < set.steps.size(); ++i) {
        const std::int32_t step = set.steps[i].step;
        if (std::ranges::count(steps, step, &SavedStep::step) == 0) continue;
        if (!ShowStep(session, i)) return 0;
        look.title = TitleOf(session);
        look.colours = ScaleOf(session, choice);
        if (!MakePicture(order, session.scene, look, step, written)) return 0;
    }
    return 1;
}

}  // namespace kaldra
