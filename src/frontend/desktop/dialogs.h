// The modal dialogs. Each runs until the user closes it; their logic stands outside the toolkit.
#pragma once

#include <QWidget>

namespace kaldra {

void RunStartTime(QWidget* owner);
void RunInitialConditions(QWidget* owner);
void RunGraphOptions(QWidget* owner);
void RunAbout(QWidget* owner);

}  // namespace kaldra
