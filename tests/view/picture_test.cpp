// Pictures judged by their colours at known points.

#include "view/picture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>

#include "view/curve_picture.h"
#include "view/ground_picture.h"
#include "view/raster.h"
#include "view/view_scene.h"

namespace kaldra {
namespace {

using Pictures = ViewTest;

const PictureItem& Image(const Picture& picture) {
    return *std::ranges::find(picture.items, PictureShape::Image, &PictureItem::shape);
}

// The colour that the image has at a place of the mesh.
Colour ColourAt(const Picture& picture, const GroundPlace& place, double x, double y) {
    const PictureItem& image = Image(picture);
    const PicturePoint p = place.ToPicture(x, y);
    const double fineness = image.raster.width / (image.points[1].x - image.points[0].x);
    const auto i = static_cast<std::size_t>((p.x - image.points[0].x) * fineness);
    const auto j = static_cast<std::size_t>((p.y - image.points[0].y) * fineness);
    return image.raster.pixels[j * static_cast<std::size_t>(image.raster.width) + i];
}

bool IsBlue(Colour c) { return (c & 0xFFU) > ((c >> 16) & 0xFFU); }

TEST(ColourScales, FreezingPartsBlueFromRed) {
    struct Case {
        double low, high;
        std::int32_t bands;
        double freezing;
        std::size_t expected;  // bands
        std::size_t blue;      // of them
    };
    for (const Case& c : {Case{-4, 12, 8, 0, 8, 2}, Case{-4, 12, 0, 0, 8, 2}, Case{-3.9, 11.2, 0, 0, 8, 2},
                          Case{-5, -1, 4, 0, 4, 4}, Case{1, 5, 4, 0, 4, 0}, Case{-2, 2, 4, -1, 4, 1},
                          Case{3, 3, 5, 0, 5, 0}, Case{0, 1, 1000, 0, 100, 0}, Case{NAN, 2, 3, 0, 3, 0}}) {
        const ColourScale scale = MakeColourScale(c.low, c.high, c.bands, c.freezing);
        EXPECT_EQ(scale.colours.size(), c.expected) << c.low;
        EXPECT_EQ(std::ranges::count_if(scale.colours, IsBlue), c.blue) << c.low;
        EXPECT_GT(scale.BandWidth(), 0);
        EXPECT_EQ(BandColour(scale, -1e9), scale.colours.front());
        EXPECT_EQ(BandColour(scale, 1e9), scale.colours.back());
    }
    const ColourScale given = MakeColourScale(-3.7, 12.1, 3, 0);
    EXPECT_DOUBLE_EQ(given.low, -3.7);
    EXPECT_DOUBLE_EQ(given.high, 12.1);
    EXPECT_EQ(BandColour(given, 7), given.colours[2]);
}

// A fan around a point inside, with edges in all directions: every pixel belongs to one triangle.
TEST(Rasters, NeighboursLeaveNoSeamAndNoOverlap) {
    constexpr std::int32_t size = 64;
    const std::vector<RasterVertex> rim{{-5, -5, 0}, {20.5F, -9, 0}, {80, -3, 0}, {75, 32.5F, 0},
                                        {70, 90, 0}, {31.5F, 70, 0}, {-8, 71, 0}, {-3, 31.7F, 0}};
    std::vector<int> covered(size * size);
    for (std::size_t i = 0; i < rim.size(); ++i) {
        Raster raster = MakeRaster(size, size, paperColour);
        FillPlain(raster, {RasterVertex{31.5F, 32.5F, 0}, rim[i], rim[(i + 1) % rim.size()]}, inkColour);
        for (std::size_t p = 0; p < covered.size(); ++p) covered[p] += raster.pixels[p] == inkColour ? 1 : 0;
    }
    EXPECT_EQ(std::ranges::count(covered, 1), size * size);
}

TEST(Rasters, LinesAreCutAndSlitsClosed) {
    Raster raster = MakeRaster(8, 4, paperColour);
    DrawThinLine(raster, {-100, 1.5F, 0}, {100, 1.5F, 0}, inkColour, 1);
    EXPECT_EQ(std::ranges::count(raster.pixels, inkColour), 8);
    EXPECT_EQ(raster.pixels[8], inkColour);
    DrawThinLine(raster, {2.5F, 50, 0}, {2.5F, -50, 0}, inkColour, 1);
    EXPECT_EQ(std::ranges::count(raster.pixels, inkColour), 11);
    DrawThinLine(raster, {20, 1, 0}, {30, 3, 0}, inkColour, 1);
    EXPECT_EQ(std::ranges::count(raster.pixels, inkColour), 11);
    raster = MakeRaster(3, 3, inkColour);
    raster.pixels[4] = paperColour;
    CloseSlits(raster, paperColour);
    EXPECT_EQ(raster.pixels[4], inkColour);
}

// The same field on plain and on bent elements: each place has the colour of its temperature, whatever the mesh.
TEST_F(Pictures, BandsShowALinearField) {
    const LinearField field{-4, 3, -1.5};
    GroundLook look;
    look.mesh = false;
    look.colours = MakeColourScale(-8, 8, 16, 0);
    for (const Problem& problem : {Quadrilateral({}), Quadrilateral({true, true, true, true}), BentTriangle()}) {
        Show(problem, field);
        for (const double fineness : {1.0, 2.0}) {
            look.fineness = fineness;
            const GroundPlace place = PlaceGround(scene, look);
            const Picture picture = DrawGround(scene, look);
            for (const double x : {0.31, 0.79, 1.23, 1.57}) {
                for (const double y : {0.21, 0.83, 1.36}) {
                    EXPECT_EQ(ColourAt(picture, place, x, y), BandColour(look.colours, field.At(x, y)))
                        << x << ' ' << y;
                }
            }
            EXPECT_EQ(ColourAt(picture, place, 3.9, 2.4), paperColour);
        }
    }
}

TEST_F(Pictures, NullElementsAreGreyAndMaterialsHaveTheirColours) {
    Problem column = Column();
    column.materials.push_back("2 0 0 0 0 0");
    column.materials.push_back("3 1 0 1 1 0");
    column.elements[0] = "1 1 2 4 0 0 0 0 0 3 1 1 0 0";
    column.elements[3] = "4 3 6 5 0 0 0 0 0 2 1 1 0 0";
    Show(column, {-1, 0, 5});
    GroundLook look;
    look.mesh = false;
    look.colours = MakeColourScale(-1, 9, 10, 0);
    const GroundPlace place = PlaceGround(scene, look);
    EXPECT_EQ(ColourAt(DrawGround(scene, look), place, 0.7, 0.3), look.colours.colours[1]);
    EXPECT_EQ(ColourAt(DrawGround(scene, look), place, 0.3, 1.7), nullColour);
    look.fill = GroundFill::Materials;
    EXPECT_EQ(ColourAt(DrawGround(scene, look), place, 0.7, 0.3), MaterialColour(3));
    EXPECT_EQ(ColourAt(DrawGround(scene, look), place, 0.3, 0.7), MaterialColour(1));
    EXPECT_EQ(ColourAt(DrawGround(scene, look), place, 0.3, 1.7), nullColour);
    look.fill = GroundFill::Temperature;
    scene.hasStep = false;
    EXPECT_EQ(ColourAt(DrawGround(scene, look), place, 0.7, 0.3), MaterialColour(3));  // before there are results
}

// The isotherm of a field that rises by 5 per unit from -1 at the bottom lies at 0.2.
TEST_F(Pictures, TheFreezingIsothermLiesWhereItIsFreezing) {
    Show(Quadrilateral({true, true, true, true}), {-1, 0, 5});
    GroundLook look;
    const Picture picture = DrawGround(scene, look);
    const double expected = PlaceGround(scene, look).ToPicture(0, 0.2).y;
    std::size_t points = 0;
    for (const PictureItem& item : picture.items) {
        if (item.shape != PictureShape::Line || item.size != 2.8) continue;
        points += item.points.size();
        for (const PicturePoint& p : item.points) EXPECT_NEAR(p.y, expected, 0.01);
    }
    EXPECT_GT(points, 10);
}

TEST(PictureLines, SegmentsAreJoinedWhereTheyMeet) {
    const std::vector<PicturePoint> ends{{1, 0}, {2, 0}, {9, 9}, {8, 8}, {1, 0}, {0, 0}, {3, 0}, {2, 0}};
    for (const auto& [most, lines, longest] : {std::array{64, 2, 4}, {3, 3, 3}}) {
        const auto joined = JoinSegments(ends, static_cast<std::size_t>(most));
        EXPECT_EQ(joined.size(), lines);
        EXPECT_EQ(joined[0].size(), longest);
        for (std::size_t i = 1; i < joined[0].size(); ++i) {
            EXPECT_EQ(std::abs(joined[0][i].x - joined[0][i - 1].x), 1);
        }
    }
}

TEST_F(Pictures, AWindowKeepsEqualScalesAndMapsBothWays) {
    Problem column = Column();
    column.flux = {"1 1\n1 0.25 0.5 0.75 0.5", "2 1\n1 0.25 0.5 0.75 0.5"};
    Show(column, {});
    GroundLook look;
    look.arrows = true;
    for (const GroundWindow& window : {GroundWindow{}, {0.5, 1, 500}}) {
        look.window = window;
        const GroundPlace place = PlaceGround(scene, look);
        const PicturePoint a = place.ToPicture(0.25, 0.5);
        EXPECT_NEAR(place.ToPicture(0.35, 0.5).x - a.x, a.y - place.ToPicture(0.25, 0.6).y, 1e-9);
        EXPECT_NEAR(place.ToMesh(a).x, 0.25, 1e-9);
        EXPECT_NEAR(place.ToMesh(a).y, 0.5, 1e-9);
        EXPECT_TRUE(place.plot.Has(a));
        const Picture picture = DrawGround(scene, look);
        const auto label = std::ranges::find(picture.items, "section 1: 12.5", &PictureItem::text);
        const auto other = std::ranges::find(picture.items, "section 2: 12.5", &PictureItem::text);
        ASSERT_TRUE(label != picture.items.end() && other != picture.items.end());
        EXPECT_GT(other->points[0].y - label->points[0].y, label->size);  // neither covers the other
    }
}

TEST(CurveSheets, PointsLieOnTheirAxes) {
    CurveSheet sheet;
    sheet.xTitle = "Distance";
    sheet.yTitle = "Temperature";
    sheet.curves.push_back({"", {{{0, -4}, {10, 4}}, {{5, 0}}}});
    const Picture picture = DrawCurves(sheet);
    const auto line = std::ranges::find_if(picture.items, [&](const PictureItem& item) {
        return item.shape == PictureShape::Line && item.colour == sheet.curves[0].colour;
    });
    ASSERT_NE(line, picture.items.end());
    EXPECT_EQ(line->points[0].x, 84);  // the ends of both ranges are ticks
    EXPECT_EQ(line->points[0].y, sheet.height - 58);
    EXPECT_EQ(line->points[1].y, 40);
    EXPECT_EQ(CurvesText(sheet), "Distance\tTemperature\n0\t-4\n10\t4\n5\t0\n");
}

}  // namespace
}  // namespace kaldra
