#include "frontend/desktop/curve_window.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMenuBar>
#include <QMimeData>
#include <functional>

#include "frontend/desktop/picture_painter.h"
#include "frontend/desktop/save_picture.h"

namespace kaldra {

namespace {

class CurveCanvas : public QWidget {
public:
    CurveCanvas(std::function<Picture()> draw, QWidget* parent) : QWidget(parent), draw_(std::move(draw)) {}

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        PaintPicture(painter, draw_());
    }

private:
    std::function<Picture()> draw_;
};

}  // namespace

CurveWindow::CurveWindow(const CurveSheet& sheet, QWidget* parent) : QMainWindow(parent, Qt::Window) {
    setObjectName("curveWindow");
    setAttribute(Qt::WA_DeleteOnClose);
    canvas_ = new CurveCanvas(
        [this] {
            sheet_.width = canvas_->width();
            sheet_.height = canvas_->height();
            return DrawCurves(sheet_);
        },
        this);
    setCentralWidget(canvas_);
    QMenu* const file = menuBar()->addMenu(tr("&File"));
    file->addAction(tr("&Save Picture..."), QKeySequence::Save, this,
                    [this] { SavePictureAs(this, DrawCurves(sheet_)); });
    file->addAction(tr("&Copy"), QKeySequence::Copy, this, &CurveWindow::Copy);
    file->addSeparator();
    file->addAction(tr("C&lose"), QKeySequence::Close, this, &QWidget::close);
    resize(680, 460);
    SetSheet(sheet);
}

void CurveWindow::SetSheet(const CurveSheet& sheet) {
    sheet_ = sheet;
    setWindowTitle(QString::fromStdString(sheet.title).simplified());
    canvas_->update();
}

void CurveWindow::Copy() {
    auto* const formats = new QMimeData;
    formats->setImageData(PictureImage(DrawCurves(sheet_), devicePixelRatioF()));
    formats->setText(QString::fromStdString(CurvesText(sheet_)));
    QGuiApplication::clipboard()->setMimeData(formats);
}

}  // namespace kaldra
