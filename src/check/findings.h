// What a check found: one sentence per fault, with the line of the file.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/number_text.h"

namespace kaldra {

enum class Severity : std::uint8_t {
    Error,  // an analysis cannot start, or fails before its first solution
    Doubt,  // it runs, but hardly as was meant
};

struct Finding {
    std::int64_t line = 0;  // 0: of the file as a whole
    Severity severity = Severity::Error;
    std::string text;
};

// A fault that is made in one line is often made in a thousand: of each kind only the first few are kept.
inline constexpr std::int64_t findingsPerKind = 10;

struct Findings {
    std::vector<Finding> list;
    std::map<std::string_view, std::int64_t> kinds;  // by the format of the sentence: how many there are
    std::map<std::string_view, std::size_t> last;    // and the place of the last one that was kept
};

// Adds what is kept of a kind. `kind` is the format of the sentence, a literal.
void KeepFinding(Findings& findings, std::string_view kind, Finding finding);

template <class... Arguments>
void AddError(Findings& findings, std::int64_t line, std::string_view format, const Arguments&... arguments) {
    KeepFinding(findings, format, {line, Severity::Error, FormatText(format, arguments...)});
}

template <class... Arguments>
void AddDoubt(Findings& findings, std::int64_t line, std::string_view format, const Arguments&... arguments) {
    KeepFinding(findings, format, {line, Severity::Doubt, FormatText(format, arguments...)});
}

// "1 row", "2 rows".
[[nodiscard]] std::string Counted(std::int64_t count, std::string_view noun);

[[nodiscard]] bool HasErrors(const Findings& findings);

// Tells of those that were not kept, and sorts by line.
void FinishFindings(Findings& findings);

}  // namespace kaldra
