#include "frontend/desktop/help_viewer.h"

#include <QApplication>
#include <QFile>
#include <QKeyEvent>
#include <QMainWindow>
#include <QMenu>
#include <QPointer>
#include <QTextBrowser>
#include <QToolBar>
#include <QWindow>

#include "frontend/desktop/desktop.h"
#include "frontend/help_topics.h"
#include "run/messages.h"

namespace kaldra {

namespace {

// One window for all pages. It belongs to no dialog, so that it can stand beside a modal one.
class HelpViewer : public QMainWindow {
public:
    HelpViewer() {
        setObjectName("helpViewer");
        setWindowTitle(tr("KALDRA SOLVE Help"));
        setWindowModality(Qt::NonModal);
        setCentralWidget(&browser_);
        browser_.setSearchPaths({":/help"});
        browser_.setOpenExternalLinks(false);
        auto* const bar = addToolBar(tr("Pages"));
        bar->setMovable(false);
        const auto add = [bar](const QString& text, const QKeySequence& keys) {
            QAction* const action = bar->addAction(text);
            action->setShortcut(keys);  // a tool bar knows no mnemonics
            return action;
        };
        connect(add(tr("Contents"), QKeySequence("Alt+C")), &QAction::triggered, this, [this] { Show(helpContents); });
        connect(add(tr("Back"), QKeySequence("Alt+B")), &QAction::triggered, &browser_, &QTextBrowser::backward);
        connect(add(tr("Forward"), QKeySequence("Alt+F")), &QAction::triggered, &browser_, &QTextBrowser::forward);
        resize(640, 560);
    }

    void Show(int topic) {
        const std::string_view name = HelpPageFile(topic);
        const QString page = QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
        if (!QFile::exists(":/help/" + page)) {
            ShowError(1290);
            return;
        }
        browser_.setSource(QUrl("qrc:/help/" + page));
        StandBeside(QApplication::activeModalWidget());
        show();
        raise();
        activateWindow();
    }

private:
    // A modal dialog lets no window take input but those that stand above it.
    void StandBeside(const QWidget* dialog) {
        winId();  // makes the handle
        QWindow* const above = dialog != nullptr ? dialog->windowHandle() : nullptr;
        if (windowHandle()->transientParent() == above) return;
        hide();
        windowHandle()->setTransientParent(above);
    }

    QTextBrowser browser_;
};

QPointer<HelpViewer> viewer;

void ShowTopic(int topic) {
    if (!viewer) viewer = new HelpViewer;
    viewer->Show(topic);
}

// What the user asks about: the item of an open menu, the dialog in front, or nothing in particular.
void ShowHelpHere() {
    if (const auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())) {
        const QAction* const action = menu->activeAction();
        const int topic = HelpTopicForRequest(action == nullptr, action != nullptr ? action->data().toInt() : 0);
        while (QWidget* const popup = QApplication::activePopupWidget()) popup->close();
        return ShowTopic(topic);
    }
    const QWidget* const dialog = QApplication::activeModalWidget();
    const QVariant id = dialog != nullptr ? dialog->property(helpDialogProperty) : QVariant();
    if (id.isValid()) return ShowHelpForDialog(id.toInt());
    ShowTopic(HelpTopicForRequest(true, 0));
}

}  // namespace

void ShowHelpForMenu(int id) { ShowTopic(id == helpUsingHelp ? helpUsingHelp : HelpTopicForMenu(id)); }

void ShowHelpForDialog(int id) { ShowTopic(HelpTopicForDialog(id)); }

void ShowHelpContents() { ShowTopic(helpContents); }

void ShowHelpForView() { ShowTopic(helpView); }

void CloseHelp() { delete viewer; }

bool HelpKey::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::ShortcutOverride && event->type() != QEvent::KeyPress) {
        return QObject::eventFilter(watched, event);
    }
    if (static_cast<QKeyEvent*>(event)->key() != Qt::Key_F1) return QObject::eventFilter(watched, event);
    event->accept();
    if (event->type() == QEvent::KeyPress) ShowHelpHere();
    return true;
}

}  // namespace kaldra
