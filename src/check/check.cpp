#include "check/check.h"

#include <algorithm>

#include "check/checks.h"
#include "check/loose_reader.h"
#include "model/boundary_range.h"
#include "model/data_file.h"
#include "model/function_setup.h"
#include "results/flux_geometry.h"
#include "run/front_end.h"
#include "run/run_state.h"
#include "run/warnings.h"

namespace kaldra {

namespace {

std::vector<std::string> shown;  // what the engine says during the check

// Takes the engine's messages away from the front end for as long as it lives.
class MessageCatcher {
public:
    MessageCatcher() : before_(frontEnd.ShowMessage) {
        shown.clear();
        frontEnd.ShowMessage = [](const MessageBox& box) {
            std::string text = FormatText("message %d: ", box.number) + box.text;
            std::ranges::replace(text, '\n', ' ');
            shown.push_back(std::move(text));
        };
    }
    ~MessageCatcher() { frontEnd.ShowMessage = before_; }
    MessageCatcher(const MessageCatcher&) = delete;
    MessageCatcher& operator=(const MessageCatcher&) = delete;

private:
    void (*before_)(const MessageBox& box);
};

void AddShown(Severity severity, Findings& findings) {
    for (const std::string& text : shown) findings.list.push_back({0, severity, text});
    shown.clear();
}

void RenewModel() {
    (void)FreeModel();
    InitModel(1);
}

// A section that meets no element has no flow. Crossings are found as a run finds them.
void CheckFluxSections(const ReadLines& lines, Findings& findings) {
    runState.running = 1;
    const bool built = BuildFluxCrossings() == 1;
    runState.running = 0;
    for (std::size_t s = 0; built && s < static_cast<std::size_t>(model.fluxSectionCount); ++s) {
        if (!model.fluxResults[s].crossings.empty()) continue;
        AddDoubt(findings, LineOf(lines.fluxSections, s), "flux section %d crosses no element",
                 static_cast<std::int64_t>(s) + 1);
    }
}

// What only a model that was read whole can tell, and whatever else keeps a start from it.
void CheckAsAStartDoes(const ReadLines& lines, Findings& findings) {
    const bool ready = ReadDataFile() && SetupFunctions();
    AddShown(ready ? Severity::Doubt : Severity::Error, findings);
    if (!ready) return;
    for (const OutsideRange& outside : BoundaryFunctionsOutside(1)) {
        AddDoubt(findings, model.bFunctions[IndexOf(outside.function)].line, "%s", OutsideRangeText(outside));
    }
    CheckFluxSections(lines, findings);
    AddShown(Severity::Doubt, findings);
}

}  // namespace

Findings CheckDataFile(const std::string& path) {
    Findings findings;
    ReadLines lines;
    const MessageCatcher catcher;
    RenewModel();
    model.analysisType = 0;
    model.dataFileName = path;
    const bool read = ReadLoosely(lines, findings);
    AddShown(Severity::Error, findings);
    if (read) {
        CheckSettings(lines, findings);
        CheckMesh(lines, findings);
    }
    RenewModel();
    if (!HasErrors(findings)) CheckAsAStartDoes(lines, findings);
    RenewModel();
    ClearWarnings();  // the reader's, which are findings by now
    FinishFindings(findings);
    return findings;
}

}  // namespace kaldra
