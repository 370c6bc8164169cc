// Pictures into files, without a window: PNG, SVG and PDF. The one place that knows the drawing library (cairo).
#pragma once

#include <string>
#include <string_view>

#include "view/picture.h"

namespace kaldra {

enum class PictureFormat { Png, Svg, Pdf };

// The format of a name or of an extension without its dot, in any case. False for another.
[[nodiscard]] bool PictureFormatOf(std::string_view name, PictureFormat& format);

// The picture as the bytes of a file; empty where the library fails. `pixelsPerUnit` is for PNG alone: 2 makes a
// picture of 960 units 1920 pixels wide.
[[nodiscard]] std::string PictureBytes(const Picture& picture, PictureFormat format, double pixelsPerUnit = 1);

// Writes the picture under its name, whole or not at all. Gives 1, or 0 after message 5003.
[[nodiscard]] int WritePicture(const Picture& picture, const std::string& path, PictureFormat format,
                               double pixelsPerUnit = 1);

}  // namespace kaldra
