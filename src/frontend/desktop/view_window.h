// The window of kaldra-view: the ground at a saved step, a slider over the steps, and the commands.
#pragma once

#include <QAction>
#include <QCloseEvent>
#include <QFileInfo>
#include <QLabel>
#include <QMainWindow>
#include <QPointer>
#include <QSlider>
#include <QTimer>
#include <optional>

#include "frontend/desktop/curve_window.h"
#include "frontend/desktop/ground_view.h"
#include "view/view_session.h"

namespace kaldra {

class ViewWindow : public QMainWindow {
    Q_OBJECT

public:
    ViewWindow();
    ~ViewWindow() override;

    // Opens a data file; one that cannot be shown leaves its message in the window.
    void OpenFile(const QString& path);

    [[nodiscard]] ViewSession& Session() { return session_; }
    [[nodiscard]] GroundView& View() { return *view_; }
    [[nodiscard]] QAction& Command(const QString& name) { return *findChild<QAction*>(name); }

    // Writes one PNG per saved step: NAME-0001.png for step 1. Gives the number of files.
    int SaveAnimation(const QString& name);

public Q_SLOTS:
    // Reads everything anew; also the answer to the end of a run that another program tells of.
    void Refresh();

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void MakeFileMenu();
    void MakeViewMenu();
    void MakeToolsMenu();
    void MakeStepBar();
    QAction* AddToggle(QMenu& menu, const QString& name, const QString& text, bool GroundLook::*field);

    void ShowOpened(bool opened);
    void ShowStepAt(int index);
    void Play(bool on);
    void UpdateColours();
    void UpdateStepBar();
    void ReadOneAhead();
    void WatchFolder();
    void ShowProbe(double x, double y);
    void ShowHistory(double x, double y, double reach);
    void ShowSection(double x1, double y1, double x2, double y2);
    void ShowThaw(double x);
    void ShowCurves(QPointer<CurveWindow>& window, const CurveSheet& sheet);
    void RenewCurves();
    void CloseCurves();
    void UpdateMarks();
    void ChooseFile();
    void ChooseScale();
    void CopyPicture();
    void AskForAnimation();

    ViewSession session_;
    ScaleChoice choice_;
    GroundView* view_;
    QLabel* note_;   // above the ground: what the user should know of the results
    QLabel* probe_;  // in the status bar
    QLabel* step_;   // beside the slider
    QSlider* slider_ = nullptr;
    QAction* play_ = nullptr;
    QTimer playing_, reading_, watching_;
    FileStamp folder_;  // of the data file, as it was last looked at without a run
    bool markerStood_ = false;
    std::optional<PicturePoint> pointed_;  // under the cursor, in the mesh
    QPointer<CurveWindow> section_, history_, depth_, trumpet_;
    GroundMarks asked_;      // what the curves tell of,
    std::int32_t node_ = 0;  // and its node
};

}  // namespace kaldra
