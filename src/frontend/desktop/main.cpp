// kaldra-solve: the desktop program.

#include <QApplication>
#include <QSessionManager>
#include <QTimer>

#include "frontend/desktop/application.h"
#include "frontend/desktop/desktop.h"
#include "frontend/desktop/graph_window.h"
#include "frontend/desktop/help_viewer.h"
#include "frontend/desktop/main_window.h"
#include "run/run_state.h"

int main(int argc, char** argv) {
    using namespace kaldra;
    QApplication app(argc, argv);
    runState.startStep = 1;
    SetUpApplication("kaldra-solve");
    ConnectDesktop();
    ConnectChartWindow();
    MainWindow window;
    HelpKey helpKey;
    app.installEventFilter(&helpKey);
    QObject::connect(&app, &QGuiApplication::commitDataRequest, &window, [](QSessionManager& session) {
        if (!MayEndSession()) session.cancel();
    });
    window.show();
    const QString file = FileOfCommandLine();
    if (!file.isEmpty()) QTimer::singleShot(0, &window, [&window, file] { window.OpenFromCommandLine(file); });
    return QApplication::exec();
}
