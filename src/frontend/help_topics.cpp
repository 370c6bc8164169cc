#include "frontend/help_topics.h"

#include <algorithm>
#include <array>

namespace kaldra {

namespace {

constexpr int generalTopic = 40000;

struct TopicOf {
    int id;
    int topic;
};

constexpr std::array menuTopics{
    TopicOf{100, 22101}, TopicOf{121, 22101}, TopicOf{22000, 22101},                         // Copy, Print
    TopicOf{102, 21100}, TopicOf{110, 21100},                                                // New, Exit, Close
    TopicOf{105, 21102}, TopicOf{106, 21103},                                                // the Open commands
    TopicOf{109, 21300}, TopicOf{112, 21300}, TopicOf{113, 21300},   TopicOf{40001, 21300},  // Help
    TopicOf{124, 21201},                                                                     // Start Time
    TopicOf{125, 22102},                                                                     // Options
};

constexpr std::array dialogTopics{
    TopicOf{102, 22102},    // Graph Options
    TopicOf{104, 21201},    // Start Time
    TopicOf{21101, 21102},  // Open
    TopicOf{21102, 21103},  // Open Initial Conditions
};

constexpr std::array pages{
    HelpPage{helpContents, "contents.html", "Contents"},
    HelpPage{generalTopic, "overview.html", "Overview"},
    HelpPage{21100, "new-and-exit.html", "New, Exit and Close"},
    HelpPage{21102, "open-data-file.html", "Open Data File"},
    HelpPage{21103, "open-initial-conditions.html", "Open Initial Conditions"},
    HelpPage{21201, "start-time.html", "Start Time"},
    HelpPage{22101, "print-and-copy.html", "Printing and Copying the Graph"},
    HelpPage{22102, "graph-options.html", "Graph Options"},
    HelpPage{21300, "help-and-about.html", "Help and About"},
    HelpPage{helpUsingHelp, "using-help.html", "Using Help"},
    HelpPage{helpView, "looking-at-results.html", "Looking at Results"},
};

int TopicIn(std::span<const TopicOf> table, int id) {
    const auto found = std::ranges::find(table, id, &TopicOf::id);
    return found == table.end() ? generalTopic : found->topic;
}

}  // namespace

int HelpTopicForMenu(int id) { return TopicIn(menuTopics, id); }

int HelpTopicForDialog(int id) { return TopicIn(dialogTopics, id); }

int HelpTopicForRequest(bool fromWindow, int id) { return fromWindow ? helpContents : HelpTopicForMenu(id); }

std::span<const HelpPage> HelpPages() { return pages; }

std::string_view HelpPageFile(int topic) {
    const auto* const found = std::ranges::find(pages, topic, &HelpPage::topic);
    return found == pages.end() ? pages.front().file : found->file;
}

}  // namespace kaldra
