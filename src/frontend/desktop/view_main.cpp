// kaldra-view: looks at the ground.

#include <QApplication>
#include <QTimer>
#include <cstdio>
#include <string_view>

#include "frontend/desktop/application.h"
#include "frontend/desktop/view_window.h"

namespace {

// The answer to an option that asks for no window; null: none is there. It needs no screen.
const char* AnswerTo(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--version") return "kaldra-view " KALDRA_VERSION;
        if (argument == "--help" || argument == "-h") {
            return "Usage: kaldra-view [FILE.kdr]\nShows the ground of a data file and its saved results.";
        }
    }
    return nullptr;
}

}  // namespace

int main(int argc, char** argv) {
    using namespace kaldra;
    if (const char* const answer = AnswerTo(argc, argv)) return std::puts(answer) < 0;
    QApplication app(argc, argv);
    SetUpApplication("kaldra-view");
    ViewWindow window;
    window.show();
    const QString file = FileOfCommandLine();
    if (!file.isEmpty()) QTimer::singleShot(0, &window, [&window, file] { window.OpenFile(file); });
    return QApplication::exec();
}
