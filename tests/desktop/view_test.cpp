// kaldra-view: what its window shows of a file and its results, and what mouse and commands do to it.

#include <QClipboard>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QMimeData>
#include <QProcess>
#include <cmath>

#include "desktop/window_test.h"
#include "frontend/desktop/view_window.h"
#include "model/problem_model.h"
#include "view/warming_column.h"

namespace kaldra {

class ViewWindowTest : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> folder_;
    std::unique_ptr<ViewWindow> window_;

    [[nodiscard]] QString Path(const QString& name) const { return folder_->filePath(name); }
    QString Write(const QString& name, const std::string& bytes) const {
        QFile file(Path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes.data(), std::ssize(bytes)) < 0) qFatal("cannot write");
        return file.fileName();
    }
    void Compute(const Problem& problem) const {
        Write("case.kdr", problem.Text());
        QCOMPARE(QProcess::execute(KALDRA_RUN, {"-q", Path("case.kdr")}), 0);
    }
    void OpenComputed() {
        Compute(WarmingColumn());
        window_->OpenFile(Path("case.kdr"));
        QTRY_COMPARE(window_->Session().readAhead, 3);
    }
    [[nodiscard]] GroundView& View() const { return window_->View(); }
    [[nodiscard]] QLabel& Label(const char* name) const { return *window_->findChild<QLabel*>(name); }
    [[nodiscard]] QSlider& Steps() const { return *window_->findChild<QSlider*>("steps"); }
    void Choose(const char* name) const { window_->Command(name).trigger(); }
    [[nodiscard]] QPoint At(double x, double y) const {
        const PicturePoint p = View().Place().ToPicture(x, y);
        return {qRound(p.x), qRound(p.y)};
    }
    [[nodiscard]] QColor ColourAt(double x, double y) const {
        const QImage image = View().grab().toImage();
        return image.pixelColor(At(x, y) * image.devicePixelRatio());
    }
    [[nodiscard]] QList<CurveWindow*> Curves() const { return window_->findChildren<CurveWindow*>(); }

private Q_SLOTS:
    void init() {
        folder_ = std::make_unique<QTemporaryDir>();
        window_ = std::make_unique<ViewWindow>();
        window_->show();
        QVERIFY(QTest::qWaitForWindowExposed(window_.get()));
    }
    void cleanup() { window_.reset(); }

    void TellsWhyThereIsNothing() {
        QVERIFY(!window_->Command("savePicture").isEnabled());
        QVERIFY(!Label("note").isVisible());
        window_->OpenFile(Write("broken.kdr", "FILEINFO\nKALDRA 4.0\nTITLE\n"));
        QVERIFY(!window_->Session().isOpen);
        QCOMPARE(window_->windowTitle(), "KALDRA VIEW - broken.kdr");
        window_->OpenFile(Write("case.kdr", WarmingColumn().Text()));
        QVERIFY(window_->Session().isOpen);
        QVERIFY(Label("note").text().startsWith("No saved step"));
        QVERIFY(!Steps().isEnabled());
        QCOMPARE(ColourAt(0.7, 0.3), QColor::fromRgb(MaterialColour(1)));
    }

    // By the marker that a run leaves while it goes on, by the broadcast of its end, and by what a short one left.
    void RefreshesWhenARunHasEnded() {
        window_->OpenFile(Write("case.kdr", WarmingColumn().Text()));
        Write("case.lkp", "");
        QTest::qWait(2500);
        Compute(WarmingColumn());
        QFile::remove(Path("case.lkp"));
        QTRY_COMPARE(window_->Session().set.steps.size(), 3);
        QVERIFY(!Label("note").isVisible());
        QDBusConnection bus = QDBusConnection::sessionBus();
        QVERIFY2(bus.isConnected(), "run me with a session bus");
        QFile::resize(Path("case.r03"), 200);
        QVERIFY(bus.send(QDBusMessage::createSignal("/org/kaldra/Solve", "org.kaldra.Solve", "ProblemRefresh")));
        QTRY_COMPARE(window_->Session().set.steps.size(), 2);
        QCOMPARE(Label("step").text(), "step 2, time 2");
        Compute(WarmingColumn());
        QTRY_COMPARE(window_->Session().set.steps.size(), 3);
    }

    void ShowsTheStepsInTheirColours() {
        OpenComputed();
        Choose("mesh");
        QCOMPARE(Steps().maximum(), 2);
        for (const bool fixed : {true, false}) {
            window_->Command("fixedScale").setChecked(fixed);
            for (int step = 0; step < 3; ++step) {
                Steps().setValue(step);
                const ColourScale scale = MakeColourScale(-1, fixed ? 19 : 9 + 5 * step, 0, 0);
                for (const double y : {0.04, 0.61, 1.77}) {
                    QCOMPARE(ColourAt(0.7, y), QColor::fromRgb(BandColour(scale, -1 + (10 + 5 * step) * y / 2)));
                }
            }
        }
        Choose("materials");
        QCOMPARE(ColourAt(0.7, 0.6), QColor::fromRgb(MaterialColour(1)));
        Choose("previousStep");
        Choose("previousStep");
        QCOMPARE(Steps().value(), 0);
        Choose("play");
        QTRY_COMPARE(Steps().value(), 2);
        QTRY_COMPARE(Steps().value(), 0);
        Choose("play");
    }

    void AnswersTheMouse() {
        OpenComputed();
        QTest::mouseMove(&View(), At(0.3, 1.6));
        QTRY_VERIFY(Label("probe").text().contains("element 4"));
        QTest::mouseClick(&View(), Qt::LeftButton, {}, At(0, 1));
        QTRY_COMPARE(Curves().size(), 1);
        QVERIFY(Curves()[0]->windowTitle().startsWith("Node 3 "));
        Choose("sectionLine");
        QTest::mousePress(&View(), Qt::LeftButton, {}, At(0.5, 0.5));
        QTest::mouseMove(&View(), At(0.5, 1));
        QTest::mouseRelease(&View(), Qt::LeftButton, {}, At(0.5, 1.5));
        QTRY_COMPARE(Curves().size(), 2);
        const QPointer<CurveWindow> section = Curves()[1];
        for (const double rise : {10.0, 7.5}) {  // per unit of height in the last step, and in the one before
            const std::vector<PicturePoint> along = section->Sheet().curves[0].pieces[0];
            QVERIFY(std::abs(along.back().y - along.front().y - rise) < 0.2);
            Choose("previousStep");
        }
        Choose("thawDepth");
        QTest::mouseClick(&View(), Qt::LeftButton, {}, At(0.5, 1));
        QTRY_COMPARE(Curves().size(), 4);
        section->Copy();
        QVERIFY(QGuiApplication::clipboard()->mimeData()->text().startsWith("Distance\tTemperature\n"));
        QVERIFY(View().marks.section && View().marks.node && View().marks.vertical);
        section->close();
        QTRY_VERIFY(!View().marks.section);
        window_->OpenFile(Path("none.kdr"));
        QVERIFY(Curves().isEmpty());
    }

    void PansZoomsAndFits() {
        OpenComputed();
        const GroundPlace whole = View().Place();
        const QPoint held = At(0.75, 1.25);
        QWheelEvent wheel(held, View().mapToGlobal(held), {}, {0, 480}, Qt::NoButton, {}, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&View(), &wheel);
        QVERIFY(View().Place().window.scale > 1.9 * whole.window.scale);
        QVERIFY((At(0.75, 1.25) - held).manhattanLength() <= 1);
        QTest::mousePress(&View(), Qt::LeftButton, {}, held);
        QTest::mouseMove(&View(), held + QPoint(40, 30));
        QTest::mouseRelease(&View(), Qt::LeftButton, {}, held + QPoint(40, 30));
        QVERIFY((At(0.75, 1.25) - held - QPoint(40, 30)).manhattanLength() <= 1);
        QVERIFY(Curves().isEmpty());  // a drag asks for nothing
        Choose("fit");
        QCOMPARE(View().Place().window.scale, whole.window.scale);
    }

    void CopiesAndSavesPictures() {
        OpenComputed();
        Choose("mesh");
        Choose("copy");
        const QImage copied = QGuiApplication::clipboard()->image();
        QCOMPARE(copied.width(), qRound(2 * View().devicePixelRatioF() * View().width()));
        QCOMPARE(window_->SaveAnimation(Path("film.png")), 3);
        const ColourScale scale = MakeColourScale(-1, 19, 0, 0);
        for (int step = 0; step < 3; ++step) {
            const QImage image(Path(QString("film-000%1.png").arg(step + 1)));
            QCOMPARE(image.size(), View().size());
            QCOMPARE(image.pixelColor(At(0.7, 1.77)),
                     QColor::fromRgb(BandColour(scale, -1 + (10 + 5 * step) * 1.77 / 2)));
        }
        QCOMPARE(window_->Session().shown, 2);
    }
};

}  // namespace kaldra

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    kaldra::InitModel(0);
    kaldra::InitModel(1);
    kaldra::ViewWindowTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "view_test.moc"
