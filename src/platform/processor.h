// Which of the kernels that are compiled for several processors run here. All give the same bits.
#pragma once

namespace kaldra {

enum class ProcessorLevel { Plain, Avx2, Avx512 };

// The best level that this processor and LimitProcessorLevel allow.
[[nodiscard]] ProcessorLevel UsedProcessorLevel();

// Keeps the program from using more than `most`, to compare the kernels with each other.
void LimitProcessorLevel(ProcessorLevel most);

}  // namespace kaldra
