#include "run/messages.h"

#include "platform/files.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

using Messages = KaldraTest;

TEST_F(Messages, TellTheErrorOfTheFailedCallOnce) {
    EXPECT_FALSE(DeleteFile(Path("none")));
    EXPECT_EQ(ShowError(1020) + ShowErrorWithText(1150, std::string(300, 'x')), 0);
    ShowComposedMessage(1194, 7, 0, 0, 1195, boxExclamation);
    ShowComposedMessage(1194, 0, 1050, 8, 1195, boxExclamation);
    Rows shown;
    for (const MessageBox& box : TakeBoxes()) shown.push_back(box.caption + ": " + box.text);
    const std::string area = "KALDRA SOLVE: Area of finite element #";
    const std::string bad = " is zero or negative.\nVerify data in KALDRA DEFINE.";
    const std::string cut = "Error: Cannot read Data file, check line:\n" + std::string(155, 'x');  // 190 in all
    EXPECT_THAT(shown, ElementsAre("Error 2: Cannot open Data file.", cut, area + "7" + bad, area + "0Done.8" + bad));
    EXPECT_EQ(StringText(9999), "");
}

}  // namespace
}  // namespace kaldra
