// A chart on a page: its fit and place, and the print job that puts it there.
#pragma once

#include <cstdint>
#include <string>

namespace kaldra {

struct Extent {
    double height = 0;
    double width = 0;
};

// Where a chart stands on its page, in the page's unit.
struct PagePlace {
    double top = 0;
    double left = 0;
    double bottom = 0;
    double right = 0;
};

// The largest place of the chart's shape on the page, centred.
[[nodiscard]] PagePlace FitToPage(const Extent& chart, const Extent& page);

// Orientation codes of a print job.
inline constexpr std::int32_t printDefault = 0;
inline constexpr std::int32_t printPortrait = 2;
inline constexpr std::int32_t printLandscape = 4;

// What the user has chosen in the print dialog.
struct PrintJob {
    std::string device;
    std::string file;  // empty: the device
    std::int32_t copies = 1;
    std::int32_t orientation = printDefault;
};

// Prints the chart by the chart service. Gives 1, or 0 after message 1282. Front end's thread, hmtxGraphMem free.
[[nodiscard]] int PrintChart(const PrintJob& job);

}  // namespace kaldra
