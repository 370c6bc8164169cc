// kaldra-view: looks at the ground.

#include <QApplication>
#include <QTimer>
#include <clocale>
#include <cstdio>

#include "frontend/desktop/view_window.h"
#include "run/run_state.h"

int main(int argc, char** argv) {
    using namespace kaldra;
    QApplication app(argc, argv);
    std::setlocale(LC_NUMERIC, "C");  // the toolkit takes the user's; data and result files know one alone
    QApplication::setApplicationName("kaldra-view");
    QApplication::setApplicationDisplayName({});
    QApplication::setApplicationVersion(KALDRA_VERSION);
    QApplication::setDesktopFileName("kaldra-view");
    QApplication::setStyle("Fusion");
    QApplication::setWindowIcon(QIcon(":/kaldra-view.svg"));
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.contains("--version")) return std::printf("kaldra-view %s\n", KALDRA_VERSION) < 0;
    if (arguments.contains("--help") || arguments.contains("-h")) {
        return std::printf("Usage: kaldra-view [FILE.kdr]\nShows the ground of a data file and its saved results.\n") <
               0;
    }
    InitModel(0);
    InitModel(1);
    ViewWindow window;
    window.show();
    const QString file = arguments.join(' ');  // all behind the program's name is one name
    if (!file.isEmpty()) QTimer::singleShot(0, &window, [&window, file] { window.OpenFile(file); });
    return QApplication::exec();
}
