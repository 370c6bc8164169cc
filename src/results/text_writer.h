// The one writer: every text file of the system goes out through WriteBuffered, with CR LF line ends.
//
// There is one output stream at a time. The writer gathers lines into a block of about 1000 bytes, so a stream has to
// be ended with WriteBuffered(file, clearbuf) before its file is closed. Bytes pass through unchanged. Front end's
// thread before the calculation thread lives, calculation thread while it lives.
#pragma once

#include <string_view>

#include "platform/files.h"
#include "run/messages.h"

namespace kaldra {

inline constexpr std::string_view lineEnd = "\r\n";

// Takes one line. Gives 1, or -1 after message 1192 (what was gathered is lost) or 1138.
[[nodiscard]] int WriteBuffered(File& file, std::string_view text);

// Takes whole lines that carry their CR LF, as if they were taken one by one.
[[nodiscard]] int WriteBufferedLines(File& file, std::string_view lines);

// Writes out what is gathered and releases the buffers. Gives 1, or -1 after message 1192 or 1138.
[[nodiscard]] int WriteBuffered(File& file, ClearBuf marker);

// Forgets what is gathered: its stream was given up.
void DropBufferedLines();

// Lets `write` put its lines into the open file, ends the stream and closes the file. `write(file)` gives false as soon
// as a line fails. Gives 1, or 0 after message 1193 (a line or the end of the stream) or `cannotClose`.
template <class Write>
[[nodiscard]] int WriteLinesAndClose(File& file, int cannotClose, Write write) {
    const bool written = write(file);
    if (!written) ShowError(1193);
    const bool flushed = WriteBuffered(file, clearbuf) == 1;
    if (written && !flushed) ShowError(1193);
    const bool closed = file.Close();
    if (!closed) ShowError(cannotClose);
    return written && flushed && closed;
}

// Writes lines until one fails.
template <class Lines>
[[nodiscard]] bool WriteLines(File& file, const Lines& lines) {
    for (const auto& line : lines) {
        if (WriteBuffered(file, line) != 1) return false;
    }
    return true;
}

}  // namespace kaldra
