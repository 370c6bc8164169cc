#include "run/messages.h"

#include <algorithm>
#include <array>

#include "platform/files.h"
#include "platform/number_text.h"
#include "run/front_end.h"

namespace kaldra {

namespace {

struct NumberedString {
    int number;
    std::string_view text;
};

// In rising order of the numbers.
constexpr std::array strings{
    NumberedString{1008, "Error in Boundary Function.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1020, "Cannot open Data file."},
    NumberedString{1021, "Cannot open Temp file."},
    NumberedString{1025, "Cannot open Convergence file."},
    NumberedString{1028, "Cannot compute Applied Heat Flux for q Boundary."},
    NumberedString{1029, "Steady-state analysis cannot have boundary function."},
    NumberedString{1035, "Cannot close Temperature file."},
    NumberedString{1038, "Cannot close Convergence file."},
    NumberedString{1050, "Done."},
    NumberedString{1051, "Element numbers not in sequence.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1052, "All elements are NULL elements.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1053, "Missing line in data file.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1054, "Data file not compatible with present version.\nUpdate file with KALDRA DEFINE."},
    NumberedString{1072, ".cnp"},
    NumberedString{1073, "*.kdr"},
    NumberedString{1074, "Invalid Data File Name."},
    NumberedString{1081, "Functions must contain at least two data points."},
    NumberedString{1089, ".lkp"},
    NumberedString{1104, "Halting iteration to complete time step..."},
    NumberedString{1105, "Halting iteration and writing files to complete time step..."},
    NumberedString{1117, "Invalid function -- cannot fit data to a smooth spline."},
    NumberedString{1118, "Error in Thermal Conductivity Function.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1130, "Cannot access memory."},
    NumberedString{1131, "Error in Modifier Function.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1133, "Node numbers not in sequence.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1136, "Vector Norm of solution is 0.  Check boundary conditions in KALDRA DEFINE."},
    NumberedString{1138, "Insufficient available memory."},
    NumberedString{1150, "Cannot read Data file, check line:\n"},
    NumberedString{1156, "Active element with no Vol. Water Content Function.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1170, "Error in solving equations.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1171, "Error in solving equations.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1172, "Solving..."},
    NumberedString{1173, "Invalid functions.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1174, "Error in Unfozen Water Content Function.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1179, "Stopping..."},
    NumberedString{1191, "KALDRA SOLVE"},
    NumberedString{1192, "Cannot write to disk."},
    NumberedString{1193, "Cannot write to buffer."},
    NumberedString{1194, "Area of finite element #"},
    NumberedString{1195, " is zero or negative.\nVerify data in KALDRA DEFINE."},
    NumberedString{1196, "Area of infinite element #"},
    NumberedString{1197, " is zero or negative.\nCheck Position of Pole & Direction of Infinity in KALDRA DEFINE."},
    NumberedString{4001, "Cannot create thread."},
};

constexpr bool ByNumber(const NumberedString& a, const NumberedString& b) { return a.number < b.number; }
static_assert(std::is_sorted(strings.begin(), strings.end(), ByNumber));

constexpr std::size_t longestText = 190;

}  // namespace

std::string_view StringText(int number) {
    const auto found = std::lower_bound(strings.begin(), strings.end(), NumberedString{number, {}}, ByNumber);
    if (found == strings.end() || found->number != number) return {};
    return found->text.substr(0, longestText);
}

int ShowError(int number) { return ShowErrorWithText(number, {}); }

int ShowErrorWithText(int number, std::string_view text) {
    std::string whole(StringText(number));
    whole.append(text);
    whole.resize(std::min(whole.size(), longestText));
    ShowErrorBox(boxExclamation, number, whole);
    return 0;
}

void ShowErrorBox(unsigned flags, int number, std::string_view text) {
    const int error = TakeLastSystemError();
    std::string caption = error == 0 ? "Error" : FormatText("Error %d", error);
    frontEnd.ShowMessage({number, std::move(caption), std::string(text), flags});
}

void ShowComposedMessage(int id1, int number1, int id2, int number2, int id3, unsigned flags) {
    std::string text(StringText(id1));
    if (number1 != 0 || number2 != 0) text += FormatText("%d", number1);
    text += StringText(id2);
    if (number2 != 0) text += FormatText("%d", number2);
    text += StringText(id3);
    frontEnd.ShowMessage({id1, std::string(StringText(1191)), std::move(text), flags});
}

}  // namespace kaldra
