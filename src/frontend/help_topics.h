// Which help page belongs to a menu item, a dialog or a widget that was asked for help.
//
// Topics are numbers; each has one HTML page, and there is a page of contents.
#pragma once

#include <span>
#include <string_view>

namespace kaldra {

inline constexpr int helpContents = 0;  // the page of contents
inline constexpr int helpUsingHelp = 40001;
inline constexpr int helpView = 50000;  // of kaldra-view

// Topic of a menu item's id, and of a dialog's.
[[nodiscard]] int HelpTopicForMenu(int id);
[[nodiscard]] int HelpTopicForDialog(int id);

// Topic of a request for help: the contents when it comes from a window, else the topic of the menu item.
[[nodiscard]] int HelpTopicForRequest(bool fromWindow, int id);

struct HelpPage {
    int topic;
    std::string_view file;  // name of its page, without folder
    std::string_view title;
};

// All pages, the contents first.
[[nodiscard]] std::span<const HelpPage> HelpPages();

// Page file of a topic; that of the contents for a topic without a page.
[[nodiscard]] std::string_view HelpPageFile(int topic);

}  // namespace kaldra
