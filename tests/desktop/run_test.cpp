// The control of a run from its windows: start, stop, halt, failure, end, and what happens to the windows meanwhile.
#include <QElapsedTimer>
#include <QMenuBar>
#include <QScrollBar>
#include <thread>

#include "desktop/window_test.h"
#include "frontend/desktop/desktop.h"
#include "run/analysis.h"
#include "run/front_end.h"

namespace kaldra {

using Ids = std::set<int>;

const Ids noFile{commandOpenDataFile, commandExit};
const Ids ready{commandNew,  commandOpenDataFile, commandOpenInitialConditions,
                commandExit, commandStartTime,    commandStart};

class RunTest : public WindowTest {
    Q_OBJECT

private:
    QImage RunPicture() const {
        for (const QLabel* const label : window->findChildren<QLabel*>()) {
            if (!label->pixmap().isNull()) return label->pixmap().toImage();
        }
        return {};
    }

    // During a run: its thread is told to stop and still answered until it has ended.
    void DestroyWindow() {
        QTimer::singleShot(50, [] { Gate::Open(); });
        window.reset();
        QVERIFY(!CalcThreadLives());
        QVERIFY(!Exists("case.t01"));
    }

private Q_SLOTS:
    void RunsToDone() {
        QCOMPARE(EnabledItems(), noFile);
        QCOMPARE(window->windowTitle(), "KALDRA SOLVE - (untitled)");
        OpenProblem(SlowColumn(2));
        QCOMPARE(EnabledItems(), ready);
        QCOMPARE(Label(158), "case.kdr");
        QCOMPARE(Label(160), "(none)");
        QCOMPARE(Label(204), "1");

        Start();
        QTRY_VERIFY(IsDone());
        QVERIFY(Lines().contains("Solving..."));
        QVERIFY(Exists("case.t02"));
        Ids done = ready;
        done.insert(commandGraph);
        QCOMPARE(EnabledItems(), done);
        const QStringList first = Lines();
        Click(Button(commandStart));
        QTRY_VERIFY(IsDone());
        QCOMPARE(Lines().last(first.size()), first);
    }

    void StopsBetweenIterations() {
        OpenProblem(SlowColumn(2));
        StartAndHold(1);
        const Ids running{commandStop, commandGraph};  // no halt before the second iteration
        QCOMPARE(EnabledItems(), running);
        Press(*window, {"Alt+P"});
        QTRY_COMPARE(Lines().last(), "Stopping...");
        QCOMPARE(EnabledItems(), running);
        QVERIFY(CalcThreadLives());
        Gate::Open();
        QTRY_VERIFY(IsDone());
        QVERIFY(!Exists("case.t01"));
        QCOMPARE(Lines().count("Stopping..."), 1);
        QVERIFY(EnabledItems().contains(commandStart));
    }

    void HaltsTheStepUnderWay() {
        OpenProblem(SlowColumn(2));
        StartAndHold(3);
        QVERIFY(EnabledItems().contains(commandHaltIteration));
        QVERIFY(frontEnd.IsHaltEnabled());
        Press(*window, {"Alt+I"});
        QTRY_VERIFY(!EnabledItems().contains(commandHaltIteration));
        QCOMPARE(Lines().last(), "Halting iteration and writing files to complete time step...");
        Gate::Open();
        QTRY_VERIFY(IsDone());
        QCOMPARE(Lines().filter(QRegularExpression("^ *1\t")).size(), 3);
        QVERIFY(Exists("case.t01"));
    }

    // The calculation thread waits for the box; the windows do not.
    void LivesOnBehindTheBoxOfAFailingRun() {
        OpenProblem(FailingColumn());
        user->Meets("messageBox", [this](QDialog& box) {
            const QImage before = RunPicture();
            QTRY_VERIFY(RunPicture() != before);
            Button(commandStop).click();
            QCOMPARE(Lines().last(), "Stopping...");
            QVERIFY(box.isVisible());
            QVERIFY(CalcThreadLives());
            QVERIFY(!Lines().contains("Done."));
            QVERIFY(box.property("text").toString().startsWith("Area of finite element #2 is zero or negative."));
            Press(box, {"Return"});
        });
        const QImage resting = RunPicture();
        Start();
        QTRY_VERIFY(IsDone());
        QCOMPARE(RunPicture(), resting);
        QVERIFY(Button(commandStart).isEnabled());
        QTest::qWait(600);
        QCOMPARE(RunPicture(), resting);
        QCOMPARE(window->focusWidget(), desktop.panel);
    }

    void RefusesToCloseDuringARun() {
        OpenProblem(SlowColumn(1));
        StartAndHold(1);
        user->Reads("Computation in progress.\nPress STOP before closing Windows.");
        window->windowHandle()->close();
        QVERIFY(window->isVisible());
        DestroyWindow();
    }

    void MayBeDestroyedWithALiveGraph() {
        OpenProblem(SlowColumn(2));
        StartAndHold(2);
        Click(Button(commandGraph));
        QVERIFY(desktop.graph != nullptr);
        DestroyWindow();
        QVERIFY(desktop.graph == nullptr);
    }

    // Each line moves the top by one: the list follows at its end, and stays behind where the user has scrolled back.
    void TakesTenThousandLines() {
        StatusList& list = desktop.panel->List();
        QScrollBar& bar = *list.verticalScrollBar();
        for (int i = 0; i < 40; ++i) {
            frontEnd.AppendStatus(i % 10 == 9 ? "Phase change region established." : "    1\t2\t1.000000E+000");
            const QRect last = list.visualRect(list.model()->index(i, 0));
            QVERIFY2(list.viewport()->rect().contains(last), qPrintable(QString::number(i)));
        }
        frontEnd.ClearStatus();
        std::array<qint64, 4> quarters{};  // milliseconds of each quarter of the lines
        std::thread writer([&quarters] {
            for (qint64& milliseconds : quarters) {
                QElapsedTimer clock;
                clock.start();
                for (int i = 0; i < 2500; ++i) frontEnd.AppendStatus("    1\t2\t1.000000E+000\t 1.0000E+000");
                milliseconds = clock.elapsed();
            }
        });
        QTRY_COMPARE_WITH_TIMEOUT(list.model()->rowCount(), 10000, 60000);
        writer.join();
        QVERIFY2(quarters[3] < 3 * quarters[0] + 500, qPrintable(QString("%1, %2").arg(quarters[0]).arg(quarters[3])));
        QCOMPARE(bar.value(), bar.maximum());
        QVERIFY(bar.maximum() > 9900);
        bar.setValue(100);
        frontEnd.AppendStatusPlain("plain");
        QCOMPARE(bar.value(), 100);
        frontEnd.AppendStatus("scrolling");
        QCOMPARE(bar.value(), 101);
        frontEnd.ClearStatus();
        QTRY_COMPARE(bar.value(), 0);
    }
};

}  // namespace kaldra

int main(int argc, char** argv) {
    kaldra::RunTest test;
    return kaldra::RunWindowTests(argc, argv, test);
}

#include "run_test.moc"
