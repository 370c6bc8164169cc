// The graph window: its curve while idle and during a run, its options, copying and printing.
#include <QClipboard>
#include <QComboBox>
#include <QLineEdit>
#include <QMenuBar>
#include <QMimeData>
#include <algorithm>

#include "desktop/window_test.h"
#include "frontend/chart_drawing.h"
#include "frontend/desktop/desktop.h"
#include "frontend/desktop/graph_window.h"
#include "frontend/print_fit.h"

namespace kaldra {

class GraphTest : public WindowTest {
    Q_OBJECT

private:
    void OpenFinishedRun(int steps) {
        OpenProblem(SlowColumn(steps));
        Start();
        QTRY_VERIFY(IsDone());
    }

    void OpenGraphWindow() {
        Click(Button(commandGraph));
        QVERIFY(desktop.graph != nullptr);
        QVERIFY(QTest::qWaitForWindowExposed(desktop.graph));
    }

    static std::size_t Points() { return ShownDrawing().x.size(); }

    // Pixels of the view that have the colour of the curve.
    static int Painted() {
        const QImage picture = desktop.graph->View().grab().toImage();
        int count = 0;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) count += picture.pixelColor(x, y) == QColor(0, 114, 178) ? 1 : 0;
        }
        return count;
    }

    static QLineEdit& Field(QDialog& dialog, int id) {
        return *dialog.findChild<QLineEdit*>(QString("field%1").arg(id));
    }

    static void Type(QDialog& dialog, int id, const QString& text) {
        Field(dialog, id).setFocus();
        Field(dialog, id).selectAll();
        Press(dialog, {"Del"});
        QTest::keyClicks(&Field(dialog, id), text);
    }

    // All content streams of a PDF file, unpacked.
    static QByteArray PdfContents(const QByteArray& pdf) {
        QByteArray all;
        const QByteArray begin = "stream\n";
        for (qsizetype at = pdf.indexOf(begin); at >= 0; at = pdf.indexOf(begin, at)) {
            at += begin.size();
            const qsizetype end = pdf.indexOf("endstream", at);
            if (pdf[at] == 'x') all += qUncompress(QByteArray(4, '\0') + pdf.mid(at, end - at));
            at = end + begin.size() + 2;
        }
        return all;
    }

private Q_SLOTS:
    void ShowsTheLastStepWhenIdle() {
        OpenFinishedRun(3);
        QVERIFY(Button(commandGraph).isEnabled());
        OpenGraphWindow();
        QCOMPARE(desktop.graph->windowTitle(), "Convergence - case.kdr");
        QCOMPARE(ShownDrawing().title, "Step Number 3");
        QCOMPARE(Points(), 4U);
        QVERIFY(Painted() > 100);
        QVERIFY(!Button(commandGraph).isEnabled());
        Press(*desktop.graph, {"Alt+U"});
        QCOMPARE(Points(), 4U);

        Press(*desktop.graph, {"Alt+F", "C"});
        QTRY_VERIFY(desktop.graph == nullptr);
        QVERIFY(Button(commandGraph).isEnabled());
        OpenGraphWindow();
        desktop.graph->windowHandle()->close();  // as the window system does
        QTRY_VERIFY(desktop.graph == nullptr);
        QVERIFY(Button(commandGraph).isEnabled());
        QVERIFY(window->isVisible());
        OpenGraphWindow();
        Press(*window, {"Alt+F", "N"});
        QVERIFY(desktop.graph == nullptr);
    }

    // The window outlives runs: each redraws it from its first iteration on.
    void FollowsRuns() {
        OpenProblem(SlowColumn(2));
        Gate::HoldBehind(2);
        Start();
        QTRY_VERIFY(Gate::Holds());
        OpenGraphWindow();
        QVERIFY(!ShownDrawing().drawn);
        QCOMPARE(Painted(), 0);
        Gate::Open(1);
        QTRY_VERIFY(Gate::Holds());
        QCOMPARE(Points(), 3U);
        QVERIFY(Painted() > 100);
        Gate::Open();
        QTRY_VERIFY(IsDone());
        QCOMPARE(ShownDrawing().title, "Step Number 2");
        QCOMPARE(Points(), 4U);

        Gate::HoldBehind(2);
        Start();
        QTRY_VERIFY(Gate::Holds());
        QCOMPARE(ShownDrawing().title, "Step Number 1");
        QCOMPARE(Points(), 2U);
        desktop.graph->windowHandle()->close();
        QTRY_VERIFY(desktop.graph == nullptr);
        QVERIFY(Button(commandGraph).isEnabled());
        OpenGraphWindow();
        Press(*desktop.graph, {"Alt+U"});
        QCOMPARE(Points(), 2U);
        Gate::Open();
        QTRY_VERIFY(IsDone());
        QVERIFY(Exists("case.t02"));
        Press(*desktop.graph, {"Alt+U"});
        QCOMPARE(Points(), 4U);
    }

    // A history that cannot be read leaves a window without a curve, and the program goes on.
    void StaysBlankWithoutAHistory() {
        OpenFinishedRun(0);
        QFile::remove(Path("case.cnp"));
        user->Meets("messageBox", [](QDialog& box) {
            QCOMPARE(box.property("text").toString(), "Cannot open Convergence file.");
            Press(box, {"Return"});
        });
        OpenGraphWindow();
        QVERIFY(user->HasMetAll());
        QVERIFY(!ShownDrawing().drawn);
        QCOMPARE(Painted(), 0);
        Start();
        QTRY_VERIFY(IsDone());
        QCOMPARE(Points(), 4U);
    }

    // The first field that is wrong is named and gets the focus; 0 for none.
    void ChecksOptions_data() {
        QTest::addColumn<QString>("start");
        QTest::addColumn<QString>("end");
        QTest::addColumn<QString>("interval");
        QTest::addColumn<int>("wrong");
        QTest::addColumn<QString>("message");
        const QString number = "Data value must be a positive integer.";
        const QString order = "Ending Iteration must be greater than Starting Iteration.";
        // clang-format off
        QTest::newRow("start is empty") << "" << "x" << "x" << 201 << number;
        QTest::newRow("end is not behind the start") << "2" << "2" << "x" << 152 << order;
        QTest::newRow("interval is 0") << "1" << "2" << "0" << 183 << number;
        QTest::newRow("right") << "2" << "3" << "2" << 0 << "";
        // clang-format on
    }
    void ChecksOptions() {
        QFETCH(QString, start);
        QFETCH(QString, end);
        QFETCH(QString, interval);
        QFETCH(int, wrong);
        QFETCH(QString, message);
        OpenProblem(SlowColumn(1));
        Gate::HoldBehind(3);
        Start();
        QTRY_VERIFY(Gate::Holds());
        OpenGraphWindow();
        user->Meets("graphOptionsDialog", [&](QDialog& dialog) {
            QCOMPARE(dialog.focusWidget(), &Field(dialog, 201));
            QCOMPARE(Field(dialog, 201).selectedText(), "1");
            QVERIFY(!dialog.findChild<QComboBox*>("field205")->isEnabled());
            Press(dialog, {"Alt+M"});
            QTRY_VERIFY(!Field(dialog, 183).isEnabled());
            Press(dialog, {"Alt+A"});
            QTRY_VERIFY(Field(dialog, 183).isEnabled());
            Type(dialog, 201, start);
            Type(dialog, 152, end);
            Type(dialog, 183, interval);
            if (wrong != 0) user->Reads(message);
            Press(dialog, {"Return"});
            if (wrong == 0) return;
            QVERIFY(user->HasMetAll());
            QVERIFY(dialog.isVisible());
            QCOMPARE(dialog.focusWidget(), &Field(dialog, wrong));
            QCOMPARE(Field(dialog, wrong).selectedText(), Field(dialog, wrong).text());
            Press(dialog, {"Escape"});
        });
        Press(*desktop.graph, {"Alt+S", "O"});
        QCOMPARE(Points(), wrong == 0 ? 2U : 0U);
        Gate::Open();
        QTRY_VERIFY(IsDone());
    }

    void ChoosesStepAndLook() {
        OpenFinishedRun(3);
        OpenGraphWindow();
        const int coloured = Painted();
        user->Meets("graphOptionsDialog", [](QDialog& dialog) {
            auto* const steps = dialog.findChild<QComboBox*>("field205");
            QCOMPARE(steps->count(), 3);
            QCOMPARE(steps->currentText().simplified(), "3 1.5000E+000");
            QVERIFY(!Field(dialog, 183).isEnabled());
            steps->setFocus();
            Press(dialog, {"Up", "Alt+Y", "Alt+C"});
            QTest::qWait(300);  // until the keys have their effect
            Press(dialog, {"Return"});
        });
        Press(*desktop.graph, {"Alt+S", "O"});
        QCOMPARE(ShownDrawing().title, "Step Number 2");
        QVERIFY(!ShownDrawing().marksPoints);
        QVERIFY(!ShownDrawing().coloured);
        QVERIFY(coloured > 100);
        QCOMPARE(Painted(), 0);
        Press(*desktop.graph, {"Alt+U"});
        QCOMPARE(ShownDrawing().title, "Step Number 3");
    }

    void CopiesPictureAndText() {
        OpenFinishedRun(0);
        OpenGraphWindow();
        QApplication::clipboard()->clear();
        Press(*desktop.graph, {"Alt+E", "C"});
        const QMimeData* const data = QApplication::clipboard()->mimeData();
        QVERIFY(data->hasImage() && data->hasText());
        const auto picture = qvariant_cast<QImage>(data->imageData());
        QCOMPARE(picture.size(), desktop.graph->View().size() * desktop.graph->devicePixelRatioF());
        const QStringList lines = data->text().split('\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 5);
        QCOMPARE(lines[0].simplified(), "Iteration # Vector Norm");
        QCOMPARE(lines[4].section('\t', 0, 0), "4");
    }

    // The pages of a file: as many as copies, in the chosen orientation, each with the lines and symbols of the curve.
    void PrintsToAFile_data() {
        QTest::addColumn<int>("orientation");
        QTest::addColumn<int>("copies");
        QTest::newRow("portrait") << printPortrait << 1;
        QTest::newRow("landscape, two copies") << printLandscape << 2;
    }
    void PrintsToAFile() {
        QFETCH(int, orientation);
        QFETCH(int, copies);
        OpenFinishedRun(0);
        OpenGraphWindow();
        QCOMPARE(PrintChart({"", Path("a chart.pdf").toStdString(), copies, orientation}), 1);
        QFile file(Path("a chart.pdf"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray pdf = file.readAll();
        QVERIFY(pdf.startsWith("%PDF-"));
        QCOMPARE(pdf.count("/Type /Page\n"), copies);
        const auto box = QRegularExpression("/MediaBox \\[0 0 ([0-9.]+) ([0-9.]+)").match(QString::fromLatin1(pdf));
        QVERIFY(box.hasMatch());
        QCOMPARE(box.captured(1).toDouble() > box.captured(2).toDouble(), orientation == printLandscape);
        const QString contents = QString::fromLatin1(PdfContents(pdf));
        QCOMPARE(contents.count(QRegularExpression("\n0 0\\.447\\d* 0\\.698\\d* SCN\n")), copies);
        QCOMPARE(contents.count("f*\n"), 4 * copies);
    }

    void SavesAPicture() {
        QVERIFY(!SaveChartPicture(Path("chart.png")));  // no window
        OpenFinishedRun(0);
        OpenGraphWindow();
        QVERIFY(SaveChartPicture(Path("chart.png")));
        const QImage picture(Path("chart.png"));
        QCOMPARE(picture.pixelColor(1, 1), QColor(Qt::white));
        bool curve = false;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) curve = curve || picture.pixelColor(x, y) == QColor(0, 114, 178);
        }
        QVERIFY(curve);
        QVERIFY(!SaveChartPicture(Path("no such folder/chart.png")));
    }

    void SaysThatAPrinterCannotBeWrittenTo() {
        OpenFinishedRun(0);
        OpenGraphWindow();
        user->Reads("Cannot write to printer.");
        QCOMPARE(PrintChart({"", Path("no such folder/chart.pdf").toStdString(), 1, printDefault}), 0);
        QVERIFY(user->HasMetAll());
        QCOMPARE(PrintChart({"", Path("chart.pdf").toStdString(), 1, printDefault}), 1);
    }
};

}  // namespace kaldra

int main(int argc, char** argv) {
    kaldra::GraphTest test;
    return kaldra::RunWindowTests(argc, argv, test);
}

#include "graph_test.moc"
