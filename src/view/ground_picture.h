// The picture of the ground: a scene with axes of equal scale, a legend and a title, as operations to paint.
//
//     title
//     +----------------------------+   [] 6
//     |                            |   [] 4     legend: the bands of temperature with their bounds,
//     |        plot                |   [] 2     or the materials
//     |                            |   [] 0
//     +----------------------------+
//       x in the mesh's unit of length
//
// Cells, bands and mesh lines are scan-converted into an image; borders, the freezing isotherm, arrows, nodes and
// sections are drawn over it, so that they stay sharp in SVG and PDF.
#pragma once

#include <string>

#include "view/colour_scale.h"
#include "view/picture.h"
#include "view/scene.h"

namespace kaldra {

enum class GroundFill { Temperature, Materials, Nothing };

// The part of the mesh to show; scale 0 shows all of it.
struct GroundWindow {
    double centreX = 0, centreY = 0;
    double scale = 0;  // pixels per unit of length, alike in x and y
};

struct GroundLook {
    double width = 960, height = 640;  // of the picture
    double fineness = 1;               // pixels of the image per pixel of the picture
    std::string title;
    GroundFill fill = GroundFill::Temperature;
    ColourScale colours{0, 1, {paperColour}};
    GroundWindow window;
    bool isotherm = true;
    bool mesh = true;
    bool arrows = false;
    bool boundaryNodes = false;
    bool sections = true;
};

// Where the mesh stands in a picture.
struct GroundPlace {
    PictureBox plot;
    GroundWindow window;  // scale not 0
    [[nodiscard]] PicturePoint ToPicture(double x, double y) const;
    [[nodiscard]] PicturePoint ToMesh(PicturePoint at) const;
};

// The place that a picture of this look gives the scene.
[[nodiscard]] GroundPlace PlaceGround(const Scene& scene, const GroundLook& look);

// The picture. Without a step in the scene it shows the mesh, and materials instead of temperatures.
[[nodiscard]] Picture DrawGround(Scene& scene, const GroundLook& look);

}  // namespace kaldra
