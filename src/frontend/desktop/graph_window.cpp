#include "frontend/desktop/graph_window.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QMenuBar>
#include <QMimeData>
#include <QPageLayout>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <memory>

#include "frontend/chart_service.h"
#include "frontend/desktop/chart_painter.h"
#include "frontend/desktop/desktop.h"
#include "frontend/desktop/dialogs.h"
#include "frontend/desktop/help_viewer.h"
#include "frontend/desktop/menus.h"
#include "frontend/graph.h"
#include "frontend/panel.h"
#include "frontend/print_fit.h"
#include "run/messages.h"

namespace kaldra {

namespace {

// ---------------------------------------------------------------------------------------------------------------------
// The chart service

ChartView* View() { return desktop.graph != nullptr ? &desktop.graph->View() : nullptr; }

// The drawing as it stands in the window.
QImage ChartPicture(const ChartView& view) {
    QImage picture(view.size() * view.devicePixelRatioF(), QImage::Format_RGB32);
    picture.setDevicePixelRatio(view.devicePixelRatioF());
    QPainter painter(&picture);
    PaintChart(painter, QRectF(view.rect()), ShownDrawing(), ScreenTextHeight());
    return picture;
}

void CopyChart(std::int32_t, std::int32_t) {
    const ChartView* const view = View();
    if (view == nullptr) return;
    auto* const data = new QMimeData;
    data->setImageData(ChartPicture(*view));
    data->setText(QString::fromStdString(CurveText(ShownDrawing())));
    QApplication::clipboard()->setMimeData(data);
}

// One print job. The printer outlives it, as its settings last from one print to the next.
struct PrintService {
    std::unique_ptr<QPrinter> printer;
    std::unique_ptr<QPainter> painter;
    QRectF place;
};

PrintService& Printing() {
    static PrintService service;
    return service;
}

int OpenPrintJob(std::string_view device, std::string_view file, std::int32_t orientation) {
    PrintService& p = Printing();
    if (!p.printer) p.printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
    if (!device.empty()) p.printer->setPrinterName(QString::fromUtf8(device));
    if (!file.empty()) p.printer->setOutputFileName(QString::fromUtf8(file));
    if (orientation != printDefault) {
        p.printer->setPageOrientation(orientation == printLandscape ? QPageLayout::Landscape : QPageLayout::Portrait);
    }
    p.painter = std::make_unique<QPainter>();
    return p.painter->begin(p.printer.get()) ? 0 : 1;
}

// Text on paper keeps the share of the chart that it has in the window.
void PrintAllPages(std::int32_t, std::int32_t copies, std::int32_t) {
    PrintService& p = Printing();
    const ChartView* const view = View();
    const double scale = view != nullptr && view->height() > 0 ? p.place.height() / view->height() : 1;
    const bool byPrinter = p.printer->supportsMultipleCopies();
    for (std::int32_t copy = 0; copy < (byPrinter ? 1 : copies); ++copy) {
        if (copy > 0) p.printer->newPage();
        PaintChart(*p.painter, p.place, ShownDrawing(), ScreenTextHeight() * scale);
    }
}

void ClosePrintJob() {
    Printing().painter.reset();
    Printing().printer->setOutputFileName({});
}

QRectF PageRect() { return Printing().printer->pageRect(QPrinter::DevicePixel); }

// ---------------------------------------------------------------------------------------------------------------------
// The print dialog

QString ChoosePrintFile(QWidget* owner) {
    QFileDialog dialog(owner, QString::fromUtf8(StringText(1284)));
    QStringList filters;
    for (const FileFilter& filter : FileFilters(1281)) filters << QString::fromStdString(filter.name);
    dialog.setNameFilters(filters);
    dialog.setDefaultSuffix(QString::fromUtf8(StringText(1283)));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
}

void Print(QWidget* owner) {
    PrintService& p = Printing();
    if (!p.printer) p.printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
    QPrintDialog dialog(p.printer.get(), owner);
    dialog.setOption(QAbstractPrintDialog::PrintPageRange, false);
    dialog.setOption(QAbstractPrintDialog::PrintSelection, false);
    if (dialog.exec() != QDialog::Accepted) return;
    PrintJob job;
    job.device = p.printer->printerName().toStdString();
    job.copies = p.printer->copyCount();
    job.orientation = p.printer->pageLayout().orientation() == QPageLayout::Landscape ? printLandscape : printPortrait;
    if (p.printer->outputFormat() == QPrinter::PdfFormat) {
        QString file = p.printer->outputFileName();
        if (file.isEmpty()) file = ChoosePrintFile(owner);
        if (file.isEmpty()) return;
        if (file.endsWith(".png", Qt::CaseInsensitive)) {
            if (!SaveChartPicture(file)) ShowError(1282);
            return;
        }
        job.file = file.toStdString();
        job.device.clear();
    }
    (void)PrintChart(job);
}

}  // namespace

bool SaveChartPicture(const QString& file) {
    const ChartView* const view = View();
    return view != nullptr && ChartPicture(*view).save(file, "PNG");
}

void ConnectChartWindow() {
    ConnectChartRecorder();
    chartService.ChartHeight = [](ChartWindowHandle window) {
        return static_cast<double>(static_cast<QWidget*>(window)->height());
    };
    chartService.ChartWidth = [](ChartWindowHandle window) {
        return static_cast<double>(static_cast<QWidget*>(window)->width());
    };
    chartService.ChartWindow = [](std::int32_t) -> ChartWindowHandle { return View(); };
    chartService.ChartCopy = CopyChart;
    chartService.PrintOpen = OpenPrintJob;
    chartService.DrawnHeight = [](std::int32_t, std::int32_t) { return View() != nullptr ? View()->height() : 1.0; };
    chartService.DrawnWidth = [](std::int32_t, std::int32_t) { return View() != nullptr ? View()->width() : 1.0; };
    chartService.PageHeight = [](std::int32_t) { return PageRect().height(); };
    chartService.PageWidth = [](std::int32_t) { return PageRect().width(); };
    chartService.PrintPlace = [](double top, double left, double bottom, double right, std::int32_t, std::int32_t) {
        Printing().place = QRectF(QPointF(left, top), QPointF(right, bottom));
    };
    chartService.PrintPages = PrintAllPages;
    chartService.PrintClose = ClosePrintJob;
}

// ---------------------------------------------------------------------------------------------------------------------
// The window

void ChartView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    PaintChart(painter, QRectF(rect()), ShownDrawing(), ScreenTextHeight());
}

GraphWindow::GraphWindow(QWidget* panel) : QMainWindow(panel->window(), Qt::Window), view_(new ChartView(this)) {
    setObjectName("graphWindow");
    setWindowTitle(QString::fromStdString(GraphCaption()));
    setCentralWidget(view_);
    FillMenuBar(*menuBar(), GraphMenu(), this, [this](int id) { Command(id); });
    const int side = panel->window()->frameGeometry().height();
    resize(side, side);
    move(panel->mapToGlobal(QPoint(20, 20)));
}

// The chart goes with its window, whoever destroys it.
GraphWindow::~GraphWindow() {
    GraphWindowGone();
    if (desktop.graph == this) desktop.graph = nullptr;
}

void GraphWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    CloseGraph();
}

void GraphWindow::Command(int id) {
    switch (id) {
        case commandPrint:
            return Print(this);
        case commandCloseGraph:
            QMetaObject::invokeMethod(this, &QWidget::close, Qt::QueuedConnection);
            return;
        case commandCopy: {
            const WaitCursor wait;
            return CopyGraph();
        }
        case commandOptions:
            return RunGraphOptions(this);
        case commandUpdate: {
            const WaitCursor wait;
            return UpdateGraph();
        }
        default:
            return ShowHelpContents();
    }
}

}  // namespace kaldra
