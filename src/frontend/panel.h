// The main window and the control panel behind their widgets: titles, labels, menus, the state of every control, and
// where they stand.
//
// All run on the front end's thread and read the run state, never a table.
#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kaldra {

// Ids of commands: of menu items, and of the panel's buttons.
inline constexpr int commandNew = 102;
inline constexpr int commandOpenDataFile = 105;
inline constexpr int commandOpenInitialConditions = 106;
inline constexpr int commandExit = 110;
inline constexpr int commandStartTime = 124;
inline constexpr int commandHelpTopics = 112;
inline constexpr int commandUsingHelp = 40001;
inline constexpr int commandAbout = 109;
inline constexpr int commandStart = 189;
inline constexpr int commandStop = 206;
inline constexpr int commandHaltIteration = 207;
inline constexpr int commandGraph = 182;

// And of the graph window's menu.
inline constexpr int commandCopy = 100;
inline constexpr int commandCloseGraph = 110;
inline constexpr int commandGraphHelp = 113;
inline constexpr int commandPrint = 121;
inline constexpr int commandUpdate = 123;
inline constexpr int commandOptions = 125;

// ---------------------------------------------------------------------------------------------------------------------
// Menus

// One item, with & before its mnemonic. HelpTopicForMenu(id) is its help.
struct MenuItem {
    std::string_view popup;  // the menu that it stands in; empty for an item of the menu bar itself
    std::string_view text;
    int id;
};

// From left to right and from top to bottom.
[[nodiscard]] std::span<const MenuItem> MainMenu();
[[nodiscard]] std::span<const MenuItem> GraphMenu();

// The present state of a menu item or button of the main window. The main window's Close is commandExit. An id that
// has no rule is enabled.
[[nodiscard]] bool IsCommandEnabled(int id);

// ---------------------------------------------------------------------------------------------------------------------
// The control panel, in dialog units: a quarter of the average character's width by an eighth of its height

struct DialogRect {
    int left, top, width, height;
};

inline constexpr DialogRect panelSize{0, 0, 205, 202};
inline constexpr DialogRect statusListPlace{10, 20, 185, 95};
inline constexpr DialogRect labelBoxPlace{9, 120, 185, 51};
inline constexpr DialogRect runIconPlace{55, 176, 18, 20};
inline constexpr std::array statusTabStops{30, 60, 120};
inline constexpr int runIconMilliseconds = 500;

struct PanelControl {
    int id;  // 0 for a heading
    std::string_view text;
    DialogRect place;
};

// Headings over the status list, and the buttons.
[[nodiscard]] std::span<const PanelControl> PanelHeadings();
[[nodiscard]] std::span<const PanelControl> PanelButtons();

// A pair of labels: what it is, and its value. Both empty: blank.
struct PanelLabel {
    int leftId, rightId;
    DialogRect leftPlace, rightPlace;
    std::string left, right;
};

// What the labels say now: data file, initial files and start step. Without a data file all are blank.
[[nodiscard]] std::array<PanelLabel, 4> PanelLabels();

// Caption of the main window.
[[nodiscard]] std::string MainWindowTitle();

// Name and extension of a path, or "(none)" for an empty one.
[[nodiscard]] std::string FileLabel(std::string_view path);

// ---------------------------------------------------------------------------------------------------------------------
// The session and the screen

// May the session end, or the main window close? Gives false after message 1140 while a calculation thread lives.
[[nodiscard]] bool MayEndSession();

struct ScreenPoint {
    int x, y;
};

// Where a dialog of `size` goes: to the middle of `client`, but on the screen.
[[nodiscard]] ScreenPoint CentreOnMain(const DialogRect& client, const DialogRect& size, const DialogRect& screen);

// The parts of a filter string of the file dialogs, whose last character separates them.
struct FileFilter {
    std::string name;
    std::string pattern;
};
[[nodiscard]] std::vector<FileFilter> FileFilters(int number);

}  // namespace kaldra
