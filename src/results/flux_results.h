// The flux result file of a step (.jNN): the heat that crosses each flux section, in all and by element.
#pragma once

namespace kaldra {

// Forms the flows of all crossings and sections from the values recorded by the step's last assembly, and writes the
// file. Without flux sections there is nothing to do. Gives 1, or 0 after message 1026 (open), 1193 (end of the stream)
// or 1039 (close). A line that cannot be written shows the writer's 1192, and the rest of the file is left out.
// Calculation thread, before the step's temperatures become the previous ones.
[[nodiscard]] int ComputeFluxResults();

}  // namespace kaldra
