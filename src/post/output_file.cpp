#include "post/output_file.h"

#include <array>
#include <charconv>
#include <cmath>

#include "run/front_end.h"
#include "run/messages.h"

namespace kaldra {

static constexpr std::size_t blockSize = 1 << 16;

std::string PartName(const std::string& path) { return path + ".part"; }

int ShowCannotWrite(const std::string& path) {
    ShowErrorBox(boxExclamation, 5003, std::string(StringText(5003)) + path);
    return 0;
}

int OutputFile::Begin(const std::string& path) {
    Discard();
    path_ = path;
    gathered_.clear();
    failed_ = false;
    open_ = file_.Create(PartName(path));
    return open_ ? 1 : ShowCannotWrite(path);
}

void OutputFile::Flush() {
    const auto wanted = static_cast<std::int64_t>(gathered_.size());
    failed_ = failed_ || (wanted > 0 && file_.Write(gathered_) != wanted);
    gathered_.clear();
}

void OutputFile::Put(std::string_view bytes) {
    gathered_ += bytes;
    if (gathered_.size() >= blockSize) Flush();
}

int OutputFile::Commit() {
    Flush();
    open_ = false;
    const bool whole = file_.Close() && !failed_;
    if (whole && RenameFile(PartName(path_), path_)) return 1;
    ShowCannotWrite(path_);
    (void)DeleteFile(PartName(path_));
    (void)TakeLastSystemError();
    return 0;
}

void OutputFile::Discard() {
    if (!open_) return;
    open_ = false;
    (void)file_.Close();
    (void)DeleteFile(PartName(path_));
    (void)TakeLastSystemError();
}

int WriteOutput(const std::string& path, std::string_view bytes) {
    OutputFile file;
    if (!file.Begin(path)) return 0;
    file.Put(bytes);
    return file.Commit();
}

template <class Number>
static void AppendShortest(std::string& text, Number value) {
    std::array<char, 32> digits{};
    const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    text.append(digits.data(), end);
}

void AppendNumber(std::string& text, float value) { AppendShortest(text, value == 0 ? 0.0F : value); }

void AppendNumber(std::string& text, double value) { AppendShortest(text, value == 0 ? 0.0 : value); }

void AppendNumber(std::string& text, std::int32_t value) { AppendShortest(text, value); }

}  // namespace kaldra
