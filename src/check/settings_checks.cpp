#include <algorithm>
#include <array>
#include <cmath>
#include <span>

#include "check/checks.h"
#include "restart/step_files.h"
#include "run/warnings.h"

namespace kaldra {

namespace {

std::int64_t KeywordLine(const ReadLines& lines, Section section) {
    return lines.keyword[static_cast<std::size_t>(section)];
}

bool IsTransient() { return model.analysisType == transient; }

// ---------------------------------------------------------------------------------------------------------------------
// Sections

struct Missing {
    Section section;
    Severity severity;
    std::string_view consequence;
};

void CheckSections(const ReadLines& lines, Findings& findings) {
    constexpr std::array missing{
        Missing{Section::Analysis, Severity::Error, ": neither a steady-state nor a transient analysis is asked for"},
        Missing{Section::Converge, Severity::Doubt, ": no iteration is done"},
        Missing{Section::Material, Severity::Error, ": no element takes part"},
        Missing{Section::Node, Severity::Error, ": there is no mesh"},
        Missing{Section::Element, Severity::Error, ": there is no mesh"},
        Missing{Section::QBoundary, Severity::Error, ", which ends the file: add a line \"qBOUNDARY 0\""},
    };
    for (const auto& [section, severity, consequence] : missing) {
        if (KeywordLine(lines, section) != 0) continue;
        const std::string text = FormatText("the section %s is missing%s", KeywordOf(section), consequence);
        KeepFinding(findings, KeywordOf(section), {0, severity, text});
    }
    const std::int64_t material = KeywordLine(lines, Section::Material);
    const std::int64_t element = KeywordLine(lines, Section::Element);
    if (material > element && element != 0) {
        AddError(findings, element, "ELEMENT stands before MATERIAL in line %d: change their order", material);
    }
    const std::int64_t node = KeywordLine(lines, Section::Node);
    const auto startsAtFreezing = [](const NodeRow& row) { return row.initialFlag != 1; };
    if (KeywordLine(lines, Section::Analysis) > node && node != 0 &&
        std::ranges::any_of(lines.nodeRows, startsAtFreezing)) {
        AddDoubt(findings, node, "NODE stands before ANALYSIS, whose freezing point its nodes should start with");
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Settings

void CheckAnalysis(const ReadLines& lines, Findings& findings) {
    const std::int64_t line = lines.analysis;
    if (line == 0) return;
    if (model.analysisType != steadyState && !IsTransient()) {
        AddError(findings, line, "the analysis type is %d, and not 1 (steady state) or 2 (transient)",
                 model.analysisType);
    }
    if (model.problemView < 1 || model.problemView > viewPlan) {
        AddDoubt(findings, line, "the view is %d and taken as 1 (plane); 2 is axisymmetric, 3 plan view",
                 model.problemView);
    }
    if (model.latentHeat < 0)
        AddDoubt(findings, line, "the latent heat is negative: %s", PlainNumber(model.latentHeat));
}

void CheckConverge(const ReadLines& lines, Findings& findings) {
    const std::int64_t line = lines.converge;
    if (line == 0) return;
    const std::int32_t least = IsTransient() ? 3 : 2;
    if (model.maxIterations < 1) {
        AddDoubt(findings, line, "maxIterations is %d, so that nothing is solved", model.maxIterations);
    } else if (model.maxIterations < least) {
        AddDoubt(findings, line, "maxIterations is %d, and %d is the least in which anything can converge",
                 model.maxIterations, least);
    }
    if (model.tolerance <= 0) {
        AddDoubt(findings, line, "the tolerance is %s per cent, which no change of the norm stays below",
                 PlainNumber(model.tolerance));
    }
    if (IsTransient() && model.latentHeat > 0 && model.maxPhasePoints < 1) {
        AddDoubt(findings, line, "maxPhasePoints is %d, so that no point is brought under phase-change control",
                 model.maxPhasePoints);
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Time sequence

void CheckStep(std::int64_t line, std::int32_t number, float before, Findings& findings) {
    const TimeStepRec& step = model.timeSteps[IndexOf(number)];
    const double increment = static_cast<double>(step.increment);
    const double elapsed = static_cast<double>(step.elapsed);
    if (step.increment <= 0) {
        AddDoubt(findings, line, "step %d has the increment %s", number, PlainNumber(step.increment));
    }
    const double expected = static_cast<double>(before) + increment;
    if (std::abs(elapsed - expected) > 1e-3 * std::abs(increment) + 1e-5 * std::abs(elapsed)) {
        AddDoubt(findings, line, "step %d ends at %s, but its increment %s after %s makes %s", number,
                 PlainNumber(step.elapsed), PlainNumber(step.increment), PlainNumber(before),
                 PlainNumber(static_cast<float>(expected)));
    }
    if (step.saveFlag != 0 && step.saveFlag != 1) {
        AddDoubt(findings, line, "step %d has the save flag %d, and is not saved", number, step.saveFlag);
    }
    if (step.saveFlag == 1 && !TimeSurvivesFile(step.elapsed)) {
        AddDoubt(findings, line,
                 "the elapsed time %s of step %d needs more than the five digits of a result file, so that no restart "
                 "finds its results: give it five digits",
                 PlainNumber(step.elapsed), number);
    }
}

void CheckTime(const ReadLines& lines, Findings& findings) {
    if (!IsTransient()) return;
    const std::int64_t keyword = KeywordLine(lines, Section::Time);
    if (model.stepCount == 0)
        return AddDoubt(findings, keyword, "a transient analysis without time steps does nothing");
    bool saved = false;
    for (std::int32_t number = 1; number <= model.stepCount; ++number) {
        const float before = number == 1 ? 0.0F : model.timeSteps[IndexOf(number - 1)].elapsed;
        CheckStep(lines.steps[IndexOf(number)], number, before, findings);
        saved = saved || model.timeSteps[IndexOf(number)].saveFlag == 1;
    }
    if (!saved) return AddDoubt(findings, keyword, "no step has the save flag 1, so that there will be no results");
    if (model.timeSteps[IndexOf(model.stepCount)].saveFlag != 1) {
        AddDoubt(findings, lines.steps.back(), "the last step is not saved, so that its results are lost");
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Materials

bool HasPoints(const std::vector<PropertyFunction>& table, std::int32_t number) {
    return table[IndexOf(number)].pointCount > 0;
}

// Values that count in a transient analysis of an element of this material.
void CheckHeat(std::int64_t line, std::int32_t number, bool active, Findings& findings) {
    const MaterialRec& material = model.materials[IndexOf(number)];
    if (active && material.waterContentFunction == 0) {
        AddError(findings, line, "material %d has no S function, which a transient analysis needs of every element",
                 number);
    }
    if (material.frozenHeatCapacity <= 0 || material.unfrozenHeatCapacity <= 0) {
        AddDoubt(findings, line, "material %d has a heat capacity that is not above 0", number);
    }
    if (material.waterContent < 0 || material.waterContent > 1) {
        AddDoubt(findings, line, "material %d has the volumetric water content %s, which is no part of 1", number,
                 PlainNumber(material.waterContent));
    }
}

void CheckMaterial(std::int64_t line, std::int32_t number, bool used, bool active, Findings& findings) {
    const MaterialRec& material = model.materials[IndexOf(number)];
    const std::int32_t k = material.conductivityFunction;
    const std::int32_t s = material.waterContentFunction;
    if (!used) return AddDoubt(findings, line, "no element has material %d", number);
    if (k < 0 || k > model.kFunctionCount) {
        AddError(findings, line, "material %d names K function %d, and there are %d", number, k, model.kFunctionCount);
    } else if (k > 0 && !HasPoints(model.kFunctions, k)) {
        AddDoubt(findings, line, "K function %d of material %d has no points, so that it conducts nothing", k, number);
    }
    if (s < 0 || s > model.sFunctionCount) {
        AddError(findings, line, "material %d names S function %d, and there are %d", number, s, model.sFunctionCount);
    } else if (IsTransient() && s > 0 && !HasPoints(model.sFunctions, s)) {
        AddDoubt(findings, line, "S function %d of material %d has no points, so that its water never freezes", s,
                 number);
    }
    if (IsTransient() && k != 0) CheckHeat(line, number, active, findings);
}

void CheckMaterials(const ReadLines& lines, Findings& findings) {
    const auto count = static_cast<std::size_t>(model.materialCount);
    std::vector<bool> used(count);
    std::vector<bool> active(count);  // by an element that is integrated
    for (const ElementRec& element : std::span(model.elements).first(static_cast<std::size_t>(model.elementCount))) {
        if (!IsNumberOf(element.material, model.materialCount)) continue;
        used[IndexOf(element.material)] = true;
        if (element.integrationPoints > 0) active[IndexOf(element.material)] = true;
    }
    for (std::int32_t number = 1; number <= model.materialCount; ++number) {
        const std::size_t m = IndexOf(number);
        if (LineOf(lines.materials, m) != 0) {
            CheckMaterial(lines.materials[m], number, used[m], active[m], findings);
        } else if (used[m]) {
            AddDoubt(findings, KeywordLine(lines, Section::Material),
                     "material %d has no row, so that its elements take no part", number);
        }
    }
}

// ---------------------------------------------------------------------------------------------------------------------
// Functions

constexpr std::array<char, 4> letters{'K', 'S', 'M', 'B'};

void CheckPoints(const FunctionLines& lines, std::span<const FunctionPoint> points, std::int32_t count,
                 Findings& findings) {
    if (points.size() == 1 && count == 1)
        AddError(findings, lines.header, "a function needs two points, and this one has one");
    for (std::size_t i = 1; i < points.size(); ++i) {
        if (points[i].x > points[i - 1].x) continue;
        AddError(findings, lines.points[i], "x of this point is %s and does not rise above the %s of the point before",
                 PlainNumber(points[i].x), PlainNumber(points[i - 1].x));
    }
}

void CheckConductivities(const FunctionLines& lines, const PropertyFunction& function, Findings& findings) {
    for (std::size_t i = 0; i < function.points.size(); ++i) {
        if (function.points[i].y > 0) continue;
        AddDoubt(findings, lines.points[i], "a conductivity of %s is not above 0", PlainNumber(function.points[i].y));
    }
}

void CheckWaterContents(const FunctionLines& lines, const PropertyFunction& function, Findings& findings) {
    for (std::size_t i = 0; i < function.points.size(); ++i) {
        const float y = function.points[i].y;
        if (y < 0 || y > 1) {
            AddDoubt(findings, lines.points[i], "an unfrozen part of %s is taken as %d", PlainNumber(y), y < 0 ? 0 : 1);
        } else if (i > 0 && y < function.points[i - 1].y) {
            AddDoubt(findings, lines.points[i], "the unfrozen part falls from %s to %s as the temperature rises",
                     PlainNumber(function.points[i - 1].y), PlainNumber(y));
        }
    }
}

void CheckRepeat(const FunctionLines& lines, const BoundaryFunction& function, Findings& findings) {
    if (function.repeat != 0 && function.repeat != 1) {
        AddDoubt(findings, lines.header, "the repeat flag is %d, and the function does not repeat", function.repeat);
    }
    if (function.repeat == 1 && !function.points.empty() && function.period <= 0) {
        AddDoubt(findings, lines.header, "the function repeats with x of its last point, which is %s",
                 PlainNumber(function.period));
    }
}

using Used = std::array<std::vector<bool>, 4>;  // by table and index

void Mark(std::vector<bool>& used, std::int32_t number) {
    if (number >= 1 && IndexOf(number) < used.size()) used[IndexOf(number)] = true;
}

Used FunctionsInUse(const ReadLines& lines) {
    Used used;
    for (std::size_t table = 0; table < used.size(); ++table) used[table].resize(lines.functions[table].size());
    for (const MaterialRec& material : model.materials) {
        Mark(used[0], material.conductivityFunction);
        Mark(used[1], material.waterContentFunction);
    }
    for (const NodeRec& node : std::span(model.nodes).first(static_cast<std::size_t>(model.nodeCount))) {
        if (node.bcType == bcFree) continue;
        Mark(used[2], node.modifierFunction);
        Mark(used[3], node.bcFunction);
    }
    for (const QBoundaryRec& edge :
         std::span(model.qBoundaries).first(static_cast<std::size_t>(model.qBoundaryCount))) {
        Mark(used[2], edge.modifier);
        Mark(used[3], edge.bFunction);
    }
    return used;
}

template <class Function, class CheckValues>
void CheckTable(const std::vector<Function>& functions, const std::vector<FunctionLines>& lines, Findings& findings,
                CheckValues checkValues) {
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].header == 0) continue;
        CheckPoints(lines[i], functions[i].points, functions[i].pointCount, findings);
        checkValues(lines[i], functions[i], findings);
    }
}

void CheckFunctions(const ReadLines& lines, Findings& findings) {
    CheckTable(model.kFunctions, lines.functions[0], findings, CheckConductivities);
    CheckTable(model.sFunctions, lines.functions[1], findings, CheckWaterContents);
    CheckTable(model.mFunctions, lines.functions[2], findings, [](const auto&...) {});
    CheckTable(model.bFunctions, lines.functions[3], findings, CheckRepeat);
    const Used used = FunctionsInUse(lines);
    for (std::size_t table = 0; table < used.size(); ++table) {
        for (std::size_t i = 0; i < used[table].size(); ++i) {
            const std::int64_t line = lines.functions[table][i].header;
            if (used[table][i] || line == 0) continue;
            AddDoubt(findings, line, "nothing uses %s function %d", std::string_view(&letters[table], 1),
                     static_cast<std::int64_t>(i) + 1);
        }
    }
}

}  // namespace

void CheckSettings(const ReadLines& lines, Findings& findings) {
    CheckSections(lines, findings);
    CheckAnalysis(lines, findings);
    CheckConverge(lines, findings);
    CheckTime(lines, findings);
    CheckMaterials(lines, findings);
    CheckFunctions(lines, findings);
}

}  // namespace kaldra
