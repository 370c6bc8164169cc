// Saving pictures by a dialog.
#pragma once

#include <QString>
#include <QWidget>

#include "view/picture.h"

namespace kaldra {

// Asks for a name and writes the picture as PNG, SVG or PDF, as the name says; PNG if it says nothing.
void SavePictureAs(QWidget* owner, const Picture& picture);

// The name that a dialog gave, with an extension; empty when it was closed.
[[nodiscard]] QString AskForPictureName(QWidget* owner, const QString& title, const QStringList& filters);

}  // namespace kaldra
