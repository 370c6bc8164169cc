// The convergence graph: what its commands do. The window is the front end's, the drawing the chart service's.
//
// While a calculation thread lives, also one that was told to stop, the graph shows what the thread has stored in the
// graph memory and touches no table; otherwise it reads a step from the convergence file. Everything here runs on the
// front end's thread. hmtxGraphMem is taken for a look at the graph memory and for the description of a drawing, and is
// free whenever the front end is called: no message, file or window work is done under it.
//
//     OpenGraph          window, readers, drawing               command Graph
//     UpdateGraph        readers, drawing                       command Update!
//     DrawGraphData      drawing                                answer to GraphDataReady
//     CloseGraph         tables of a graph request, window      the user closes the window
//     GraphWindowGone    chart                                  the window was destroyed, by whomever
#pragma once

#include <string>

namespace kaldra {

// The command Graph: opens the window and, when idle, draws the last step of the convergence file. A reader that fails
// has shown its message, and the window stays without a curve. The caller shows the wait cursor around it.
void OpenGraph();

// The command Update!: draws the graph memory anew; when idle, after reading the last step of the file. A reader that
// fails has shown its message, and what is there is drawn all the same. Wait cursor as above.
void UpdateGraph();

// Answers GraphDataReady: draws the curve as the calculation thread has left it.
void DrawGraphData();

// Describes the curve to the chart service; a display range without a point leaves the old drawing. Rounds the norms
// that it draws to five digits, in place. hmtxGraphMem must be held; what was drawn is shown by ShowDrawing.
void RedrawGraph();

// ChartClear and RedrawGraph under the mutex, then RepaintGraph with it free.
void ShowDrawing();

// The window was asked to close: releases the tables that were made for the graph, closes it and enables Graph.
void CloseGraph();

// The window is being destroyed: gives up its chart. The front end calls it from CloseGraphWindow; a second call does
// nothing.
void GraphWindowGone();

// The window wants to be painted, or has a new size.
void PaintGraph();

// The command Copy: the drawing to the clipboard, and a beep. Wait cursor as above.
void CopyGraph();

// Caption of the window.
[[nodiscard]] std::string GraphCaption();

}  // namespace kaldra
