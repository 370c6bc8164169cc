// Paints a picture with the toolkit: for the windows of kaldra-view and the clipboard.
#pragma once

#include <QImage>
#include <QPainter>

#include "view/picture.h"

namespace kaldra {

// Paints at the painter's origin, one unit of the picture to one of the painter.
void PaintPicture(QPainter& painter, const Picture& picture);

// The picture as an image of `scale` pixels per unit.
[[nodiscard]] QImage PictureImage(const Picture& picture, double scale);

}  // namespace kaldra
