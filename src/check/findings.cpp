#include "check/findings.h"

#include <algorithm>

namespace kaldra {

void KeepFinding(Findings& findings, std::string_view kind, Finding finding) {
    if (++findings.kinds[kind] > findingsPerKind) return;
    findings.last[kind] = findings.list.size();
    findings.list.push_back(std::move(finding));
}

std::string Counted(std::int64_t count, std::string_view noun) {
    return FormatText("%d %s%s", count, noun, count == 1 ? "" : "s");
}

bool HasErrors(const Findings& findings) {
    return std::ranges::any_of(findings.list, [](const Finding& f) { return f.severity == Severity::Error; });
}

void FinishFindings(Findings& findings) {
    for (const auto& [kind, count] : findings.kinds) {
        if (count <= findingsPerKind) continue;
        findings.list[findings.last[kind]].text += FormatText(" (and %d more like it)", count - findingsPerKind);
    }
    std::ranges::stable_sort(findings.list, {}, &Finding::line);
}

}  // namespace kaldra
