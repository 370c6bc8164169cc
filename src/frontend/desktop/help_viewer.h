// The help pages in a window of their own, and the key F1.
#pragma once

#include <QObject>
#include <QWidget>

namespace kaldra {

// A dialog's property that holds its id for help.
inline constexpr const char* helpDialogProperty = "helpDialog";

// Shows the page of a menu item, of a dialog, or the contents.
void ShowHelpForMenu(int id);
void ShowHelpForDialog(int id);
void ShowHelpContents();

// Shows the page of kaldra-view.
void ShowHelpForView();

// Closes the window at the end of the program.
void CloseHelp();

// Takes F1 before anything else does: help for the open menu's item, for the active dialog, else the contents.
class HelpKey : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

}  // namespace kaldra
