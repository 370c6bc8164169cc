// The control panel: the form that fills the main window.
#pragma once

#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QWidget>
#include <map>

#include "frontend/desktop/status_list.h"
#include "frontend/panel.h"

namespace kaldra {

class ControlPanel : public QWidget {
    Q_OBJECT

public:
    explicit ControlPanel(QWidget* parent = nullptr);

    [[nodiscard]] StatusList& List() { return *list_; }
    [[nodiscard]] QPushButton& Button(int id) { return *buttons_.at(id); }

    void UpdateButtons();
    void UpdateLabels();

    // The running icon, which alternates while the timer runs.
    void ShowIcon(bool running);
    void Animate(bool on);

Q_SIGNALS:
    void Pressed(int id);

private:
    [[nodiscard]] QRect Place(const DialogRect& units) const;

    StatusList* list_;
    QLabel* icon_;
    QTimer timer_;
    bool runningIcon_ = false;
    std::map<int, QPushButton*> buttons_;
    std::map<int, QLabel*> labels_;
};

}  // namespace kaldra
