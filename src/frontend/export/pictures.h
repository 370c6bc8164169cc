// The pictures that kaldra-export makes: one per saved step, NAME.temperature.NN.png, or NAME.materials.png.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "post/result_set.h"
#include "view/ground_picture.h"
#include "view/picture_file.h"

namespace kaldra {

struct PictureOrder {
    std::string kind;  // "temperature" or "materials"; empty: no pictures
    std::string size = "960x640";
    std::string range;  // "LOW:HIGH"; empty: that of the results
    std::string scale = "fixed";
    std::int32_t bands = 0;
    std::vector<std::string> layers{"isotherm", "mesh", "sections"};

    // From the above, by CheckPictureOrder.
    std::vector<PictureFormat> formats;
    GroundLook look;
    double low = 0, high = 0;
};

inline constexpr const char* pictureFormats[] = {"png", "svg", "pdf"};

// Adds --picture and what belongs to it.
void AddPictureOptions(CLI::App& app, PictureOrder& order);

// Takes the formats of pictures out of `formats`, PNG where there is none. Gives the complaint about a wrong order,
// empty for a good one.
[[nodiscard]] std::string CheckPictureOrder(PictureOrder& order, std::vector<std::string>& formats);

// True for an order that can be met without any result.
[[nodiscard]] bool NeedsNoStep(const PictureOrder& order);

// Draws the pictures of `steps` and adds their names to `written`; a fixed scale fits all steps of `set`. Gives 1, or 0
// after a message.
[[nodiscard]] int MakePictures(const PictureOrder& order, const ResultSet& set, const std::vector<SavedStep>& steps,
                               std::vector<std::string>& written);

}  // namespace kaldra
