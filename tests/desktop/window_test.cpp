#include "desktop/window_test.h"

#include <QMenuBar>
#include <QMessageBox>
#include <atomic>
#include <clocale>
#include <semaphore>
#include <set>

#include "frontend/commands.h"
#include "frontend/desktop/desktop.h"
#include "frontend/desktop/graph_window.h"
#include "frontend/desktop/help_viewer.h"
#include "run/analysis.h"
#include "run/front_end.h"
#include "run/run_state.h"

namespace kaldra {

// ---------------------------------------------------------------------------------------------------------------------
// Keys and clicks, sent to the window as the window system does

// Without a window manager a window must be made active, and a new one may lose that again to late events of the window
// system: it counts when it has lasted for a while.
static bool HasSettled(QWidget& widget) {
    static QPointer<QWidget> settled;
    if (settled == widget.window() && widget.isActiveWindow()) return true;
    settled = nullptr;
    widget.activateWindow();
    if (!QTest::qWaitForWindowActive(widget.window())) return false;
    QTest::qWait(150);
    if (widget.isActiveWindow()) settled = widget.window();
    return settled != nullptr;
}

void Press(QWidget& widget, const QStringList& keys) {
    QWindow* const handle = widget.window()->windowHandle();
    QVERIFY(QTest::qWaitFor([&] { return HasSettled(widget); }));
    for (const QString& key : keys) {
        const QKeyCombination combination = QKeySequence(key)[0];
        QTest::keyClick(handle, combination.key(), combination.keyboardModifiers());
    }
}

void Click(QWidget& widget) {
    QTest::mouseClick(widget.window()->windowHandle(), Qt::LeftButton, {},
                      widget.mapTo(widget.window(), widget.rect().center()));
}

// ---------------------------------------------------------------------------------------------------------------------
// The user

constexpr int patience = 8000;  // milliseconds until a dialog comes, or until one that nobody meets is closed

User::User() {
    waited_.start();
    Look();
}

void User::Meets(const QString& name, Answer answer) {
    meetings_.push_back({name, std::move(answer)});
    waited_.start();
}

void User::Reads(const QString& text) {
    Meets("messageBox", [text](QDialog& dialog) {
        const auto& box = static_cast<QMessageBox&>(dialog);
        QCOMPARE(box.text(), text);
        QCOMPARE(box.icon(), QMessageBox::Warning);
        Press(dialog, {"Return"});
        QVERIFY(!dialog.isVisible());
    });
}

bool User::MetAll() {
    const bool met = meetings_.empty() && !gaveUp_ && QApplication::activeModalWidget() == nullptr;
    if (!met) GiveUp();
    gaveUp_ = false;
    return met;
}

// A timer of its own each time: it also runs in the loops of the dialogs that an answer opens.
void User::Look() {
    QTimer::singleShot(10, this, [this] { Look(); });
    auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (dialog == nullptr && meetings_.empty()) waited_.start();
    if (waited_.elapsed() > patience) return GiveUp();
    if (dialog == nullptr || meetings_.empty() || dialog->objectName() != meetings_.front().name) return;
    const Answer answer = std::move(meetings_.front().answer);
    meetings_.pop_front();
    waited_.start();
    if (QTest::qWaitFor([dialog] { return HasSettled(*dialog); })) answer(*dialog);
    waited_.start();
}

void User::GiveUp() {
    gaveUp_ = true;
    for (const Meeting& meeting : meetings_) qWarning("has not come: %s", qPrintable(meeting.name));
    meetings_.clear();
    waited_.start();
    while (auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
        qWarning("still open: %s %s", qPrintable(dialog->objectName()),
                 qPrintable(dialog->property("text").toString()));
        dialog->reject();
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// The gate

namespace {

std::atomic<int> iterationsLeft{0};
std::atomic<bool> held{false};
std::counting_semaphore<> opened{0};

void PassGate() {
    if (--iterationsLeft != 0) return;
    held = true;
    (void)opened.try_acquire_for(std::chrono::seconds(20));
}

}  // namespace

void Gate::HoldBehind(int iteration) {
    while (opened.try_acquire()) continue;
    iterationsLeft = iteration;
}

bool Gate::Holds() { return held; }

void Gate::Open(int nextHold) {
    iterationsLeft = nextHold;
    held = false;
    opened.release();
}

// ---------------------------------------------------------------------------------------------------------------------
// The fixture

void WindowTest::init() {
    Gate::Open();
    folder_ = std::make_unique<QTemporaryDir>();
    window = std::make_unique<MainWindow>();
    NewDocument();
    runState.startStep = 1;
    user = std::make_unique<User>();
    window->show();
    window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(window.get()));
}

void WindowTest::cleanup() {
    const bool met = user->MetAll();
    Gate::Open();
    window.reset();
    user.reset();
    QVERIFY(met);
    QVERIFY(!CalcThreadLives());
    QVERIFY(QApplication::overrideCursor() == nullptr);
}

Problem WindowTest::SlowColumn(int steps) {
    Problem column = Column(1, 9);
    column.K = {FunctionRows(1, {"0 1", "10 90"})};
    column.S = {FunctionRows(1, {"0 1", "10 1"})};
    column.materials = {"1 1 1 1 1 0"};
    column.converge = "4 1e-20 0";
    if (steps > 0) column.analysis = "2 1 0 1 0";
    for (int i = 1; i <= steps; ++i) {
        column.times.push_back(QString("%1 0.5 %2 1").arg(i).arg(i * 0.5).toStdString());
    }
    return column;
}

Problem WindowTest::FailingColumn() {
    Problem column = Column(-1, 9);
    column.elements[1] = "2 1 3 4 0 0 0 0 0 1 1 1";
    return column;
}

QString WindowTest::Write(const QString& name, const std::string& bytes) const {
    QFile file(Path(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes.data(), std::ssize(bytes)) != std::ssize(bytes)) {
        qFatal("cannot write %s", qPrintable(name));
    }
    return file.fileName();
}

void WindowTest::OpenProblem(const Problem& problem) {
    window->OpenFromCommandLine(Write("case.kdr", problem.Text()));
    QCOMPARE(window->windowTitle(), "KALDRA SOLVE - case.kdr");
}

void WindowTest::Start() {
    const QSignalSpy clicked(&Button(commandStart), &QPushButton::clicked);
    Press(*window, {"Alt+T"});
    QTRY_COMPARE(clicked.size(), 1);
}

void WindowTest::StartAndHold(int iteration) {
    Gate::HoldBehind(iteration);
    Start();
    QTRY_VERIFY(Gate::Holds());
}

void WindowTest::OpenFinishedRun(int steps) {
    OpenProblem(SlowColumn(steps));
    Start();
    QTRY_VERIFY(IsDone());
}

QStringList WindowTest::Lines() const { return desktop.panel->List().Lines(); }

QString WindowTest::Label(int id) const { return window->findChild<QLabel*>(QString("label%1").arg(id))->text(); }

QPushButton& WindowTest::Button(int id) const { return desktop.panel->Button(id); }

std::set<int> WindowTest::EnabledItems() const {
    std::set<int> ids;
    for (const QAction* const action : window->menuBar()->findChildren<QAction*>()) {
        if (action->isEnabled() && action->data().isValid()) ids.insert(action->data().toInt());
    }
    for (const PanelControl& button : PanelButtons()) {
        if (Button(button.id).isEnabled()) ids.insert(button.id);
    }
    for (const int id : {commandHelpTopics, commandUsingHelp, commandAbout}) ids.erase(id);
    return ids;
}

int RunWindowTests(int argc, char** argv, QObject& test) {
    QApplication app(argc, argv);
    std::setlocale(LC_NUMERIC, "C");
    QApplication::setQuitOnLastWindowClosed(false);
    ConnectDesktop();
    ConnectChartWindow();
    frontEnd.IterationDone = PassGate;
    HelpKey helpKey;
    app.installEventFilter(&helpKey);
    return QTest::qExec(&test, argc, argv);
}

}  // namespace kaldra
