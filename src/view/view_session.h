// One data file that is looked at: its scene, its saved steps, and the one that is shown. No toolkit here.
//
// The temperatures of all steps are read ahead, step by step, while nobody waits: they give the range of a colour scale
// that stays the same over all steps, and the histories of nodes. Front end's thread; uses the model, so no run of its
// own is under way in the process.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "post/result_set.h"
#include "post/thaw_depth.h"
#include "view/colour_scale.h"
#include "view/curve_picture.h"
#include "view/probe.h"
#include "view/scene.h"

namespace kaldra {

inline constexpr std::size_t noStep = static_cast<std::size_t>(-1);

// The results of a step, as good as long as its files have these stamps.
struct KeptStep {
    StepStamps stamps{};
    StepResults results;
};

struct ViewSession {
    std::string path;
    bool isOpen = false;
    ResultSet set;
    std::size_t shown = noStep;  // index in set.steps
    StepResults results;         // of that step
    Scene scene;

    std::map<std::int32_t, KeptStep> kept;  // by step, as many as memory is spent on, so that a film need not wait
    std::size_t keptBytes = 0;

    std::size_t readAhead = 0;                     // steps whose temperatures are known
    std::vector<std::vector<float>> temperatures;  // by step, then by node
    float least = 0, greatest = 0;                 // over them, in active cells
    bool hasRange = false;
};

// What a user sets for the colours.
struct ScaleChoice {
    bool fixedOverSteps = true;
    bool given = false;  // low and high below instead of what the results have
    double low = 0, high = 0;
    std::int32_t bands = 0;  // 0: readable ones
};

// Opens a data file with its results and shows the last saved step. Gives 1, also without results; 0 after a message,
// with nothing open.
[[nodiscard]] int OpenView(ViewSession& session, const std::string& path);

// Reads everything anew and shows the same step, or the last one. Gives 1, or 0 after a message.
[[nodiscard]] int RefreshView(ViewSession& session);

// Shows a step. Gives 1, or 0 after a message with the step before it still shown.
[[nodiscard]] int ShowStep(ViewSession& session, std::size_t index);

// Reads the temperatures of one more step. False when all are known, or after a message, when no more will come.
[[nodiscard]] bool ReadAhead(ViewSession& session);

// The scale for the step that is shown.
[[nodiscard]] ColourScale ScaleOf(const ViewSession& session, const ScaleChoice& choice);

// The step that is shown, with its time.
[[nodiscard]] std::string StepText(const ViewSession& session);

// The name of the file, and the step: "name.kdr    step 12, time 365".
[[nodiscard]] std::string TitleOf(const ViewSession& session);

// What the probe says of a place, as one line; empty outside the mesh.
[[nodiscard]] std::string ProbeText(const ViewSession& session, double x, double y);

// Temperature against distance along a line of the step that is shown.
[[nodiscard]] CurveSheet SectionSheet(const ViewSession& session, PicturePoint from, PicturePoint to);

// Temperature of a node against time, over the steps that are known.
[[nodiscard]] CurveSheet HistorySheet(const ViewSession& session, std::int32_t node);

// What thaws along the vertical at x, over the steps that are known: depth of thaw against time with every crossing and
// the deepest of each period, and the trumpet curve of the period of the step that is shown. False where no active
// element lies there, or after message 1138.
[[nodiscard]] bool ThawSheets(const ViewSession& session, double x, CurveSheet& depth, CurveSheet& trumpet);

}  // namespace kaldra
