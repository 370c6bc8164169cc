// Documents and dialogs: opening, dropping and forgetting a data file, the start of a run, help and information.
#include <QClipboard>
#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMimeData>
#include <QTextBrowser>
#include <QTreeWidget>

#include "desktop/window_test.h"
#include "frontend/desktop/desktop.h"
#include "frontend/desktop/graph_window.h"
#include "frontend/help_topics.h"
#include "run/run_state.h"

namespace kaldra {

class DialogTest : public WindowTest {
    Q_OBJECT

private:
    // Types a path into the file dialog that comes next and confirms it; runs `then` before the dialog is left.
    void PicksFile(const QString& path, const std::function<void(QDialog&)>& then = {}) {
        user->Meets("QFileDialog", [path, then](QDialog& dialog) {
            auto* const name = dialog.findChild<QLineEdit*>("fileNameEdit");
            QVERIFY(name != nullptr);
            name->setText(path);
            Press(dialog, {"Return"});
            if (then) then(dialog);
        });
    }

    void ChooseStartStep(int step) {
        user->Meets("startTimeDialog", [step](QDialog& dialog) {
            auto* const steps = dialog.findChild<QComboBox*>("steps");
            QCOMPARE(dialog.focusWidget(), steps);
            while (steps->currentIndex() + 1 < step) Press(dialog, {"Down"});
            Press(dialog, {"Return"});
        });
        Press(*window, {"Alt+S", "S"});
    }

    static QWidget* HelpWindow() {
        for (QWidget* const widget : QApplication::topLevelWidgets()) {
            if (widget->objectName() == "helpViewer" && widget->isVisible()) return widget;
        }
        return nullptr;
    }

    // Waits until help shows a page and its window has the keyboard, and presses keys there.
    static void Reads(const QString& page, const QStringList& keys = {}) {
        const auto shown = [] {
            return HelpWindow() == nullptr ? "" : HelpWindow()->findChild<QTextBrowser*>()->source().fileName();
        };
        QTRY_COMPARE(shown(), page);
        Press(*HelpWindow(), keys);
        if (!keys.isEmpty()) QTRY_VERIFY(shown() != page);
    }

private Q_SLOTS:
    void OpensAndForgetsAFile() {
        const QString path = Write("it's a file.kdr", SlowColumn(2).Text());
        PicksFile(path);
        Press(*window, {"Alt+F", "O"});
        QCOMPARE(window->windowTitle(), "KALDRA SOLVE - it's a file.kdr");
        QCOMPARE(QDir::currentPath(), QFileInfo(path).canonicalPath());
        QCOMPARE(Label(203), "Start Time Step:");

        user->Meets("QFileDialog", [](QDialog& dialog) { Press(dialog, {"Escape"}); });
        Press(*window, {"Alt+F", "O"});
        QCOMPARE(window->windowTitle(), "KALDRA SOLVE - it's a file.kdr");

        // The old document has gone before the new one fails.
        PicksFile(Write("bad.kdr", "nonsense\n"));
        user->Reads("Data file not compatible with present version.\nUpdate file with KALDRA DEFINE.");
        Press(*window, {"Alt+F", "O"});
        QVERIFY(user->HasMetAll());
        QCOMPARE(window->windowTitle(), "KALDRA SOLVE - (untitled)");
        OpenProblem(SlowColumn(2));
        Press(*window, {"Alt+F", "N"});
        QCOMPARE(window->windowTitle(), "KALDRA SOLVE - (untitled)");
        for (const int id : {158, 160, 162, 203, 204}) QCOMPARE(Label(id), "");
        QVERIFY(!Button(commandStart).isEnabled());
    }

    void TakesADroppedFile() {
        const auto drop = [this](const QList<QUrl>& urls) {
            QMimeData data;
            data.setUrls(urls);
            const QPoint at = window->rect().center();
            QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
            enter.ignore();
            QApplication::sendEvent(window.get(), &enter);
            if (!enter.isAccepted()) return false;
            QDropEvent event(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(window.get(), &event);
            return true;
        };
        const QUrl file = QUrl::fromLocalFile(Write("dropped file.kdr", SlowColumn(2).Text()));
        QVERIFY(!drop({file, file}));
        QVERIFY(!drop({QUrl("https://example.org/dropped.kdr")}));
        QVERIFY(drop({file}));
        QCOMPARE(window->windowTitle(), "KALDRA SOLVE - dropped file.kdr");
        StartAndHold(1);
        QVERIFY(!drop({file}));
        Gate::Open();
        QTRY_VERIFY(IsDone());
    }

    void StartsLaterFromResultsOnDisk() {
        OpenFinishedRun(3);
        user->Meets("startTimeDialog", [](QDialog& dialog) {
            const auto* const steps = dialog.findChild<QComboBox*>("steps");
            QCOMPARE(steps->count(), 3);
            QCOMPARE(steps->itemText(1).simplified(), "2 5.0000E-001 1.0000E+000 Yes");
            Press(dialog, {"Down", "Escape"});
        });
        Press(*window, {"Alt+S", "S"});
        QCOMPARE(Label(204), "1");

        ChooseStartStep(3);
        QCOMPARE(Label(204), "3");
        QCOMPARE(Label(160), "case.t02");
        QCOMPARE(Label(161), "Initial K From:");
        QCOMPARE(Label(162), "case.r02");
    }

    // A file that cannot be taken leaves the dialogs as they are; one of another problem is taken, by OK.
    void ChecksInitialConditions() {
        OpenFinishedRun(3);
        ChooseStartStep(3);
        QVERIFY(QFile::copy(Path("case.t02"), Path("other.t05")));
        user->Meets("initialConditionsDialog", [this](QDialog& dialog) {
            const auto shows = [&dialog, this](const QString& temperatures, const QString& conductivities) {
                QTRY_VERIFY(user->HasMetAll());
                QCOMPARE(dialog.findChild<QLabel*>("label610")->text(), temperatures);
                QCOMPARE(dialog.findChild<QLabel*>("label612")->text(), conductivities);
                QCOMPARE(Label(160), "case.t02");
            };
            PicksFile(Path("case.kdr"), [this](QDialog& files) {
                QTRY_VERIFY(user->HasMetAll());
                QVERIFY(files.isVisible());
                Press(files, {"Escape"});
            });
            user->Reads(
                "This initial conditions file has an invalid extension.\nSelect a different initial conditions file.");
            Press(dialog, {"Alt+O"});
            shows("case.t02", "case.r02");
            PicksFile(Path("other.t05"), [](QDialog& files) { QVERIFY(!files.isVisible()); });
            Press(dialog, {"Alt+O"});
            shows("other.t05", "(none)");
            Press(dialog, {"Return"});
        });
        Press(*window, {"Alt+F", "I"});
        QCOMPARE(Label(160), "other.t05");

        user->Meets("initialConditionsDialog", [](QDialog& dialog) {
            Click(*dialog.findChild<QPushButton*>("clearAll"));
            Press(dialog, {"Return"});
        });
        Press(*window, {"Alt+F", "I"});
        QCOMPARE(Label(160), "(none)");
        QCOMPARE(Label(162), "");
    }

    void TellsAboutItselfAndTheSystem() {
        user->Meets("aboutDialog", [this](QDialog& about) {
            user->Meets("systemInformationDialog", [&about](QDialog& dialog) {
                QVERIFY(!about.isEnabled());
                QCOMPARE(dialog.findChild<QTreeWidget*>("systemLines")->topLevelItemCount(), 7);
                QVERIFY(dialog.findChild<QTreeWidget*>("volumeLines")->topLevelItemCount() > 0);
                Press(dialog, {"Return"});
            });
            Press(about, {"Alt+S"});
            QTRY_VERIFY(user->HasMetAll());
            QTRY_VERIFY(about.isEnabled());
            Press(about, {"Return"});
        });
        Press(*window, {"Alt+H", "A"});
    }

    // F1 gives the page of what is in front; a modal dialog leaves the help to the user.
    void HelpsByF1() {
        Press(*window, {"F1"});
        Reads("contents.html");
        OpenProblem(SlowColumn(2));
        Press(*window, {"Alt+F", "F1"});
        Reads("new-and-exit.html");
        QVERIFY(QApplication::activePopupWidget() == nullptr);
        Press(*window, {"Alt+F", "Down", "F1"});
        Reads("open-data-file.html");
        Press(*window, {"Alt+H", "U"});
        Reads("using-help.html");

        const auto helps = [this](const QString& dialog, const QString& page) {
            user->Meets(dialog, [page](QDialog& shown) {
                Press(shown, {"F1"});
                Reads(page, {"Alt+C"});
                Reads("contents.html");
                Press(shown, {"Escape"});
            });
        };
        helps("startTimeDialog", "start-time.html");
        Press(*window, {"Alt+S", "S"});
        helps("initialConditionsDialog", "open-initial-conditions.html");
        Press(*window, {"Alt+F", "I"});
        helps("QFileDialog", "open-data-file.html");
        Press(*window, {"Alt+F", "O"});
        QCOMPARE(window->windowTitle(), "KALDRA SOLVE - case.kdr");
    }

    // Every page of the table exists, and every link leads somewhere.
    void HelpPagesHangTogether() {
        for (const auto& page : HelpPages()) {
            QFile file(":/help/" + QString::fromUtf8(page.file));
            QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.fileName()));
            const QString text = QString::fromUtf8(file.readAll());
            auto links = QRegularExpression("(?:href|src)=\"([^\"#]+)").globalMatch(text);
            while (links.hasNext()) {
                const QString target = links.next().captured(1);
                QVERIFY2(QFile::exists(":/help/" + target), qPrintable(file.fileName() + " to " + target));
            }
        }
    }
};

}  // namespace kaldra

int main(int argc, char** argv) {
    kaldra::DialogTest test;
    return kaldra::RunWindowTests(argc, argv, test);
}

#include "dialog_test.moc"
