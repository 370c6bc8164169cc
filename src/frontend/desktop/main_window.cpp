#include "frontend/desktop/main_window.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLayout>
#include <QMenuBar>
#include <QMimeData>
#include <QStyle>

#include "frontend/commands.h"
#include "frontend/desktop/desktop.h"
#include "frontend/desktop/dialogs.h"
#include "frontend/desktop/help_viewer.h"
#include "frontend/desktop/menus.h"
#include "frontend/graph.h"
#include "model/file_names.h"
#include "model/problem_model.h"
#include "run/front_end.h"
#include "run/messages.h"
#include "run/run_state.h"

namespace kaldra {

MainWindow::MainWindow() : panel_(new ControlPanel(this)) {
    setAcceptDrops(true);
    setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                   Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
    desktop.main = this;
    desktop.panel = panel_;
    setCentralWidget(panel_);
    FillMenuBar(*menuBar(), MainMenu(), this, [this](int id) { Command(id); });
    connect(panel_, &ControlPanel::Pressed, this, &MainWindow::Command);
    setFocusProxy(panel_);
    layout()->setSizeConstraint(QLayout::SetFixedSize);
    UpdateMenus();
}

// A window that is destroyed under a run stops it first: the thread must not outlive what it reports to.
MainWindow::~MainWindow() {
    runState.running = 0;
    WaitForCalcThread();
    frontEnd.CloseGraphWindow();
    CloseHelp();
    (void)FreeModel();
    desktop.main = nullptr;
    desktop.panel = nullptr;
}

void MainWindow::UpdateMenus() {
    for (QAction* const action : findChildren<QAction*>()) {
        if (action->data().isValid()) action->setEnabled(IsCommandEnabled(action->data().toInt()));
    }
    setWindowTitle(QString::fromStdString(MainWindowTitle()));
}

// ---------------------------------------------------------------------------------------------------------------------
// Documents

// The working folder is that of the open document.
static void EnterFolder(int opened) {
    if (opened == 1) QDir::setCurrent(QFileInfo(QString::fromStdString(model.dataFileName)).absolutePath());
}

// The old document goes first, even if the new file then fails.
void MainWindow::ReplaceDocument(const QString& path) {
    repaint();
    const WaitCursor wait;
    EnterFolder(OpenChosenFile(TruePath(path.toStdString())));
}

void MainWindow::ChooseDataFile() {
    QFileDialog dialog(this, QString::fromUtf8(StringText(1076)));
    QStringList filters;
    for (const FileFilter& filter : FileFilters(1077)) filters << QString::fromStdString(filter.name);
    dialog.setNameFilters(filters);
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setProperty(helpDialogProperty, 21101);
    if (dialog.exec() == QDialog::Accepted) ReplaceDocument(dialog.selectedFiles().value(0));
}

void MainWindow::OpenFromCommandLine(const QString& name) {
    const WaitCursor wait;
    EnterFolder(OpenNamedFile(name.toStdString()));
}

// ---------------------------------------------------------------------------------------------------------------------
// Commands

void MainWindow::Command(int id) {
    switch (id) {
        case commandNew:
            return NewDocument();
        case commandOpenDataFile:
            return ChooseDataFile();
        case commandOpenInitialConditions:
            return RunInitialConditions(this);
        case commandExit:
            close();
            return;
        case commandStartTime:
            return RunStartTime(this);
        case commandAbout:
            return RunAbout(this);
        case commandHelpTopics:
            return ShowHelpContents();
        case commandUsingHelp:
            return ShowHelpForMenu(id);
        case commandStart:
            (void)Start();
            return;
        case commandStop:
            return Stop();
        case commandHaltIteration:
            return HaltIteration();
        case commandGraph: {
            const WaitCursor wait;
            return OpenGraph();
        }
        default:
            return;
    }
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (!MayEndSession()) {
        event->ignore();
        return;
    }
    event->accept();
    if (desktop.graph != nullptr) CloseGraph();
    CloseHelp();  // the program ends with its last window
}

void MainWindow::focusInEvent(QFocusEvent*) { panel_->setFocus(); }

// ---------------------------------------------------------------------------------------------------------------------
// A file dropped on the window

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    const QList<QUrl> urls = event->mimeData()->urls();
    const bool opens = urls.size() == 1 && urls[0].isLocalFile() && IsCommandEnabled(commandOpenDataFile);
    if (opens) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
    if (!IsCommandEnabled(commandOpenDataFile)) return;
    event->acceptProposedAction();
    ReplaceDocument(event->mimeData()->urls().value(0).toLocalFile());
}

}  // namespace kaldra
