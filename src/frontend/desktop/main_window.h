// The main window: menu, title, the control panel in it, and the opening and closing of documents.
#pragma once

#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMainWindow>
#include <string>

#include "frontend/desktop/control_panel.h"

namespace kaldra {

class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    MainWindow();
    ~MainWindow() override;

    // Enables the menu items by the run state, and sets the title.
    void UpdateMenus();

    // Opens the data file named on the command line, with its quotes or without; a name that no file has is forgotten.
    void OpenFromCommandLine(const QString& name);

protected:
    void closeEvent(QCloseEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void Command(int id);
    void ChooseDataFile();
    void ReplaceDocument(const QString& path);

    ControlPanel* panel_;
};

}  // namespace kaldra
