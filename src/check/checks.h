// What may be wrong or doubtful in the tables that ReadLoosely has filled. Front end's thread.
#pragma once

#include "check/findings.h"
#include "check/loose_reader.h"

namespace kaldra {

// Missing and misplaced sections, settings, time sequence, materials and functions.
void CheckSettings(const ReadLines& lines, Findings& findings);

// Nodes, elements, edges, and what holds them together.
void CheckMesh(const ReadLines& lines, Findings& findings);

// An element that takes part: its material has a conductivity function, and all its references reach a record.
[[nodiscard]] bool IsSoundAndActive(const ElementRec& element);

[[nodiscard]] inline bool IsNumberOf(std::int32_t number, std::int32_t count) { return number >= 1 && number <= count; }

}  // namespace kaldra
