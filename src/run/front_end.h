// What the engine asks of a front end: one record of plain functions, filled in by whoever drives it.
//
// The console and the desktop set these once at program start. A function that is left alone does nothing. Those marked
// [T] are also called on the calculation thread, and return when the front end has dealt with the call; RunFinished
// alone only posts. A text belongs to the caller and lasts for the call. None is called while hmtxGraphMem is held.
#pragma once

#include <string>
#include <string_view>

namespace kaldra {

// A modal box with an OK button. It beeps once and is closed by the user.
struct MessageBox {
    int number = 0;  // of the string, or of the first string of a composed text
    std::string caption;
    std::string text;
    unsigned flags = 0;  // boxExclamation, ...
};

inline constexpr unsigned boxExclamation = 48;

struct FrontEnd {
    // The status list.
    void (*AppendStatus)(std::string_view text) = [](std::string_view) {};       // [T] adds a line and scrolls to it
    void (*AppendStatusPlain)(std::string_view text) = [](std::string_view) {};  // [T] adds a line
    void (*ClearStatus)() = [] {};

    // The run.
    void (*RunFinished)(int result) = [](int) {};  // [T] posted; answered by HandleCalcThreadMsg(100, result)
    void (*IterationDone)() = [] {};               // [T] an iteration was measured and recorded
    void (*StepDone)() = [] {};                    // [T] a step has ended, and its results are written if it is saved;
                                                   // its temperatures do not yet count as the previous ones
    void (*GraphDataReady)() = [] {};              // [T] answered by DrawGraphData
    void (*ResultsChanged)() = [] {};              // tells other programs that the result files have changed

    // Buttons, menu, labels and icon.
    void (*SetHaltEnabled)(bool enabled) = [](bool) {};  // [T]
    bool (*IsHaltEnabled)() = [] { return false; };      // [T]
    void (*UpdateMenuState)() = [] {};
    void (*UpdateButtonState)() = [] {};
    void (*UpdatePanelLabels)() = [] {};
    void (*ShowRunIcon)(bool running) = [](bool) {};
    void (*StartRunAnimation)() = [] {};  // [T]
    void (*StopRunAnimation)() = [] {};
    void (*RepaintMainWindow)() = [] {};  // and gives the control panel the focus

    // The graph window. Its handle is passed on to the chart service.
    void* (*OpenGraphWindow)() = []() -> void* { return nullptr; };  // creates and shows it, still without a chart
    void (*CloseGraphWindow)() = [] {};                   // destroys it, if there is one, and calls GraphWindowGone
    void (*RepaintGraph)() = [] {};                       // paints the new drawing before it returns
    void (*SetGraphEnabled)(bool enabled) = [](bool) {};  // the button Graph alone

    // Messages.
    void (*ShowMessage)(const MessageBox& box) = [](const MessageBox&) {};  // [T]
    void (*Beep)() = [] {};
};

extern FrontEnd frontEnd;

}  // namespace kaldra
