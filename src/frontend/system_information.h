// The texts of the About box and of the System Information box.
//
// GatherSystemFigures asks the system once, when the box opens; the lines are made from what it found. Fields of a line
// are separated by a tab.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kaldra {

// The text of the About box: program and version.
[[nodiscard]] std::string AboutText();

// A mounted file system of a local drive.
struct Volume {
    std::string folder;    // where it is mounted
    bool current = false;  // holds the working folder
    std::optional<std::int64_t> totalKB;
    std::optional<std::int64_t> freeKB;  // for this user
};

struct SystemFigures {
    std::string userName;  // empty: not known; so for the other texts
    std::string computerName;
    std::string systemVersion;
    std::string processorName;
    std::optional<std::int64_t> processorCount;
    std::optional<std::int64_t> memoryKB, freeMemoryKB;
    std::optional<std::int64_t> swapKB, freeSwapKB;
    std::vector<Volume> volumes;  // a volume that cannot be read is here only if it is the current one
};

[[nodiscard]] SystemFigures GatherSystemFigures();

// The label above the lists: "user on computer", the one that is known, or nothing.
[[nodiscard]] std::string UserLine(const SystemFigures& figures);

// The first list: a name and a value per line.
[[nodiscard]] std::vector<std::string> SystemLines(const SystemFigures& figures);

// The second list: volumes with size and free space; a star behind the current one.
[[nodiscard]] std::vector<std::string> VolumeLines(const SystemFigures& figures);

}  // namespace kaldra
