#include "frontend/panel.h"

#include <algorithm>

#include "frontend/commands.h"
#include "model/file_names.h"
#include "model/problem_model.h"
#include "platform/number_text.h"
#include "run/analysis.h"
#include "run/front_end.h"
#include "run/messages.h"
#include "run/run_state.h"

namespace kaldra {

// ---------------------------------------------------------------------------------------------------------------------
// Menus

namespace {

constexpr std::array mainMenu{
    MenuItem{"&File", "&New", commandNew},
    MenuItem{"&File", "&Open Data File...", commandOpenDataFile},
    MenuItem{"&File", "Open &Initial Conditions...", commandOpenInitialConditions},
    MenuItem{"&File", "E&xit", commandExit},
    MenuItem{"&Set", "&Start Time...", commandStartTime},
    MenuItem{"&Help", "&Help Topics...", commandHelpTopics},
    MenuItem{"&Help", "&Using Help...", commandUsingHelp},
    MenuItem{"&Help", "&About KALDRA...", commandAbout},
};

constexpr std::array graphMenu{
    MenuItem{"&File", "&Print...", commandPrint}, MenuItem{"&File", "&Close", commandCloseGraph},
    MenuItem{"&Edit", "&Copy", commandCopy},      MenuItem{"&Set", "&Options...", commandOptions},
    MenuItem{"", "&Update!", commandUpdate},      MenuItem{"&Help", "&Help Topics...", commandGraphHelp},
};

}  // namespace

std::span<const MenuItem> MainMenu() { return mainMenu; }

std::span<const MenuItem> GraphMenu() { return graphMenu; }

bool IsCommandEnabled(int id) {
    const EnabledCommands enabled = CommandsNow();
    switch (id) {
        case commandNew:
            return enabled.newDocument;
        case commandOpenDataFile:
            return enabled.openDataFile;
        case commandOpenInitialConditions:
            return enabled.openInitialConditions;
        case commandExit:
            return enabled.exit;
        case commandStartTime:
            return enabled.startTime;
        case commandStart:
            return enabled.start;
        case commandStop:
            return enabled.stop;
        case commandHaltIteration:
            return enabled.haltIteration;
        case commandGraph:
            return enabled.graph;
        default:
            return true;
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// The control panel

namespace {

constexpr std::array headings{
    PanelControl{0, "Step #", {10, 10, 23, 8}},
    PanelControl{0, "Iter. #", {40, 10, 23, 8}},
    PanelControl{0, "Vector Norm", {70, 10, 52, 8}},
    PanelControl{0, "% Change", {130, 10, 52, 8}},
};

constexpr std::array buttons{
    PanelControl{commandStart, "S&tart", {9, 179, 43, 14}},
    PanelControl{commandStop, "Sto&p", {77, 179, 28, 14}},
    PanelControl{commandHaltIteration, "Halt &Iteration", {111, 179, 50, 14}},
    PanelControl{commandGraph, "&Graph", {167, 179, 28, 14}},
};

std::string StartStepText() {
    return runState.startStep < 1 ? std::string(StringText(1178)) : FormatText("%d", runState.startStep);
}

}  // namespace

std::span<const PanelControl> PanelHeadings() { return headings; }

std::span<const PanelControl> PanelButtons() { return buttons; }

std::string FileLabel(std::string_view path) {
    return std::string(path.empty() ? StringText(4004) : path.substr(FileNameOffset(path)));
}

std::array<PanelLabel, 4> PanelLabels() {
    std::array<PanelLabel, 4> labels{
        PanelLabel{157, 158, {17, 127, 61, 8}, {85, 127, 103, 8}, {}, {}},
        PanelLabel{159, 160, {17, 137, 61, 8}, {85, 137, 103, 8}, {}, {}},
        PanelLabel{161, 162, {17, 147, 61, 8}, {85, 147, 103, 8}, {}, {}},
        PanelLabel{203, 204, {17, 157, 61, 8}, {85, 157, 103, 8}, {}, {}},
    };
    if (model.dataFileName.empty()) return labels;
    const auto fill = [&](std::size_t row, int number, std::string value) {
        labels[row].left = StringText(number);
        labels[row].right = std::move(value);
    };
    fill(0, 1055, FileLabel(model.dataFileName));
    fill(1, 1057, FileLabel(runState.initialTemperatureFile));
    if (runState.initialConditionMode == 2) fill(2, 1059, FileLabel(runState.initialConductivityFile));
    fill(3, 1177, StartStepText());
    return labels;
}

std::string MainWindowTitle() {
    std::string title(StringText(1007));
    if (model.dataFileName.empty()) return title.append(StringText(1134));
    return title.append(model.dataFileName, FileNameOffset(model.dataFileName));
}

// ---------------------------------------------------------------------------------------------------------------------
// The session and the screen

bool MayEndSession() {
    if (!RunUnderWay()) return true;
    frontEnd.ShowMessage({1140, std::string(StringText(1007)), std::string(StringText(1140)), boxExclamation});
    return false;
}

// One coordinate: the middle of the client area, with the far edge on the screen; below 1 is the screen's edge.
static int CentreWithin(int clientStart, int clientLength, int length, int screenStart, int screenLength) {
    const int centred = clientStart + (clientLength - length) / 2 - screenStart;
    const int limited = std::min(centred, screenLength - length);
    return screenStart + (limited < 1 ? 0 : limited);
}

ScreenPoint CentreOnMain(const DialogRect& client, const DialogRect& size, const DialogRect& screen) {
    return {CentreWithin(client.left, client.width, size.width, screen.left, screen.width),
            CentreWithin(client.top, client.height, size.height, screen.top, screen.height)};
}

std::vector<FileFilter> FileFilters(int number) {
    std::vector<FileFilter> filters;
    std::string_view text = StringText(number);
    if (text.empty()) return filters;
    const char separator = text.back();
    const auto take = [&] {
        const std::size_t end = std::min(text.find(separator), text.size());
        std::string part(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        return part;
    };
    while (!text.empty()) {
        std::string name = take();
        filters.push_back({std::move(name), take()});
    }
    return filters;
}

}  // namespace kaldra
