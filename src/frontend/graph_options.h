// The Graph Options dialog behind its widgets: its working copy, its checks and what OK changes.
//
// A dialog shows a GraphOptions as BeginGraphOptions gives it, writes the user's input into it and hands it to
// AcceptGraphOptions; nothing else changes the graph. Front end's thread; hmtxGraphMem is free whenever a message is
// shown.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kaldra {

// Ids of the controls that the dialog's logic names. 150 and 187 are graphAutomatically and graphManually.
inline constexpr int optionsFont = 180;
inline constexpr int optionsFontLabel = 181;
inline constexpr int optionsStart = 201;
inline constexpr int optionsEnd = 152;
inline constexpr int optionsInterval = 183;
inline constexpr int optionsSteps = 205;
inline constexpr int optionsSymbols = 230;
inline constexpr int optionsColour = 231;
inline constexpr int optionsThickLines = 232;

inline constexpr std::string_view optionsStepHeading = "Step        Elapsed Time";

struct GraphOptions {
    std::vector<std::string> steps;         // list 205, one text per step
    std::vector<std::int32_t> stepNumbers;  // and the step of each
    std::size_t selectedStep = 0;           // index of the selected entry
    bool stepsEnabled = false;

    std::string startText, endText, intervalText;  // fields 201, 152 and 183, as typed
    std::int32_t updateMode = 0;                   // graphAutomatically or graphManually
    bool updateEnabled = false;                    // the group "Update Graph" with 187, 150, 153, 183 and 184

    bool symbols = false, colour = false, thickLines = false;

    std::string fontName;  // the font's working copy
    float fontSize = 0;    // per cent
    std::int32_t fontStyle = 0;
};

// The dialog as it opens. When idle in a transient analysis it reads the time sequence and the convergence file, whose
// messages stand; the list then has what was read.
[[nodiscard]] GraphOptions BeginGraphOptions();

// True when field 183 takes input.
[[nodiscard]] bool IntervalEnabled(const GraphOptions& options);

// Another entry of list 205 was selected: the range becomes the iterations of its step.
void SelectGraphStep(GraphOptions& options, std::size_t entry);

// OK. Gives 0 and the graph is changed and drawn, or the id of the field that gets the focus after message 1115, 1176
// or 1175; the dialog then stays.
[[nodiscard]] int AcceptGraphOptions(const GraphOptions& options);

// ---------------------------------------------------------------------------------------------------------------------
// Fonts

// What is known of a font that the user chose.
struct FontFacts {
    bool scalable = true;
    int weight = 400;
    bool italic = false;
    bool faceIsBold = false;  // the face is bold, or italic, by itself
    bool faceIsItalic = false;
    std::string_view ownStyleName = {};  // the font's own word for its style
};

// The style behind the font's name in label 181: "Bold", "Italic", both, the font's own word, or "Regular".
[[nodiscard]] std::string FontStyleName(const FontFacts& font);

// The text of label 181 for the working copy: font name, a blank and the style's name.
[[nodiscard]] std::string FontLabel(const GraphOptions& options);

// Takes a font into the working copy. `height` is in pixels, of a screen whose base text height is `base`.
void ChooseGraphFont(GraphOptions& options, std::string_view name, const FontFacts& font, double height, double base);

// A text height in pixels as per cent of the base text height, and back to whole pixels.
[[nodiscard]] float FontPercent(double height, double base);
[[nodiscard]] int FontPixels(float percent, double base);

}  // namespace kaldra
