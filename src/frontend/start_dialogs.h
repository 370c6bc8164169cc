// The dialogs Start Time and Open Initial Conditions behind their widgets.
//
// After a run the model is empty, so both may have to read the time sequence first. Front end's thread, while no
// calculation thread lives.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kaldra {

inline constexpr std::string_view startTimeHeading = " #          Increment                Elapsed Time      Results";

// The list of the Start Time dialog: row i stands for step i + 1. OK is ChooseStartTime(selected + 1).
struct StartTimeList {
    std::vector<std::string> rows;
    std::int32_t selected = -1;  // index of startStep's row; -1: none
};

// Reads the time sequence if need be and looks which results are on disk. Empty after the reader's message.
[[nodiscard]] StartTimeList ListStartTimes();

// Working copies of the Open Initial Conditions dialog: nothing changes until AcceptInitialFiles. FileLabel gives the
// text of a label for each.
struct InitialFiles {
    std::string temperatures;
    std::string conductivities;
};

// The files in force. Gives 1, or 0 after the message of ReadTimeSequence: the dialog does not open.
[[nodiscard]] int BeginInitialFiles(InitialFiles& files);

// Takes a file that the user has picked, and the .r file beside it if it belongs to the open document. Gives 1, or 0
// after message 1075, 4030, 4031 or 4032 with the copies as they were: the file dialog stays open.
[[nodiscard]] int PickInitialFile(InitialFiles& files, const std::string& path);

// Clear and Clear All.
void ClearInitialFiles(InitialFiles& files);

// OK: the next run begins from these files.
void AcceptInitialFiles(const InitialFiles& files);

}  // namespace kaldra
