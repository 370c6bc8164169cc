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
    void OpenGraphWindow() {
        Click(Button(commandGraph));
        QVERIFY(desktop.graph != nullptr);
        QVERIFY(QTest::qWaitForWindowExposed(desktop.graph));
    }

    static std::size_t Points() { return ShownDrawing().x.size(); }

    // Pixels that have the colour of the curve.
    static int CurvePixels(const QImage& picture) {
        int count = 0;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) count += picture.pixelColor(x, y) == QColor(0, 114, 178) ? 1 : 0;
        }
        return count;
    }
    static int Painted() { return CurvePixels(desktop.graph->View().grab().toImage()); }

    static QLineEdit& Field(QDialog& dialog, int id) {
        return *dialog.findChild<QLineEdit*>(QString("field%1").arg(id));
    }

    // Types the range and the interval into the options and confirms them.
    static void ConfirmOptions(QDialog& dialog, const QStringList& texts) {
        int at = 0;
        for (const int id : {201, 152, 183}) {
            Field(dialog, id).setFocus();
            Field(dialog, id).selectAll();
            Press(dialog, {"Del"});
            QTest::keyClicks(&Field(dialog, id), texts[at++]);
        }
        Press(dialog, {"Return"});
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

        Press(*desktop.graph, {"Alt+F", "C"});
        QTRY_VERIFY(desktop.graph == nullptr);
        QVERIFY(Button(commandGraph).isEnabled());
        OpenGraphWindow();
        desktop.graph->windowHandle()->close();  // as the window system does
        QTRY_VERIFY(desktop.graph == nullptr);
        QVERIFY(Button(commandGraph).isEnabled());
        QVERIFY(window->isVisible());
    }

    // The window outlives runs: each redraws it from its first iteration on.
    void FollowsRuns() {
        OpenProblem(SlowColumn(2));
        StartAndHold(2);
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

        StartAndHold(2);
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
    }

    // The first field that is wrong is named and gets the focus.
    void ChecksOptions() {
        OpenProblem(SlowColumn(1));
        StartAndHold(3);
        OpenGraphWindow();
        user->Meets("graphOptionsDialog", [&](QDialog& dialog) {
            QCOMPARE(dialog.focusWidget(), &Field(dialog, 201));
            QCOMPARE(Field(dialog, 201).selectedText(), "1");
            QVERIFY(!dialog.findChild<QComboBox*>("field205")->isEnabled());
            Press(dialog, {"Alt+M"});
            QTRY_VERIFY(!Field(dialog, 183).isEnabled());
            Press(dialog, {"Alt+A"});
            QTRY_VERIFY(Field(dialog, 183).isEnabled());
            const QString number = "Data value must be a positive integer.";
            const QString order = "Ending Iteration must be greater than Starting Iteration.";
            for (const auto& [texts, wrong, message] : {std::tuple(QStringList{"", "x", "x"}, 201, number),
                                                        {{"2", "2", "x"}, 152, order},
                                                        {{"1", "2", "0"}, 183, number}}) {
                user->Reads(message);
                ConfirmOptions(dialog, texts);
                QVERIFY(user->HasMetAll());
                QVERIFY(dialog.isVisible());
                QCOMPARE(dialog.focusWidget(), &Field(dialog, wrong));
                QCOMPARE(Field(dialog, wrong).selectedText(), Field(dialog, wrong).text());
            }
            Press(dialog, {"Escape"});
        });
        Press(*desktop.graph, {"Alt+S", "O"});
        QCOMPARE(Points(), 0U);
        user->Meets("graphOptionsDialog", [](QDialog& dialog) { ConfirmOptions(dialog, {"2", "3", "2"}); });
        Press(*desktop.graph, {"Alt+S", "O"});
        QCOMPARE(Points(), 2U);
        Gate::Open();
        QTRY_VERIFY(IsDone());
    }

    void ChoosesStepAndLook() {
        OpenFinishedRun(3);
        OpenGraphWindow();
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
        QCOMPARE(Painted(), 0);
        Press(*desktop.graph, {"Alt+U"});
        QCOMPARE(ShownDrawing().title, "Step Number 3");
    }

    void CopiesAndSavesItsPicture() {
        QVERIFY(!SaveChartPicture(Path("chart.png")));  // no window
        OpenFinishedRun(0);
        OpenGraphWindow();
        QApplication::clipboard()->clear();
        Press(*desktop.graph, {"Alt+E", "C"});
        const QMimeData* const data = QApplication::clipboard()->mimeData();
        QVERIFY(data->hasImage() && data->hasText());
        const auto picture = qvariant_cast<QImage>(data->imageData());
        QCOMPARE(picture.size(), desktop.graph->View().size() * desktop.graph->devicePixelRatioF());
        QCOMPARE(data->text().toStdString(), CurveText(ShownDrawing()));
        QVERIFY(SaveChartPicture(Path("chart.png")));
        const QImage saved(Path("chart.png"));
        QCOMPARE(saved.pixelColor(1, 1), QColor(Qt::white));
        QVERIFY(CurvePixels(saved) > 0);
        QVERIFY(!SaveChartPicture(Path("no such folder/chart.png")));
    }

    // The pages of a file: as many as copies, in the chosen orientation, each with the lines and symbols of the curve.
    // A file that cannot be written does not spoil the printer.
    void PrintsToAFile() {
        OpenFinishedRun(0);
        OpenGraphWindow();
        user->Reads("Cannot write to printer.");
        QCOMPARE(PrintChart({"", Path("no such folder/chart.pdf").toStdString(), 1, printDefault}), 0);
        QVERIFY(user->HasMetAll());
        for (const auto& [orientation, copies] : {std::pair(printPortrait, 1), {printLandscape, 2}}) {
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
    }
};

}  // namespace kaldra

int main(int argc, char** argv) {
    kaldra::GraphTest test;
    return kaldra::RunWindowTests(argc, argv, test);
}

#include "graph_test.moc"
