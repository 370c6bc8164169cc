// The string table, and the procedures that show a message box. All four may be called on either thread.
//
// ShowError and ShowErrorWithText give 0, which a failing procedure passes on: `return ShowError(1138);`.
#pragma once

#include <string>
#include <string_view>

namespace kaldra {

// The text of a numbered string, at most 190 characters; empty for 0 and for a number that is not in the table.
[[nodiscard]] std::string_view StringText(int number);

// Shows string `number` in an exclamation box.
int ShowError(int number);

// Shows string `number` with `text` behind it, together at most 190 characters.
int ShowErrorWithText(int number, std::string_view text);

// Shows a finished text whose first string is `number`. The caption is "Error", with the system's error number behind
// it if a system call of this thread has failed and no box has told it yet.
void ShowErrorBox(unsigned flags, int number, std::string_view text);

// Shows string id1, number1, string id2, number2 and string id3 in a row under the program's name. A number of 0 is
// left out, and with number1 the string behind it keeps its place: text, text, text.
void ShowComposedMessage(int id1, int number1, int id2, int number2, int id3, unsigned flags);

}  // namespace kaldra
