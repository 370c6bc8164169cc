#include "post/thaw_tables.h"

#include "model/file_names.h"
#include "model/problem_model.h"
#include "platform/memory.h"
#include "platform/narrow.h"
#include "post/csv_export.h"
#include "post/output_file.h"

namespace kaldra {

namespace {

// Results hold seven digits; more would pretend.
float Shown(double value) { return Narrow(value); }

std::string CrossingRows(std::span<const ThawHistory> histories) {
    std::string rows = "step,time,x,y,depth,above\n";
    for (const ThawHistory& history : histories) {
        for (const StepThaw& step : history.steps) {
            for (const FreezingCrossing& crossing : step.crossings) {
                AppendRow(rows, step.step, Shown(step.elapsed), Shown(history.line.x), Shown(crossing.y),
                          Shown(crossing.depth));
                rows.back() = ',';
                rows += crossing.thawedAbove ? "thawed\n" : "frozen\n";
            }
        }
    }
    return rows;
}

std::string DeepestRows(std::span<const ThawHistory> histories) {
    std::string rows = "period,from,to,x,step,time,depth,to_the_bottom\n";
    for (const ThawHistory& history : histories) {
        for (const Trumpet& trumpet : history.periods) {
            AppendRow(rows, trumpet.period.number, Shown(trumpet.period.from), Shown(trumpet.period.to),
                      Shown(history.line.x), trumpet.deepestStep, Shown(trumpet.deepestTime),
                      Shown(trumpet.deepest.depth), trumpet.deepest.toTheBottom ? 1 : 0);
        }
    }
    return rows;
}

std::string TrumpetRows(std::span<const ThawHistory> histories) {
    std::string rows = "period,from,to,x,y,depth,least,mean,greatest\n";
    for (const ThawHistory& history : histories) {
        for (const Trumpet& trumpet : history.periods) {
            for (std::size_t i = 0; i < history.line.samples.size(); ++i) {
                const double y = history.line.samples[i].y;
                AppendRow(rows, trumpet.period.number, Shown(trumpet.period.from), Shown(trumpet.period.to),
                          Shown(history.line.x), Shown(y), Shown(history.line.samples.front().y - y),
                          Shown(trumpet.least[i]), Shown(trumpet.sum[i] / trumpet.weight), Shown(trumpet.greatest[i]));
            }
        }
    }
    return rows;
}

using MakeRows = std::string (*)(std::span<const ThawHistory> histories);

[[nodiscard]] int WriteTable(std::string_view extension, MakeRows makeRows, std::span<const ThawHistory> histories,
                             std::vector<std::string>& written) {
    const std::string path = ReplaceExtension(model.dataFileName, extension);
    constexpr std::size_t someMemory = 1 << 20;
    std::string text;
    if (!WithMemory(someMemory, [&] { text = UnitLine() + makeRows(histories); })) return 0;
    if (!WriteOutput(path, text)) return 0;
    written.push_back(path);
    return 1;
}

}  // namespace

int WriteThawTables(std::span<const ThawHistory> histories, std::vector<std::string>& written) {
    return WriteTable(".thaw.csv", CrossingRows, histories, written) &&
           WriteTable(".thaw-deepest.csv", DeepestRows, histories, written) &&
           WriteTable(".trumpet.csv", TrumpetRows, histories, written);
}

}  // namespace kaldra
