#include "view/ground_picture.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

#include "frontend/chart_drawing.h"
#include "platform/number_text.h"
#include "view/raster.h"

namespace kaldra {

namespace {

constexpr double textSize = 13;
constexpr double legendWidth = 112;
constexpr double leftMargin = 62;
constexpr double topMargin = 40;
constexpr double bottomMargin = 34;
constexpr double rightMargin = 14;
constexpr double freeRim = 0.03;  // of the plot, around a mesh that is shown whole

constexpr Colour meshColour = Rgb(0x303030);
constexpr float meshStrength = 0.55F;
constexpr double fullMeshCell = 12;  // pixels of a cell whose lines are that strong; finer ones leave the colours alone
constexpr Colour borderColour = Rgb(0x303030);
constexpr Colour isothermColour = Rgb(0x000000);
constexpr Colour haloColour = Rgb(0xFFFFFF);
constexpr Colour arrowColour = Rgb(0x4B0082);
constexpr Colour sectionColour = Rgb(0x7B1FA2);

// What one drawing needs everywhere.
struct Canvas {
    Scene& scene;
    const GroundLook& look;
    GroundPlace place;
    GroundFill fill;
    Picture picture;
    std::vector<ScenePoint> points;  // of the cell at hand
    std::vector<PictureBox> labels;  // that stand already
};

// ---------------------------------------------------------------------------------------------------------------------
// Cells into the image

bool IsShown(const Canvas& canvas, const SceneCell& cell) {
    const PictureBox& plot = canvas.place.plot;
    const PicturePoint low = canvas.place.ToPicture(cell.left, cell.bottom);
    const PicturePoint high = canvas.place.ToPicture(cell.right, cell.top);
    return high.x >= plot.left && low.x <= plot.right && low.y >= plot.top && high.y <= plot.bottom;
}

// Pieces per side for a cell of this size: straight edges with a linear field need one.
std::int32_t PiecesFor(const Canvas& canvas, const SceneCell& cell, double fineness) {
    const std::int32_t* const nodes = model.elements[cell.element].nodes;
    const bool plain = cell.kind != SceneKind::Infinite &&
                       std::all_of(nodes + 4, nodes + slotCount, [](std::int32_t n) { return n <= 0; });
    if (plain && cell.sides != 4) return 1;
    constexpr double pixelsPerPiece = 6;
    const double size = std::max(cell.right - cell.left, cell.top - cell.bottom) * canvas.place.window.scale * fineness;
    return std::clamp(static_cast<std::int32_t>(std::min(size / pixelsPerPiece, 1e3)), plain ? 1 : 2, mostPieces);
}

struct ImageFrame {
    double left, top, fineness;
    const GroundPlace& place;
    [[nodiscard]] RasterVertex Vertex(const ScenePoint& p) const {
        const PicturePoint at = place.ToPicture(p.x, p.y);
        return {static_cast<float>((at.x - left) * fineness), static_cast<float>((at.y - top) * fineness),
                p.temperature};
    }
};

void FillCell(const Canvas& canvas, Raster& raster, const CellGrid& grid, const SceneCell& cell,
              const std::vector<RasterVertex>& at) {
    const bool bands = cell.takesPart && canvas.fill == GroundFill::Temperature;
    if (cell.takesPart && canvas.fill == GroundFill::Nothing) return;
    const Colour colour = cell.takesPart ? MaterialColour(model.elements[cell.element].material) : nullColour;
    for (const auto& [a, b, c] : grid.triangles) {
        const RasterTriangle triangle{at[a], at[b], at[c]};
        if (bands) {
            FillBands(raster, triangle, canvas.look.colours);
        } else {
            FillPlain(raster, triangle, colour);
        }
    }
}

float MeshStrength(const Canvas& canvas, const SceneCell& cell) {
    const double size = static_cast<double>(std::min(cell.right - cell.left, cell.top - cell.bottom));
    return meshStrength * static_cast<float>(std::min(1.0, size * canvas.place.window.scale / fullMeshCell));
}

void DrawRim(Raster& raster, const CellGrid& grid, const SceneCell& cell, const std::vector<RasterVertex>& at,
             float strength) {
    for (std::size_t i = 0; i + 1 < grid.rim.size(); ++i) {
        const std::size_t side = i / static_cast<std::size_t>(grid.perSide);
        if (((cell.openSides | cell.sharedSides) >> side & 1U) == 0) {
            DrawThinLine(raster, at[grid.rim[i]], at[grid.rim[i + 1]], meshColour, strength);
        }
    }
}

// Calls `draw(cell, grid, vertices)` for every cell that can be seen.
template <class Draw>
void ForCells(Canvas& canvas, const ImageFrame& frame, Draw draw) {
    std::vector<RasterVertex> at;
    for (const SceneCell& cell : canvas.scene.cells) {
        if (!IsShown(canvas, cell)) continue;
        const CellGrid& grid = GridOf(canvas.scene, cell, PiecesFor(canvas, cell, frame.fineness));
        PlaceGrid(canvas.scene, cell, grid, canvas.points);
        at.resize(canvas.points.size());
        std::ranges::transform(canvas.points, at.begin(), [&](const ScenePoint& p) { return frame.Vertex(p); });
        draw(cell, grid, at);
    }
}

// Whole pixels, so that the image is not smeared on its way to a screen.
PictureBox ImageBox(const PictureBox& plot) {
    return {std::floor(plot.left), std::floor(plot.top), std::ceil(plot.right), std::ceil(plot.bottom)};
}

void DrawCells(Canvas& canvas) {
    const PictureBox box = ImageBox(canvas.place.plot);
    const ImageFrame frame{box.left, box.top, canvas.look.fineness, canvas.place};
    Raster raster = MakeRaster(static_cast<std::int32_t>(std::lround(box.Width() * frame.fineness)),
                               static_cast<std::int32_t>(std::lround(box.Height() * frame.fineness)), paperColour);
    ForCells(canvas, frame, [&](const SceneCell& cell, const CellGrid& grid, const std::vector<RasterVertex>& at) {
        FillCell(canvas, raster, grid, cell, at);
    });
    CloseSlits(raster, paperColour);
    if (canvas.look.mesh) {
        ForCells(canvas, frame, [&](const SceneCell& cell, const CellGrid& grid, const std::vector<RasterVertex>& at) {
            DrawRim(raster, grid, cell, at, MeshStrength(canvas, cell));
        });
    }
    AddImage(canvas.picture, box, std::move(raster));
}

// ---------------------------------------------------------------------------------------------------------------------
// Over the image

const CellGrid& PlacedGrid(Canvas& canvas, const SceneCell& cell) {
    const CellGrid& grid = GridOf(canvas.scene, cell, PiecesFor(canvas, cell, 1));
    PlaceGrid(canvas.scene, cell, grid, canvas.points);
    return grid;
}

PicturePoint At(const Canvas& canvas, std::uint16_t point) {
    const ScenePoint& p = canvas.points[point];
    return canvas.place.ToPicture(p.x, p.y);
}

bool IsStraight(const SceneCell& cell, std::int32_t side) {
    return cell.kind != SceneKind::Infinite && model.elements[cell.element].nodes[4 + side] <= 0;
}

void DrawBorders(Canvas& canvas) {
    for (const SceneSide& border : canvas.scene.borders) {
        const SceneCell& cell = canvas.scene.cells[border.cell];
        if (!IsShown(canvas, cell)) continue;
        const CellGrid& grid = PlacedGrid(canvas, cell);
        std::vector<PicturePoint> line;
        const std::int32_t first = border.side * grid.perSide;
        const std::int32_t step = IsStraight(cell, border.side) ? grid.perSide : 1;
        for (std::int32_t i = first; i <= first + grid.perSide; i += step) {
            line.push_back(At(canvas, grid.rim[static_cast<std::size_t>(i)]));
        }
        AddLine(canvas.picture, std::move(line), borderColour, 1.3);
    }
}

// Adds where the freezing temperature crosses a triangle; one that is frozen or thawed as a whole has no crossing.
void CrossTriangle(const Canvas& canvas, const std::array<std::uint16_t, 3>& triangle,
                   std::vector<PicturePoint>& ends) {
    std::array<PicturePoint, 2> found;
    std::size_t count = 0;
    for (std::size_t i = 0; i < 3 && count < 2; ++i) {
        const ScenePoint& a = canvas.points[triangle[i]];
        const ScenePoint& b = canvas.points[triangle[(i + 1) % 3]];
        if ((a.temperature > model.freezingPoint) == (b.temperature > model.freezingPoint)) continue;
        const double part =
            static_cast<double>((model.freezingPoint - a.temperature) / (b.temperature - a.temperature));
        found[count++] = canvas.place.ToPicture(a.x + part * (b.x - a.x), a.y + part * (b.y - a.y));
    }
    if (count == 2) ends.insert(ends.end(), found.begin(), found.end());
}

void DrawIsotherm(Canvas& canvas) {
    std::vector<PicturePoint> ends;
    for (const SceneCell& cell : canvas.scene.cells) {
        if (!cell.takesPart || !IsShown(canvas, cell)) continue;
        const CellGrid& grid = PlacedGrid(canvas, cell);
        for (const auto& triangle : grid.triangles) CrossTriangle(canvas, triangle, ends);
    }
    const std::vector<std::vector<PicturePoint>> lines = JoinSegments(ends);
    for (const auto& line : lines) AddLine(canvas.picture, line, haloColour, 5);
    for (const auto& line : lines) AddLine(canvas.picture, line, isothermColour, 2.8);
}

// One arrow per square of the picture, that of the strongest flux there; the strongest of all has full length.
void DrawArrows(Canvas& canvas) {
    constexpr double spacing = 22;
    std::map<std::pair<int, int>, const SceneArrow*> strongest;
    const auto strength = [](const SceneArrow& a) { return std::hypot(a.fluxX, a.fluxY); };
    float most = 0;
    for (const SceneArrow& arrow : canvas.scene.arrows) {
        const PicturePoint at = canvas.place.ToPicture(arrow.x, arrow.y);
        if (!canvas.place.plot.Has(at) || !(strength(arrow) > 0)) continue;
        const std::pair square{static_cast<int>(at.x / spacing), static_cast<int>(at.y / spacing)};
        const SceneArrow*& held = strongest[square];
        if (held == nullptr || strength(arrow) > strength(*held)) held = &arrow;
        most = std::max(most, strength(arrow));
    }
    std::vector<PicturePoint> ends;
    for (const auto& [square, arrow] : strongest) {
        const double length = 1.3 * spacing * static_cast<double>(strength(*arrow) / most);
        if (length < 2) continue;
        const PicturePoint from = canvas.place.ToPicture(arrow->x, arrow->y);
        const double x = static_cast<double>(arrow->fluxX / strength(*arrow));
        const double y = -static_cast<double>(arrow->fluxY / strength(*arrow));
        const PicturePoint to{from.x + length * x, from.y + length * y};
        const double head = std::min(5.0, length / 2);
        ends.insert(ends.end(), {from, to});
        ends.insert(ends.end(), {to, {to.x - head * (x + 0.5 * y), to.y - head * (y - 0.5 * x)}});
        ends.insert(ends.end(), {to, {to.x - head * (x - 0.5 * y), to.y - head * (y + 0.5 * x)}});
    }
    AddSegments(canvas.picture, std::move(ends), arrowColour, 1.2);
}

// A square for a prescribed temperature, a diamond for a flux of any kind.
void DrawBoundaryNodes(Canvas& canvas) {
    constexpr double half = 3.2;
    for (const BoundaryNode& node : canvas.scene.boundaryNodes) {
        const PicturePoint p = canvas.place.ToPicture(node.x, node.y);
        if (!canvas.place.plot.Has(p)) continue;
        if (node.type == bcTemperature) {
            AddBox(canvas.picture, {p.x - half, p.y - half, p.x + half, p.y + half}, inkColour);
        } else {
            constexpr double tip = 1.4 * half;
            AddPolygon(canvas.picture, {{p.x, p.y - tip}, {p.x + tip, p.y}, {p.x, p.y + tip}, {p.x - tip, p.y}},
                       Rgb(0xD55E00));
        }
    }
}

std::string SectionLabel(const Canvas& canvas, std::int32_t section) {
    std::string label = FormatText("section %d", section);
    const auto index = static_cast<std::size_t>(section - 1);
    if (canvas.scene.hasStep && index < canvas.scene.sections.size()) {
        label += ": " + ShortNumber(static_cast<double>(canvas.scene.sections[index].total));
    }
    return label;
}

// Within the plot, and below every label that stands there already.
void DrawLabel(Canvas& canvas, PicturePoint at, const std::string& text, Colour colour) {
    const double width = RoughTextWidth(text, textSize) + 6;
    constexpr double half = 0.7 * textSize;
    at.x = std::min(at.x, canvas.place.plot.right - width);
    at.y = std::max(at.y, canvas.place.plot.top + textSize);
    const auto covers = [&](const PictureBox& other) {
        return at.x < other.right && at.x + width > other.left && at.y - half < other.bottom && at.y + half > other.top;
    };
    for (auto met = canvas.labels.begin(); met != canvas.labels.end();) {
        met = std::ranges::find_if(canvas.labels, covers);
        if (met != canvas.labels.end()) at.y = met->bottom + half + 1;
    }
    const PictureBox box{at.x, at.y - half, at.x + width, at.y + half};
    canvas.labels.push_back(box);
    AddBox(canvas.picture, box, haloColour);
    AddText(canvas.picture, {at.x + 3, at.y}, text, {TextAnchor::Start, textSize, true, false, colour});
}

void DrawSections(Canvas& canvas) {
    for (std::int32_t s = 1; s <= model.fluxSectionCount; ++s) {
        const FluxSection& section = model.fluxSections[IndexOf(s)];
        std::vector<PicturePoint> ends;
        for (std::size_t i = 0; i < static_cast<std::size_t>(section.lineCount); ++i) {
            const FluxLine& line = section.lines[i];
            ends.push_back(canvas.place.ToPicture(line.x1, line.y1));
            ends.push_back(canvas.place.ToPicture(line.x2, line.y2));
        }
        if (ends.empty()) continue;
        const PicturePoint last = ends.back();
        AddSegments(canvas.picture, std::move(ends), sectionColour, 2);
        if (canvas.place.plot.Has(last)) {
            DrawLabel(canvas, {last.x + 4, last.y - textSize}, SectionLabel(canvas, s), sectionColour);
        }
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Around the plot

ChartAxis AxisBetween(double low, double high, double length, double labelLength) {
    ChartAxis axis = ReadableAxis(low, high, TickIntervalsFor(length, labelLength));
    for (std::size_t i = axis.ticks.size(); i-- > 0;) {
        if (axis.ticks[i] >= low && axis.ticks[i] <= high) continue;
        axis.ticks.erase(axis.ticks.begin() + static_cast<std::ptrdiff_t>(i));
        axis.labels.erase(axis.labels.begin() + static_cast<std::ptrdiff_t>(i));
    }
    return axis;
}

void DrawAxes(Canvas& canvas) {
    const PictureBox& plot = canvas.place.plot;
    const PicturePoint low = canvas.place.ToMesh({plot.left, plot.bottom});
    const PicturePoint high = canvas.place.ToMesh({plot.right, plot.top});
    const ChartAxis x = AxisBetween(low.x, high.x, plot.Width(), RoughTextWidth("0000.0", textSize));
    const ChartAxis y = AxisBetween(low.y, high.y, plot.Height(), 2 * textSize);
    std::vector<PicturePoint> ticks;
    for (std::size_t i = 0; i < x.ticks.size(); ++i) {
        const double at = canvas.place.ToPicture(x.ticks[i], 0).x;
        ticks.insert(ticks.end(), {{at, plot.bottom}, {at, plot.bottom + 5}});
        AddText(canvas.picture, {at, plot.bottom + 15}, x.labels[i], {TextAnchor::Middle});
    }
    for (std::size_t i = 0; i < y.ticks.size(); ++i) {
        const double at = canvas.place.ToPicture(0, y.ticks[i]).y;
        ticks.insert(ticks.end(), {{plot.left - 5, at}, {plot.left, at}});
        AddText(canvas.picture, {plot.left - 8, at}, y.labels[i], {TextAnchor::End});
    }
    AddSegments(canvas.picture, std::move(ticks), inkColour, 1);
    AddFrame(canvas.picture, plot, inkColour, 1);
    AddText(canvas.picture, {plot.left, topMargin / 2}, canvas.look.title, {TextAnchor::Start, 1.15 * textSize, true});
}

double LegendLeft(const Canvas& canvas) { return canvas.place.plot.right + 16; }

// Every band when there is room for its bounds, else every second, fifth, ... of the bounds.
void DrawBandLegend(Canvas& canvas) {
    const ColourScale& scale = canvas.look.colours;
    const PictureBox& plot = canvas.place.plot;
    const double left = LegendLeft(canvas);
    const auto bands = static_cast<std::int32_t>(scale.colours.size());
    const double height = std::min(24.0, (plot.Height() - 2 * textSize) / bands);
    const double bottom = plot.top + 1.5 * textSize + height * bands;
    AddText(canvas.picture, {left, plot.top + 4}, "Temperature", {TextAnchor::Start, textSize, true});
    for (std::int32_t i = 0; i < bands; ++i) {
        const double low = bottom - height * i;
        AddBox(canvas.picture, {left, low - height, left + 20, low}, scale.colours[static_cast<std::size_t>(i)]);
    }
    AddFrame(canvas.picture, {left, bottom - height * bands, left + 20, bottom}, inkColour, 0.8);
    const std::int32_t every = std::max(1, static_cast<std::int32_t>(std::ceil(1.2 * textSize / height)));
    for (std::int32_t i = 0; i <= bands; i += every) {
        const double bound = scale.low + i * scale.BandWidth();
        const std::string label = ShortNumber(std::abs(bound) < 1e-9 * (scale.high - scale.low) ? 0 : bound);
        AddText(canvas.picture, {left + 26, bottom - height * i}, label);
    }
    const double place = (static_cast<double>(model.freezingPoint) - scale.low) / (scale.high - scale.low);
    if (!canvas.look.isotherm || place < 0 || place > 1) return;
    const double at = bottom - height * bands * place;
    AddSegments(canvas.picture, {{left - 4, at}, {left + 24, at}}, isothermColour, 2.8);
}

void DrawMaterialLegend(Canvas& canvas) {
    std::set<std::int32_t> materials;
    bool anyNull = false;
    for (const SceneCell& cell : canvas.scene.cells) {
        if (cell.takesPart) materials.insert(model.elements[cell.element].material);
        anyNull = anyNull || !cell.takesPart;
    }
    const double left = LegendLeft(canvas);
    double top = canvas.place.plot.top + 14;
    AddText(canvas.picture, {left, canvas.place.plot.top + 4}, "Materials", {TextAnchor::Start, textSize, true});
    const auto row = [&](Colour colour, const std::string& label) {
        if (top + 20 > canvas.place.plot.bottom) return;
        AddBox(canvas.picture, {left, top, left + 20, top + 16}, colour);
        AddFrame(canvas.picture, {left, top, left + 20, top + 16}, inkColour, 0.8);
        AddText(canvas.picture, {left + 26, top + 8}, label);
        top += 22;
    };
    for (const std::int32_t material : materials) row(MaterialColour(material), FormatText("%d", material));
    if (anyNull) row(nullColour, "NULL");
}

}  // namespace

PicturePoint GroundPlace::ToPicture(double x, double y) const {
    return {(plot.left + plot.right) / 2 + (x - window.centreX) * window.scale,
            (plot.top + plot.bottom) / 2 - (y - window.centreY) * window.scale};
}

PicturePoint GroundPlace::ToMesh(PicturePoint at) const {
    return {window.centreX + (at.x - (plot.left + plot.right) / 2) / window.scale,
            window.centreY - (at.y - (plot.top + plot.bottom) / 2) / window.scale};
}

GroundPlace PlaceGround(const Scene& scene, const GroundLook& look) {
    GroundPlace place;
    place.plot = {leftMargin, topMargin, std::max(look.width - rightMargin - legendWidth, leftMargin + 20),
                  std::max(look.height - bottomMargin, topMargin + 20)};
    place.window = look.window;
    if (look.window.scale > 0) return place;
    const auto extent = [](float low, float high) { return std::max(static_cast<double>(high - low), 1e-9); };
    place.window.centreX = (static_cast<double>(scene.left) + static_cast<double>(scene.right)) / 2;
    place.window.centreY = (static_cast<double>(scene.bottom) + static_cast<double>(scene.top)) / 2;
    place.window.scale = (1 - 2 * freeRim) * std::min(place.plot.Width() / extent(scene.left, scene.right),
                                                      place.plot.Height() / extent(scene.bottom, scene.top));
    return place;
}

Picture DrawGround(Scene& scene, const GroundLook& look) {
    Canvas canvas{scene, look, PlaceGround(scene, look), look.fill, {}, {}, {}};
    if (!scene.hasStep && canvas.fill == GroundFill::Temperature) canvas.fill = GroundFill::Materials;
    canvas.picture.width = look.width;
    canvas.picture.height = look.height;
    AddBox(canvas.picture, {0, 0, look.width, look.height}, paperColour);
    DrawCells(canvas);
    AddClip(canvas.picture, canvas.place.plot);
    DrawBorders(canvas);
    if (look.isotherm && scene.hasStep) DrawIsotherm(canvas);
    if (look.sections) DrawSections(canvas);
    if (look.arrows && scene.hasStep) DrawArrows(canvas);
    if (look.boundaryNodes) DrawBoundaryNodes(canvas);
    AddUnclip(canvas.picture);
    DrawAxes(canvas);
    if (canvas.fill == GroundFill::Temperature) DrawBandLegend(canvas);
    if (canvas.fill == GroundFill::Materials) DrawMaterialLegend(canvas);
    return std::move(canvas.picture);
}

}  // namespace kaldra
