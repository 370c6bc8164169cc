// The one line reader: every text file of the system comes in through ReadLine.
//
// There is one input stream at a time. The reader takes blocks of 1000 bytes and reads 64 of them ahead between calls,
// so a stream has to be ended with ReadLine(file, clearbuf) before its file is closed or the next one begun. Bytes pass
// through unchanged. Front end's thread only.
#pragma once

#include <array>
#include <string_view>

#include "platform/files.h"

namespace kaldra {

// A line of a system file has at most 94 characters.
inline constexpr std::size_t lineBufferSize = 95;

struct LineBuffer {
    std::array<char, lineBufferSize> text{};
    std::size_t length = 0;
    bool cut = false;  // the line goes on behind its 94 characters, and not with blanks alone

    [[nodiscard]] std::string_view View() const { return {text.data(), length}; }
};

// Delivers the next line without its line feed: carriage returns are dropped wherever they stand, a line is cut at 94
// characters, and a NUL byte loses the rest of its block. Gives 1; 0 at the end of the file with no characters left;
// -1 after message 1020 (read failure) or 1138.
[[nodiscard]] int ReadLine(File& file, LineBuffer& line);

// Ends the stream: the next call starts a new file. Gives 1.
int ReadLine(File& file, ClearBuf marker);

// Removes leading space characters (tabs are not blanks); a text of blanks only stays as it is.
void TrimLeadingBlanks(LineBuffer& line);

}  // namespace kaldra
