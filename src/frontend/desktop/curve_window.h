// A window with curves: along a section line, of a node, of the thaw.
#pragma once

#include <QMainWindow>

#include "view/curve_picture.h"

namespace kaldra {

class CurveWindow : public QMainWindow {
    Q_OBJECT

public:
    CurveWindow(const CurveSheet& sheet, QWidget* parent);

    [[nodiscard]] const CurveSheet& Sheet() const { return sheet_; }
    void SetSheet(const CurveSheet& sheet);

    // The picture goes to the clipboard as an image and as lines of numbers.
    void Copy();

private:
    CurveSheet sheet_;
    QWidget* canvas_;
};

}  // namespace kaldra
