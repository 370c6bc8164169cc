#include "frontend/desktop/ground_view.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainterPath>
#include <QWheelEvent>
#include <cmath>

#include "frontend/desktop/picture_painter.h"

namespace kaldra {

namespace {

PicturePoint ToPicture(const QPointF& p) { return {p.x(), p.y()}; }

constexpr double clickReach = 12;  // pixels from a click to the node that it means

// Can be seen on every colour.
void PaintMark(QPainter& painter, const QPainterPath& path) {
    painter.strokePath(path, QPen(Qt::white, 3.5));
    painter.strokePath(path, QPen(Qt::black, 1.5, Qt::DashLine));
}

QPainterPath LinePath(const QPointF& from, const QPointF& to) {
    QPainterPath path(from);
    path.lineTo(to);
    return path;
}

}  // namespace

GroundView::GroundView(QWidget* parent) : QWidget(parent) {
    setObjectName("groundView");
    setMouseTracking(true);
    setMinimumSize(420, 300);
    setFocusPolicy(Qt::StrongFocus);
}

void GroundView::ShowScene(Scene* scene) {
    scene_ = scene;
    instead_.clear();
    Redraw();
}

void GroundView::ShowInstead(const QString& text) {
    scene_ = nullptr;
    instead_ = text;
    Redraw();
}

void GroundView::Redraw() {
    stale_ = true;
    update();
}

void GroundView::Fit() {
    look.window = {};
    Redraw();
}

void GroundView::Zoom(double factor) {
    const PictureBox plot = Place().plot;
    ZoomAbout({(plot.left + plot.right) / 2, (plot.top + plot.bottom) / 2}, factor);
}

void GroundView::SetTool(GroundTool tool) {
    tool_ = tool;
    setCursor(tool == GroundTool::Look ? Qt::ArrowCursor : Qt::CrossCursor);
}

void GroundView::SetUpLook() {
    look.width = width();
    look.height = height();
    look.fineness = devicePixelRatioF();
}

GroundPlace GroundView::Place() const {
    GroundLook now = look;
    now.width = width();
    now.height = height();
    return PlaceGround(scene_ != nullptr ? *scene_ : Scene{}, now);
}

Picture GroundView::CurrentPicture(double fineness) {
    if (scene_ == nullptr) return {};
    GroundLook now = look;
    now.width = width();
    now.height = height();
    now.fineness = fineness;
    return DrawGround(*scene_, now);
}

// ---------------------------------------------------------------------------------------------------------------------
// Painting

void GroundView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    if (scene_ == nullptr) {
        painter.fillRect(rect(), Qt::white);
        painter.setPen(QColor(70, 70, 70));
        painter.drawText(rect().adjusted(40, 40, -40, -40), Qt::AlignCenter | Qt::TextWordWrap, instead_);
        return;
    }
    if (stale_) {
        SetUpLook();
        picture_ = DrawGround(*scene_, look);
        stale_ = false;
    }
    PaintPicture(painter, picture_);
    PaintMarks(painter);
}

void GroundView::PaintMarks(QPainter& painter) const {
    const GroundPlace place = Place();
    const auto at = [&](PicturePoint p) {
        const PicturePoint there = place.ToPicture(p.x, p.y);
        return QPointF(there.x, there.y);
    };
    const QRectF plot({place.plot.left, place.plot.top}, QPointF{place.plot.right, place.plot.bottom});
    painter.setClipRect(plot);
    painter.setRenderHint(QPainter::Antialiasing);
    if (pressed_ && !panning_ && tool_ == GroundTool::Section) {
        PaintMark(painter, LinePath(*pressed_, last_));
    } else if (marks.section) {
        PaintMark(painter, LinePath(at(marks.section->first), at(marks.section->second)));
    }
    if (marks.vertical) {
        const double x = at({*marks.vertical, 0}).x();
        PaintMark(painter, LinePath({x, plot.top()}, {x, plot.bottom()}));
    }
    if (!marks.node) return;
    constexpr double radius = 6;
    QPainterPath ring;
    ring.addEllipse(at(*marks.node), radius, radius);
    painter.strokePath(ring, QPen(Qt::white, 4));
    painter.strokePath(ring, QPen(Qt::black, 2));
}

void GroundView::resizeEvent(QResizeEvent*) { stale_ = true; }

// ---------------------------------------------------------------------------------------------------------------------
// The mouse

void GroundView::ZoomAbout(const QPointF& at, double factor) {
    if (scene_ == nullptr) return;
    const GroundPlace before = Place();
    const PicturePoint held = before.ToMesh(ToPicture(at));
    GroundLook whole = look;
    whole.window = {};
    whole.width = width();
    whole.height = height();
    const double fit = PlaceGround(*scene_, whole).window.scale;
    constexpr double furthest = 0.2;  // of the scale that shows all
    constexpr double nearest = 1e4;
    look.window = before.window;
    look.window.scale = std::clamp(before.window.scale * factor, furthest * fit, nearest * fit);
    const double part = before.window.scale / look.window.scale;
    look.window.centreX = held.x + (before.window.centreX - held.x) * part;
    look.window.centreY = held.y + (before.window.centreY - held.y) * part;
    Redraw();
}

void GroundView::PanTo(const QPointF& at) {
    look.window = Place().window;
    look.window.centreX -= (at.x() - last_.x()) / look.window.scale;
    look.window.centreY += (at.y() - last_.y()) / look.window.scale;
    last_ = at;
    Redraw();
}

void GroundView::wheelEvent(QWheelEvent* event) {
    ZoomAbout(event->position(), std::pow(1.0015, event->angleDelta().y()));
    event->accept();
}

void GroundView::mousePressEvent(QMouseEvent* event) {
    if (scene_ == nullptr || !Place().plot.Has(ToPicture(event->position()))) return;
    panning_ = event->button() == Qt::MiddleButton || tool_ == GroundTool::Look;
    moved_ = false;
    pressed_ = last_ = event->position();
}

void GroundView::mouseMoveEvent(QMouseEvent* event) {
    if (scene_ == nullptr) return;
    const QPointF at = event->position();
    if (pressed_) {
        moved_ = moved_ || (at - *pressed_).manhattanLength() >= QApplication::startDragDistance();
        if (panning_ && moved_) return PanTo(at);
        if (!panning_) last_ = at, update();
    }
    const GroundPlace place = Place();
    if (!place.plot.Has(ToPicture(at))) {
        Q_EMIT PointedNowhere();
        return;
    }
    const PicturePoint p = place.ToMesh(ToPicture(at));
    Q_EMIT Pointed(p.x, p.y);
}

void GroundView::mouseReleaseEvent(QMouseEvent* event) {
    if (!pressed_) return;
    const GroundPlace place = Place();
    const PicturePoint from = place.ToMesh(ToPicture(*pressed_));
    const PicturePoint to = place.ToMesh(ToPicture(event->position()));
    pressed_.reset();
    update();
    if (event->button() != Qt::LeftButton) return;
    if (tool_ == GroundTool::Look && !moved_) Q_EMIT NodeAsked(to.x, to.y, clickReach / place.window.scale);
    if (tool_ == GroundTool::Section && moved_) Q_EMIT SectionDrawn(from.x, from.y, to.x, to.y);
    if (tool_ == GroundTool::Thaw) Q_EMIT ThawAsked(to.x);
}

void GroundView::leaveEvent(QEvent*) { Q_EMIT PointedNowhere(); }

}  // namespace kaldra
