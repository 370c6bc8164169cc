// What the desktop programs have in common before their first window. Front end's thread, behind QApplication.
#pragma once

#include <QString>

namespace kaldra {

// Name, version, style and icon of the program; numbers as in data files, whatever the user's language; empty tables.
void SetUpApplication(const char* name);

// The file of the command line: all behind the program's name is one name. Empty: none.
[[nodiscard]] QString FileOfCommandLine();

}  // namespace kaldra
