// The windows that exist, and how the engine's notifications reach them.
#pragma once

#include <QWidget>

namespace kaldra {

class MainWindow;
class ControlPanel;
class GraphWindow;

// Front end's thread only; null while there is no such window.
struct Desktop {
    MainWindow* main = nullptr;
    ControlPanel* panel = nullptr;
    GraphWindow* graph = nullptr;
};

extern Desktop desktop;

// Fills in frontEnd. What the calculation thread asks is done on the front end's thread while the calculation thread
// waits; RunFinished alone is only posted.
void ConnectDesktop();

// Waits for a calculation thread that was told to stop, and goes on answering it meanwhile.
void WaitForCalcThread();

}  // namespace kaldra
