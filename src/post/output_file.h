// A file that appears whole or not at all: it is written beside its place as NAME.part and then renamed.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/files.h"

namespace kaldra {

class OutputFile {
public:
    OutputFile() = default;
    ~OutputFile() { Discard(); }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    // Creates NAME.part; what an earlier one left goes. Gives 1, or 0 after message 5003.
    [[nodiscard]] int Begin(const std::string& path);
    // Adds bytes. A failure is told by Commit.
    void Put(std::string_view bytes);
    // Writes the rest and gives the file its name. Gives 1, or 0 after message 5003 with nothing left behind.
    [[nodiscard]] int Commit();
    // Drops what was written.
    void Discard();
    [[nodiscard]] bool IsOpen() const { return open_; }

private:
    void Flush();

    File file_;
    std::string path_;
    std::string gathered_;
    bool open_ = false;
    bool failed_ = false;
};

// The name under which a file is written before it is whole.
[[nodiscard]] std::string PartName(const std::string& path);

// Shows message 5003 with the path and gives 0.
int ShowCannotWrite(const std::string& path);

// Writes a whole file. Gives 1, or 0 after message 5003.
[[nodiscard]] int WriteOutput(const std::string& path, std::string_view bytes);

// Appends the shortest decimal text that gives the number back; a minus zero is a zero.
void AppendNumber(std::string& text, float value);
void AppendNumber(std::string& text, double value);
void AppendNumber(std::string& text, std::int32_t value);

// Appends numbers with commas between them and a line feed.
template <class First, class... Rest>
void AppendRow(std::string& text, First first, Rest... rest) {
    AppendNumber(text, first);
    ((text += ',', AppendNumber(text, rest)), ...);
    text += '\n';
}

}  // namespace kaldra
