#include "model/line_reader.h"

#include <algorithm>
#include <cstring>

#include "platform/memory.h"
#include "run/messages.h"

namespace kaldra {

namespace {

constexpr std::size_t blockBytes = 1000;            // of the file in one block
constexpr std::size_t roomBytes = 64 * blockBytes;  // read from the file at once

// What the reader keeps between calls. A block is part of what was read; whatever follows a NUL in it does not count.
struct ReaderState {
    std::vector<char> room;      // empty: no stream
    std::size_t roomEnd = 0;     // end of what was read into it
    std::size_t nextBlock = 0;   // where the block after the present one begins
    std::size_t readCursor = 0;  // start of the next unread line
    std::size_t readEnd = 0;     // end of the block's text: of its bytes, or the first NUL
    bool blockIsUsedUp = true;
};

ReaderState reader;

void EndStream() { reader = ReaderState(); }

enum class Filled { Yes, EndOfFile, Failed };

Filled FillRoom(File& file) {
    if (reader.room.empty() && !MakeTable(reader.room, roomBytes)) return Filled::Failed;
    const std::int64_t count = file.Read(reader.room);
    if (count > 0) {
        reader.roomEnd = static_cast<std::size_t>(count);
        reader.nextBlock = 0;
        return Filled::Yes;
    }
    EndStream();
    if (count == 0) return Filled::EndOfFile;
    ShowError(1020);
    return Filled::Failed;
}

Filled FillBlock(File& file) {
    if (reader.nextBlock == reader.roomEnd) {
        const Filled filled = FillRoom(file);
        if (filled != Filled::Yes) return filled;
    }
    const std::size_t bytes = std::min(blockBytes, reader.roomEnd - reader.nextBlock);
    const std::string_view block(reader.room.data() + reader.nextBlock, bytes);
    reader.readCursor = reader.nextBlock;
    reader.readEnd = reader.nextBlock + std::min(bytes, block.find('\0'));
    reader.nextBlock += bytes;
    reader.blockIsUsedUp = false;
    return Filled::Yes;
}

// Adds text of one line to the buffer, as far as it takes it.
void Append(LineBuffer& line, std::string_view text) {
    if (text.ends_with('\r')) text.remove_suffix(1);
    const bool hasReturns = std::memchr(text.data(), '\r', text.size()) != nullptr;
    if (!hasReturns) {
        const std::size_t room = lineBufferSize - 1 - line.length;
        line.length += text.copy(line.text.data() + line.length, room);
        if (text.size() > room && text.find_first_not_of(' ', room) != std::string_view::npos) line.cut = true;
        return;
    }
    for (const char c : text) {
        if (c == '\r') continue;
        if (line.length < lineBufferSize - 1) {
            line.text[line.length++] = c;
        } else if (c != ' ') {
            line.cut = true;
        }
    }
}

// Takes the block's text up to the next line feed and moves the cursor behind that. Gives false if there is none: then
// the block is used up.
[[nodiscard]] bool TakeToLineEnd(LineBuffer& line) {
    const std::string_view rest(reader.room.data() + reader.readCursor, reader.readEnd - reader.readCursor);
    const std::size_t feed = rest.find('\n');
    Append(line, rest.substr(0, feed));
    if (feed == std::string_view::npos) return false;
    reader.readCursor += feed + 1;
    return true;
}

}  // namespace

int ReadLine(File& file, LineBuffer& line) {
    line.length = 0;
    line.cut = false;
    for (;;) {
        if (reader.blockIsUsedUp) {
            const Filled filled = FillBlock(file);
            if (filled == Filled::EndOfFile) return line.length > 0 ? 1 : 0;
            if (filled == Filled::Failed) return -1;
        }
        if (TakeToLineEnd(line)) return 1;
        reader.blockIsUsedUp = true;
    }
}

int ReadLine(File&, ClearBuf) {
    EndStream();
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
