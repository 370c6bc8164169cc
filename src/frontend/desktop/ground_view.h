// The ground in the window of kaldra-view: painted, panned, zoomed, and asked by the mouse.
#pragma once

#include <QString>
#include <QWidget>
#include <optional>
#include <utility>

#include "view/ground_picture.h"

namespace kaldra {

// What a press of the left button does. The wheel zooms and the middle button pans in all of them.
enum class GroundTool {
    Look,     // a drag pans, a click asks for the nearest node
    Section,  // a drag draws a line
    Thaw      // a click asks for the vertical there
};

// What the curves that are open tell of, in places of the mesh.
struct GroundMarks {
    std::optional<std::pair<PicturePoint, PicturePoint>> section;
    std::optional<double> vertical;
    std::optional<PicturePoint> node;
};

class GroundView : public QWidget {
    Q_OBJECT

public:
    explicit GroundView(QWidget* parent = nullptr);

    GroundLook look;  // its size and window are the view's own
    GroundMarks marks;

    // The scene to show; null shows the text of ShowInstead.
    void ShowScene(Scene* scene);
    void ShowInstead(const QString& text);
    // To be called when the look or the scene have changed.
    void Redraw();

    void Fit();
    void Zoom(double factor);  // about the middle

    void SetTool(GroundTool tool);
    [[nodiscard]] GroundPlace Place() const;
    // The picture as it stands in the window, with `fineness` pixels per unit.
    [[nodiscard]] Picture CurrentPicture(double fineness);

Q_SIGNALS:
    void Pointed(double x, double y);  // the cursor is over this place of the mesh
    void PointedNowhere();
    void NodeAsked(double x, double y, double reach);
    void SectionDrawn(double x1, double y1, double x2, double y2);
    void ThawAsked(double x);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void ZoomAbout(const QPointF& at, double factor);
    void PanTo(const QPointF& at);
    void SetUpLook();
    void PaintMarks(QPainter& painter) const;

    Scene* scene_ = nullptr;
    QString instead_;
    GroundTool tool_ = GroundTool::Look;
    Picture picture_;
    bool stale_ = true;
    std::optional<QPointF> pressed_;  // where the button went down
    QPointF last_;
    bool panning_ = false;
    bool moved_ = false;
};

}  // namespace kaldra
