#include "model/line_reader.h"

#include <algorithm>

#include "platform/memory.h"
#include "run/messages.h"

namespace kaldra {

namespace {

constexpr std::size_t blockSize = 1050;   // allocated
constexpr std::size_t blockBytes = 1000;  // of the file in one block

// What the reader keeps between calls.
struct ReaderState {
    std::vector<char> readBlock;  // empty: no block in memory
    std::size_t readCursor = 0;   // start of the next unread line
};

ReaderState reader;

void ReleaseBlock() {
    std::vector<char>().swap(reader.readBlock);
    reader.readCursor = 0;
}

enum class Filled { Yes, EndOfFile, Failed };

Filled FillBlock(File& file) {
    if (!MakeTable(reader.readBlock, blockSize)) return Filled::Failed;
    reader.readCursor = 0;
    const std::int64_t count = file.Read(std::span(reader.readBlock).first(blockBytes));
    if (count > 0) {
        reader.readBlock[static_cast<std::size_t>(count)] = '\0';
        return Filled::Yes;
    }
    ReleaseBlock();
    if (count == 0) return Filled::EndOfFile;
    ShowError(1020);
    return Filled::Failed;
}

// Stores the block's characters up to the next line feed or NUL and moves the cursor there.
char CopyToLineEnd(LineBuffer& line) {
    const std::vector<char>& block = reader.readBlock;
    for (;; ++reader.readCursor) {
        const char c = block[reader.readCursor];
        if (c == '\n' || c == '\0') return c;
        if (c == '\r') continue;
        if (line.length < lineBufferSize - 1) {
            line.text[line.length++] = c;
        } else if (c != ' ') {
            line.cut = true;
        }
    }
}

}  // namespace

int ReadLine(File& file, LineBuffer& line) {
    line.length = 0;
    line.cut = false;
    for (;;) {
        if (reader.readBlock.empty()) {
            const Filled filled = FillBlock(file);
            if (filled == Filled::EndOfFile) return line.length > 0 ? 1 : 0;
            if (filled == Filled::Failed) return -1;
        }
        if (CopyToLineEnd(line) == '\n') {
            ++reader.readCursor;
            return 1;
        }
        ReleaseBlock();
    }
}

int ReadLine(File&, ClearBuf) {
    ReleaseBlock();
    return 1;
}

void TrimLeadingBlanks(LineBuffer& line) {
    const std::string_view text = line.View();
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos || first == 0) return;
    std::copy(text.begin() + static_cast<std::ptrdiff_t>(first), text.end(), line.text.begin());
    line.length -= first;
}

}  // namespace kaldra
