// The convergence graph's window, and the chart service behind it.
#pragma once

#include <QCloseEvent>
#include <QMainWindow>

namespace kaldra {

// Shows the drawing that the recorder holds.
class ChartView : public QWidget {
    Q_OBJECT

public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent* event) override;
};

class GraphWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit GraphWindow(QWidget* panel);
    ~GraphWindow() override;

    [[nodiscard]] ChartView& View() { return *view_; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void Command(int id);

    ChartView* view_;
};

// Writes the drawing of the open graph window as a PNG picture. False where there is no window or no such folder.
[[nodiscard]] bool SaveChartPicture(const QString& file);

// Fills in what the recorder of the chart service leaves to a window: sizes, painting, copying and printing.
void ConnectChartWindow();

}  // namespace kaldra
