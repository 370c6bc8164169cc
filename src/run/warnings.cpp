#include "run/warnings.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <mutex>
#include <utility>

#include "platform/memory.h"
#include "platform/number_text.h"

namespace kaldra {

namespace {

struct Warnings {
    std::mutex lock;  // for list and taken
    std::vector<std::string> list;
    std::size_t taken = 0;  // leading entries that a front end has had
    std::atomic<bool> whole{true};
};

Warnings warnings;

}  // namespace

void ClearWarnings() {
    const std::scoped_lock lock(warnings.lock);
    warnings.list.clear();
    warnings.taken = 0;
    warnings.whole = true;
}

void AddWarning(std::string text) {
    const std::scoped_lock lock(warnings.lock);
    if (std::ranges::find(warnings.list, text) != warnings.list.end()) return;
    if (!TryMemory(text.size(), [&] { warnings.list.push_back(std::move(text)); })) NoteLackOfMemory();
}

void WarnOfLine(std::string_view file, std::int64_t line, std::string_view text) {
    AddWarning(FormatText("%s:%d: %s", file, line, text));
}

void WarnOfBrokenFile(std::string_view path) {
    warnings.whole = false;
    AddWarning(FormatText("%s was not written whole and must not be used: make room for it, then start again", path));
}

void NoteLackOfMemory() { warnings.whole = false; }

bool ResultsAreWhole() { return warnings.whole; }

std::vector<std::string> TakeWarnings() {
    const std::scoped_lock lock(warnings.lock);
    const auto first = warnings.list.begin() + static_cast<std::ptrdiff_t>(warnings.taken);
    warnings.taken = warnings.list.size();
    return {first, warnings.list.end()};
}

std::string PlainNumber(float value) {
    std::array<char, 32> text{};
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), value);
    return {text.data(), end};
}

}  // namespace kaldra
