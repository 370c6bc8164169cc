// A data file that is looked at while its results come and go, and its pictures as files.

#include "view/view_session.h"

#include <algorithm>
#include <filesystem>

#include "support/kaldra_test.h"
#include "view/picture_file.h"
#include "view/warming_column.h"

namespace kaldra {
namespace {

class ViewSessions : public KaldraTest {
protected:
    std::string File() const { return Path("case.kdr"); }
    ViewSession session;
};

TEST_F(ViewSessions, StepsAreShownAndReadAhead) {
    ASSERT_EQ(Run(WarmingColumn()).result, 1);
    ASSERT_EQ(OpenView(session, File()), 1);
    EXPECT_EQ(session.shown, 2);  // the last
    EXPECT_EQ(TitleOf(session), "case.kdr    step 3, time 3");
    EXPECT_FALSE(session.hasRange);
    while (ReadAhead(session)) continue;
    EXPECT_EQ(session.readAhead, 3);
    EXPECT_EQ(session.least, -1);
    EXPECT_NEAR(session.greatest, 19, 1e-3);
    ASSERT_EQ(ShowStep(session, 0), 1);
    EXPECT_NEAR(session.scene.greatest, 9, 1e-3);
    EXPECT_EQ(ShowStep(session, 3), 0);
    EXPECT_EQ(session.shown, 0);

    EXPECT_EQ(ScaleOf(session, {}).high, 20);
    EXPECT_EQ(ScaleOf(session, {false}).high, 9);
    EXPECT_EQ(ScaleOf(session, {true, true, -3, 3, 4}).colours.size(), 4);

    const std::vector<PicturePoint> history = HistorySheet(session, 5).curves[0].pieces[0];
    ASSERT_EQ(history.size(), 3);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(history[static_cast<std::size_t>(i)].x, i + 1);
        EXPECT_NEAR(history[static_cast<std::size_t>(i)].y, 9 + 5 * i, 1e-3);
    }
    const std::vector<PicturePoint> along = SectionSheet(session, {0.5, 0}, {0.5, 2}).curves[0].pieces[0];
    EXPECT_NEAR(along.front().y, -1, 0.05);
    EXPECT_NEAR(along.back().y, 9, 0.05);
    EXPECT_THAT(ProbeText(session, 0.5, 1.9), testing::HasSubstr("conductivity 2 "));
    EXPECT_EQ(ProbeText(session, 3, 3), "");

    CurveSheet depth;
    CurveSheet trumpet;
    ASSERT_TRUE(ThawSheets(session, 0.5, depth, trumpet));
    EXPECT_EQ(depth.curves[0].pieces[0].size(), 3);
    ASSERT_EQ(depth.curves[1].pieces.size(), 3);  // a crossing in each step, thawed above
    EXPECT_NEAR(depth.curves[1].pieces[0][0].y, 1.8, 1e-3);
    EXPECT_TRUE(depth.curves[2].pieces.empty());
    ASSERT_EQ(depth.curves[3].pieces.size(), 1);
    EXPECT_NEAR(depth.curves[3].pieces[0][0].y, 1.9, 1e-3);
    EXPECT_NEAR(trumpet.curves[1].pieces[0].front().x, 19, 1e-3);  // the greatest at the surface
    EXPECT_FALSE(ThawSheets(session, 7, depth, trumpet));
}

TEST_F(ViewSessions, RefreshFollowsTheFiles) {
    const Problem column = WarmingColumn();
    WriteFile("case.kdr", column.Text());
    ASSERT_EQ(OpenView(session, File()), 1);
    EXPECT_EQ(session.shown, noStep);
    EXPECT_EQ(TitleOf(session), "case.kdr");
    EXPECT_EQ(session.scene.cells.size(), 4);
    ASSERT_EQ(Run(column).result, 1);
    ASSERT_EQ(RefreshView(session), 1);
    ASSERT_EQ(ShowStep(session, 1), 1);
    const std::string bytes = ReadFile("case.r03");
    while (ReadAhead(session)) continue;                       // keeps the step
    WriteFile("case.r03", bytes.substr(0, bytes.size() / 2));  // as if it were being written
    EXPECT_EQ(ShowStep(session, 2), 0);
    EXPECT_THAT(TakeMessages(), ElementsAre(5002));
    ASSERT_EQ(RefreshView(session), 1);
    EXPECT_EQ(session.set.steps.size(), 2);
    EXPECT_EQ(TitleOf(session), "case.kdr    step 2, time 2");
    std::filesystem::remove(Path("case.t01"));
    EXPECT_EQ(ShowStep(session, 0), 0);
    EXPECT_THAT(TakeMessages(), ElementsAre(5002));
    EXPECT_EQ(session.shown, 1);
    std::filesystem::remove(File());
    EXPECT_EQ(RefreshView(session), 0);
    EXPECT_FALSE(session.isOpen);
    EXPECT_THAT(TakeMessages(), ElementsAre(1020));
}

TEST_F(ViewSessions, PicturesBecomeFiles) {
    Picture picture;
    picture.width = 100;
    picture.height = 50;
    AddBox(picture, {0, 0, 100, 50}, Rgb(0x3366CC));
    AddText(picture, {50, 25}, "t\xE9xt \xC3\xA9", {TextAnchor::Middle});  // Latin 1, UTF-8
    struct Case {
        const char* name;
        const char* begin;
    };
    for (const Case& c : {Case{"a.PNG", "\x89PNG\r\n"}, {"a.svg", "<?xml"}, {"a.pdf", "%PDF-"}}) {
        PictureFormat format{};
        ASSERT_TRUE(PictureFormatOf(c.name, format));
        ASSERT_EQ(WritePicture(picture, Path(c.name), format, 2), 1);
        EXPECT_TRUE(ReadFile(c.name).starts_with(c.begin)) << c.name;
        EXPECT_FALSE(HasFile(c.name + std::string(".part")));
    }
    EXPECT_EQ(ReadFile("a.PNG").substr(16, 8), std::string("\0\0\0\xC8\0\0\0\x64", 8));  // 200 by 100
    PictureFormat format{};
    EXPECT_FALSE(PictureFormatOf("a.gif", format));
    EXPECT_EQ(WritePicture(picture, Path("no/such/folder.png"), PictureFormat::Png), 0);
    EXPECT_THAT(TakeMessages(), ElementsAre(5003));
}

}  // namespace
}  // namespace kaldra
