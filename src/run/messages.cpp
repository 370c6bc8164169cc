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
    NumberedString{350, "Temperature"},
    NumberedString{1002, "4.23"},
    NumberedString{1007, "KALDRA SOLVE - "},
    NumberedString{1008, "Error in Boundary Function.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1020, "Cannot open Data file."},
    NumberedString{1021, "Cannot open Temp file."},
    NumberedString{1022, "Cannot open Velocity file."},
    NumberedString{1023, "Cannot open Material Property file."},
    NumberedString{1024, "Cannot open Initial Condition file."},
    NumberedString{1025, "Cannot open Convergence file."},
    NumberedString{1026, "Cannot open Heat Flux file."},
    NumberedString{1028, "Cannot compute Applied Heat Flux for q Boundary."},
    NumberedString{1029, "Steady-state analysis cannot have boundary function."},
    NumberedString{1035, "Cannot close Temperature file."},
    NumberedString{1036, "Cannot close Thermal Gradient file."},
    NumberedString{1037, "Cannot close Material Property file."},
    NumberedString{1038, "Cannot close Convergence file."},
    NumberedString{1039, "Cannot close Heat Flux file."},
    NumberedString{1050, "Done."},
    NumberedString{1051, "Element numbers not in sequence.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1052, "All elements are NULL elements.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1053, "Missing line in data file.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1054, "Data file not compatible with present version.\nUpdate file with KALDRA DEFINE."},
    NumberedString{1055, "Data File:"},
    NumberedString{1057, "Initial Temp File:"},
    NumberedString{1059, "Initial K From:"},
    NumberedString{1072, ".cnp"},
    NumberedString{1073, "*.kdr"},
    NumberedString{1074, "Invalid Data File Name."},
    NumberedString{1075, "File does not exist."},
    NumberedString{1076, "Open"},
    NumberedString{1077, "KALDRA Files (*.kdr)|*.kdr|"},
    NumberedString{1078, "Open Initial Conditions"},
    NumberedString{1079, "Temperature Files (*.t*)|*.t*|"},
    NumberedString{1081, "Functions must contain at least two data points."},
    NumberedString{1082, "Error in creating initial files"},
    NumberedString{1084, "Deleting old output files..."},
    NumberedString{1085, ".t*"},
    NumberedString{1086, ".g*"},
    NumberedString{1087, ".r*"},
    NumberedString{1088, ".j*"},
    NumberedString{1089, ".lkp"},
    NumberedString{1100, "Convergence - "},
    NumberedString{1102, "Iteration #"},
    NumberedString{1103, "Vector Norm"},
    NumberedString{1104, "Halting iteration to complete time step..."},
    NumberedString{1105, "Halting iteration and writing files to complete time step..."},
    NumberedString{1106, "Step Number"},
    NumberedString{1114, "    0        Steady-State"},
    NumberedString{1115, "Data value must be a positive integer."},
    NumberedString{1117, "Invalid function -- cannot fit data to a smooth spline."},
    NumberedString{1118, "Error in Thermal Conductivity Function.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1130, "Cannot access memory."},
    NumberedString{1131, "Error in Modifier Function.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1133, "Node numbers not in sequence.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1134, "(untitled)"},
    NumberedString{1136, "Vector Norm of solution is 0.  Check boundary conditions in KALDRA DEFINE."},
    NumberedString{1137, "Initial Conditions mesh is not the same as the Data file mesh."},
    NumberedString{1138, "Insufficient available memory."},
    NumberedString{1140, "Computation in progress.\nPress STOP before closing Windows."},
    NumberedString{1150, "Cannot read Data file, check line:\n"},
    NumberedString{1151, "Cannot read Material Property file, check line:\n"},
    NumberedString{1152, "Cannot read Initial Condition file, check line:\n"},
    NumberedString{1153, "Cannot read Convergence file, check line:\n"},
    NumberedString{1156, "Active element with no Vol. Water Content Function.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1170, "Error in solving equations.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1171, "Error in solving equations.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1172, "Solving..."},
    NumberedString{1173, "Invalid functions.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1174, "Error in Unfozen Water Content Function.\nVerify data file with KALDRA DEFINE."},
    NumberedString{1175, "Ending Iteration must be greater than Starting Iteration."},
    NumberedString{1176, "Starting Iteration must be greater than 0."},
    NumberedString{1177, "Start Time Step:"},
    NumberedString{1178, "0  (Steady-State)"},
    NumberedString{1179, "Stopping..."},
    NumberedString{1191, "KALDRA SOLVE"},
    NumberedString{1192, "Cannot write to disk."},
    NumberedString{1193, "Cannot write to buffer."},
    NumberedString{1194, "Area of finite element #"},
    NumberedString{1195, " is zero or negative.\nVerify data in KALDRA DEFINE."},
    NumberedString{1196, "Area of infinite element #"},
    NumberedString{1197, " is zero or negative.\nCheck Position of Pole & Direction of Infinity in KALDRA DEFINE."},
    NumberedString{1198, "KALDRA SOLVE"},
    NumberedString{1210, "Regular"},
    NumberedString{1211, "Bold"},
    NumberedString{1212, "Italic"},
    NumberedString{1213, "Arial"},
    NumberedString{1240, "Phase change region established."},
    NumberedString{1281, "Printer Files (*.prn)|*.prn|All Files (*.*)|*|"},
    NumberedString{1282, "Cannot write to printer."},
    NumberedString{1283, "prn"},
    NumberedString{1284, "Print To File"},
    NumberedString{1290, "Cannot open KALDRA help file."},
    NumberedString{1291, "Cannot close KALDRA help file."},
    NumberedString{1292, "unavailable"},
    NumberedString{1296, "KALDRA SOLVE-CONTOUR Problem Refresh Message"},
    NumberedString{1301,
                   "The time sequence has been changed in DEFINE.  You should re-analyze your problem. \nChoose Set "
                   "Start Time to start from time step "},
    NumberedString{1302, " or re-start at time step "},
    NumberedString{1303, " . "},
    NumberedString{1304, "Steady-State Analysis"},
    NumberedString{4001, "Cannot create thread."},
    NumberedString{4004, "(none)"},
    NumberedString{4005,
                   "Some of the default initial condition files cannot be found.\nCheck the time step save sequence in "
                   "DEFINE, or open\ndifferent initial condition files.\n"},
    NumberedString{4028, "Yes"},
    NumberedString{4029, "No"},
    NumberedString{
        4030, "This initial conditions file has an invalid extension.\nSelect a different initial conditions file."},
    NumberedString{4031,
                   "The initial conditions file time step number must be one less than the starting time step "
                   "number.\nSelect a different initial conditions file or change the starting time step."},
    NumberedString{4032,
                   "This initial conditions file contains results for an incorrect elapsed time.\nSelect a different "
                   "initial conditions file or re-analyze your problem."},
    NumberedString{5001,
                   "Another run on this data file is under way.\nWait for its end or stop it, or start on a copy of "
                   "the file in another folder."},
    NumberedString{5002, "This result file is missing, not whole, or of another mesh or time:\n"},
    NumberedString{5003, "This file cannot be written:\n"},
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
