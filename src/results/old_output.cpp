#include "results/old_output.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model/file_names.h"
#include "model/problem_model.h"
#include "platform/files.h"
#include "platform/number_text.h"
#include "run/front_end.h"
#include "run/messages.h"
#include "run/run_state.h"
#include "run/warnings.h"

namespace kaldra {

// Number behind the first letter of an extension: 0 for no digits, -1 where anything else stands there.
static std::int64_t NumberOf(std::string_view extension) {
    const std::string_view digits = extension.substr(std::min<std::size_t>(extension.size(), 1));
    if (!std::ranges::all_of(digits, [](unsigned char c) { return std::isdigit(c) != 0; })) return -1;
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return error == std::errc::result_out_of_range ? std::numeric_limits<std::int64_t>::max() : number;
}

static bool IsMadeAgain(std::int64_t number) {
    if (number < runState.startStep) return false;
    return number != 0 || model.analysisType != steadyState;
}

// Folder and name of the data file up to its last dot.
struct Stem {
    std::string folder;
    std::string name;
};

// Old files that stay although they should not.
struct Leftovers {
    std::int64_t count = 0;
    std::string first;

    void Add(const std::string& path) {
        if (count++ == 0) first = path;
    }
};

// Deletes the numbered files of one pattern, ".t*" and the like.
[[nodiscard]] static int ClearPattern(const Stem& stem, std::string_view pattern, bool& announced, Leftovers& left) {
    pattern.remove_suffix(1);
    (void)TakeLastSystemError();
    const std::vector<std::string> names = ListFiles(stem.folder, stem.name + std::string(pattern));
    if (TakeLastSystemError() != 0) left.Add(stem.folder + stem.name + std::string(pattern) + '*');
    for (const std::string& name : names) {
        std::int32_t dotPosition = 0;
        std::int32_t length = 0;
        if (!FindExtension(name, dotPosition, length)) return 0;
        if (!IsMadeAgain(NumberOf(std::string_view(name).substr(static_cast<std::size_t>(dotPosition))))) continue;
        if (!DeleteFile(stem.folder + name)) {
            left.Add(stem.folder + name);
            continue;
        }
        if (!announced) frontEnd.AppendStatusPlain(StringText(1084));
        announced = true;
        frontEnd.AppendStatus(name);
    }
    return 1;
}

static void ClearSteadyStart(const std::string& stem, Leftovers& left) {
    for (const std::string_view extension : {".tin", ".gin", ".rin", ".jin"}) {
        const std::string path = stem + std::string(extension);
        if (!DeleteFileIfThere(path)) left.Add(path);
    }
}

static void WarnOfLeftovers(const Leftovers& left) {
    if (left.count == 0) return;
    std::string text = left.first + " could not be deleted and is no result of this run: delete it";
    if (left.count > 1) text += FormatText(", and %d more like it", left.count - 1);
    AddWarning(std::move(text));
}

int ClearOldOutput() {
    const std::string_view path = model.dataFileName;
    std::int32_t dotPosition = 0;
    std::int32_t length = 0;
    if (!FindExtension(path, dotPosition, length)) return 0;
    const std::string whole(path.substr(0, static_cast<std::size_t>(dotPosition) - 1));
    const std::size_t name = std::min(whole.rfind('/') + 1, whole.size());  // npos + 1 is 0: no folder
    Leftovers left;
    if (model.analysisType == steadyState) ClearSteadyStart(whole, left);
    bool announced = false;
    for (const int pattern : {1085, 1086, 1087, 1088}) {
        if (!ClearPattern({whole.substr(0, name), whole.substr(name)}, StringText(pattern), announced, left)) return 0;
    }
    WarnOfLeftovers(left);
    (void)TakeLastSystemError();  // a file that could not be deleted is nobody's failure
    return 1;
}

}  // namespace kaldra
