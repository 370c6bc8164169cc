#include "frontend/desktop/control_panel.h"

#include <QFrame>
#include <QPainter>
#include <QPainterPath>

namespace kaldra {

namespace {

// Ground under a road: at rest as it is, in a run with the frozen part shown.
QPixmap RunPicture(bool running, int size, double ratio) {
    QPixmap picture(QSize(size, size) * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size / 64.0, size / 64.0);
    QPainterPath ground;
    ground.addPolygon(QPolygonF({{2, 30}, {20, 30}, {27, 18}, {37, 18}, {44, 30}, {62, 30}, {62, 60}, {2, 60}}));
    painter.fillPath(ground, QColor(169, 119, 75));
    if (!running) return picture;
    QPainterPath frozen(QPointF(2, 46));
    frozen.cubicTo(18, 46, 22, 34, 32, 34);
    frozen.cubicTo(42, 34, 46, 46, 62, 46);
    frozen.lineTo(62, 60);
    frozen.lineTo(2, 60);
    painter.fillPath(frozen, QColor(70, 130, 190));
    return picture;
}

}  // namespace

QRect ControlPanel::Place(const DialogRect& units) const {
    const auto down = [this](int y) { return y * fontMetrics().height() / 8; };
    const auto across = [this](int x) { return DialogUnits(*this, x); };
    return {across(units.left), down(units.top), across(units.width), down(units.height)};
}

ControlPanel::ControlPanel(QWidget* parent) : QWidget(parent) {
    setFixedSize(Place(panelSize).size());
    setFocusPolicy(Qt::StrongFocus);

    for (const PanelControl& heading : PanelHeadings()) {
        auto* const label = new QLabel(QString::fromUtf8(heading.text), this);
        label->setGeometry(Place(heading.place));
        label->adjustSize();
    }
    list_ = new StatusList(this);
    list_->setObjectName("statusList");
    list_->setGeometry(Place(statusListPlace));

    auto* const frame = new QFrame(this);
    frame->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    frame->setGeometry(Place(labelBoxPlace));
    const auto addLabel = [this](int id, const DialogRect& place) {
        labels_[id] = new QLabel(this);
        labels_[id]->setGeometry(Place(place));
        labels_[id]->setTextFormat(Qt::PlainText);
        labels_[id]->setObjectName(QString("label%1").arg(id));
    };
    for (const PanelLabel& label : PanelLabels()) {
        addLabel(label.leftId, label.leftPlace);
        addLabel(label.rightId, label.rightPlace);
    }

    QWidget* before = list_;
    for (const PanelControl& control : PanelButtons()) {
        auto* const button = new QPushButton(QString::fromUtf8(control.text), this);
        button->setObjectName(QString("button%1").arg(control.id));
        button->setGeometry(Place(control.place));
        button->setStyleSheet("QPushButton { padding: 0px 2px; }");
        const int id = control.id;
        connect(button, &QPushButton::clicked, this, [this, id] { Q_EMIT Pressed(id); });
        buttons_[id] = button;
        setTabOrder(before, button);
        before = button;
    }
    icon_ = new QLabel(this);
    icon_->setGeometry(Place(runIconPlace));
    icon_->setAlignment(Qt::AlignCenter);
    ShowIcon(false);
    timer_.setInterval(runIconMilliseconds);
    connect(&timer_, &QTimer::timeout, this, [this] { ShowIcon(!runningIcon_); });
    UpdateButtons();
    UpdateLabels();
}

void ControlPanel::UpdateButtons() {
    for (const auto& [id, button] : buttons_) button->setEnabled(IsCommandEnabled(id));
}

void ControlPanel::UpdateLabels() {
    const auto show = [this](int id, const std::string& text) {
        QLabel& label = *labels_.at(id);
        const QString whole = QString::fromStdString(text);
        label.setText(label.fontMetrics().elidedText(whole, Qt::ElideMiddle, label.width()));
        label.setToolTip(label.text() == whole ? QString() : whole);
    };
    for (const PanelLabel& label : PanelLabels()) {
        show(label.leftId, label.left);
        show(label.rightId, label.right);
    }
}

void ControlPanel::ShowIcon(bool running) {
    runningIcon_ = running;
    const int size = std::min(icon_->width(), icon_->height());
    icon_->setPixmap(RunPicture(running, size, devicePixelRatioF()));
}

void ControlPanel::Animate(bool on) {
    if (on) {
        timer_.start();
        return;
    }
    timer_.stop();
    ShowIcon(false);
}

}  // namespace kaldra
