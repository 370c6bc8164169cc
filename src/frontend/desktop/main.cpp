// kaldra-solve: the desktop program.

#include <QApplication>
#include <QProxyStyle>
#include <QSessionManager>
#include <QTimer>
#include <clocale>

#include "frontend/desktop/desktop.h"
#include "frontend/desktop/graph_window.h"
#include "frontend/desktop/help_viewer.h"
#include "frontend/desktop/main_window.h"
#include "model/problem_model.h"
#include "run/run_state.h"

namespace {

// Buttons of dialogs bear words alone.
class PlainStyle : public QProxyStyle {
public:
    using QProxyStyle::QProxyStyle;

    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* more) const override {
        if (hint == SH_DialogButtonBox_ButtonsHaveIcons) return 0;
        return QProxyStyle::styleHint(hint, option, widget, more);
    }
};

}  // namespace

int main(int argc, char** argv) {
    using namespace kaldra;
    QApplication app(argc, argv);
    std::setlocale(LC_NUMERIC, "C");  // the toolkit takes the user's; data and result files know one alone
    QApplication::setApplicationName("kaldra-solve");
    QApplication::setApplicationDisplayName({});
    QApplication::setApplicationVersion(KALDRA_VERSION);
    QApplication::setDesktopFileName("kaldra-solve");
    QApplication::setStyle(new PlainStyle("Fusion"));
    QApplication::setWindowIcon(QIcon(":/kaldra-solve.svg"));

    runState.startStep = 1;
    InitModel(0);
    InitModel(1);
    ConnectDesktop();
    ConnectChartWindow();
    MainWindow window;
    HelpKey helpKey;
    app.installEventFilter(&helpKey);
    QObject::connect(&app, &QGuiApplication::commitDataRequest, &window, [](QSessionManager& session) {
        if (!MayEndSession()) session.cancel();
    });
    window.show();
    const QString file = QCoreApplication::arguments().mid(1).join(' ');  // all behind the program's name is one name
    if (!file.isEmpty()) QTimer::singleShot(0, &window, [&window, file] { window.OpenFromCommandLine(file); });
    return QApplication::exec();
}
