// Flux section geometry: which elements a section crosses, and which of their nodes lie on which side of it.
//
// A section is a polyline through the mesh. Its flow is not integrated along the line: each crossed element is split by
// the line from the point of entry to the point of exit into two sets of nodes, and the element's matrices give the
// flow between the two (flux_results). Nothing here depends on temperatures. Calculation thread, once per run.
#pragma once

namespace kaldra {

// Fills the crossings of every section, in rising element number. Gives 1; 0 after message 1138, or without one
// when Stop was pressed.
[[nodiscard]] int BuildFluxCrossings();

// Where the segment (x1, y1)-(x2, y2) of a section meets the element edge (x3, y3)-(x4, y4). End points that are near
// each other count first; then vertical and horizontal segments have cases of their own, in this order: first segment
// vertical, second vertical, first horizontal, second horizontal, both oblique. Parallel segments meet nowhere. Ranges
// include their ends and have no tolerance. Gives 1 with the point in x and y, else 0; x and y may be written also
// then.
[[nodiscard]] int SegmentIntersect(float x1, float y1, float x2, float y2, float x3, float y3, float x4, float y4,
                                   float& x, float& y);

}  // namespace kaldra
