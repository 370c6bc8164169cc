#include "frontend/desktop/desktop.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QMessageBox>
#include <QThread>
#include <atomic>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <string>

#include "frontend/desktop/control_panel.h"
#include "frontend/desktop/graph_window.h"
#include "frontend/desktop/main_window.h"
#include "frontend/graph.h"
#include "run/analysis.h"
#include "run/front_end.h"
#include "run/run_state.h"

namespace kaldra {

Desktop desktop;

namespace {

// Mirrors the Halt Iteration button, so that the calculation thread can ask without waiting.
std::atomic<bool> haltEnabled{false};

// What the calculation thread asks of the windows, done one after the other on their thread. The queue is our own and
// the toolkit's event no more than a knock: so the thread sanitizer, which does not see into the toolkit, sees the
// tasks change hands.
class Errands : public QObject {
public:
    using QObject::QObject;

    std::future<void> Add(std::function<void()> work) {
        std::packaged_task<void()> errand(std::move(work));
        std::future<void> done = errand.get_future();
        {
            const std::scoped_lock lock(lock_);
            waiting_.push_back(std::move(errand));
        }
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
        return done;
    }

    bool event(QEvent* event) override {
        if (event->type() != QEvent::User) return QObject::event(event);
        std::packaged_task<void()> errand;
        {
            const std::scoped_lock lock(lock_);
            errand = std::move(waiting_.front());
            waiting_.pop_front();
        }
        errand();
        return true;
    }

private:
    std::mutex lock_;
    std::deque<std::packaged_task<void()>> waiting_;
};

Errands* errands = nullptr;  // from ConnectDesktop on, a child of the application

// Runs `task` on the thread of the windows and waits for its end; directly when called there. The caller must not hold
// a lock that the windows take.
template <class Task>
void OnFrontEndThread(const Task& task) {
    if (QThread::currentThread() == errands->thread()) return task();
    errands->Add(std::cref(task)).wait();
}

void AppendLine(std::string_view text, int scroll) {
    OnFrontEndThread([&] {
        if (desktop.panel != nullptr) {
            desktop.panel->List().AppendLine(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())),
                                             scroll);
        }
    });
}

void RunFinished(int result) {
    (void)errands->Add([result] {
        HandleCalcThreadMsg(runFinishedMessage, result);
        if (desktop.panel != nullptr) desktop.panel->List().ScrollBy(2);
    });
}

void SetHaltEnabled(bool enabled) {
    OnFrontEndThread([&] {
        haltEnabled = enabled;
        if (desktop.panel != nullptr) desktop.panel->Button(commandHaltIteration).setEnabled(enabled);
    });
}

void UpdateButtonState() {
    if (desktop.panel == nullptr) return;
    desktop.panel->UpdateButtons();
    haltEnabled = desktop.panel->Button(commandHaltIteration).isEnabled();
}

// The box belongs to the window that the user works in, and stays while the windows go on living.
void ShowMessage(const MessageBox& box) {
    OnFrontEndThread([&] {
        QApplication::beep();
        QWidget* const owner = QApplication::activeModalWidget() != nullptr ? QApplication::activeModalWidget()
                                                                            : static_cast<QWidget*>(desktop.main);
        QMessageBox dialog(QMessageBox::Warning, QString::fromStdString(box.caption), QString::fromStdString(box.text),
                           QMessageBox::Ok, owner);
        dialog.setTextFormat(Qt::PlainText);
        dialog.setObjectName("messageBox");
        dialog.exec();
    });
}

// Other programs of the package may listen on the session bus; where there is none, nobody misses it.
void ResultsChanged() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;
    bus.send(QDBusMessage::createSignal("/org/kaldra/Solve", "org.kaldra.Solve", "ProblemRefresh"));
}

void* OpenGraphWindow() {
    desktop.graph = new GraphWindow(desktop.panel);
    desktop.graph->show();
    return desktop.graph;
}

void RepaintMainWindow() {
    if (desktop.main == nullptr) return;
    desktop.main->repaint();
    desktop.panel->setFocus();
}

}  // namespace

void ConnectDesktop() {
    errands = new Errands(QCoreApplication::instance());
    frontEnd.AppendStatus = [](std::string_view text) { AppendLine(text, 1); };
    frontEnd.AppendStatusPlain = [](std::string_view text) { AppendLine(text, 0); };
    frontEnd.ClearStatus = [] {
        if (desktop.panel != nullptr) desktop.panel->List().Clear();
    };
    frontEnd.RunFinished = RunFinished;
    frontEnd.GraphDataReady = [] { OnFrontEndThread(DrawGraphData); };
    frontEnd.ResultsChanged = ResultsChanged;
    frontEnd.SetHaltEnabled = SetHaltEnabled;
    frontEnd.IsHaltEnabled = [] { return haltEnabled.load(); };
    frontEnd.UpdateMenuState = [] {
        if (desktop.main != nullptr) desktop.main->UpdateMenus();
    };
    frontEnd.UpdateButtonState = UpdateButtonState;
    frontEnd.UpdatePanelLabels = [] {
        if (desktop.panel != nullptr) desktop.panel->UpdateLabels();
    };
    frontEnd.ShowRunIcon = [](bool running) {
        if (desktop.panel == nullptr) return;
        desktop.panel->ShowIcon(running);
        desktop.panel->repaint();
    };
    frontEnd.StartRunAnimation = [] {
        OnFrontEndThread([] {
            if (desktop.panel != nullptr) desktop.panel->Animate(true);
        });
    };
    frontEnd.StopRunAnimation = [] {
        if (desktop.panel != nullptr) desktop.panel->Animate(false);
    };
    frontEnd.OpenGraphWindow = OpenGraphWindow;
    frontEnd.CloseGraphWindow = [] { delete desktop.graph; };
    frontEnd.RepaintGraph = [] {
        if (desktop.graph != nullptr) desktop.graph->View().repaint();
    };
    frontEnd.SetGraphEnabled = [](bool enabled) {
        if (desktop.panel != nullptr) desktop.panel->Button(commandGraph).setEnabled(enabled);
    };
    frontEnd.RepaintMainWindow = RepaintMainWindow;
    frontEnd.ShowMessage = ShowMessage;
    frontEnd.Beep = [] { QApplication::beep(); };
}

void WaitForCalcThread() {
    while (CalcThreadLives()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

}  // namespace kaldra
