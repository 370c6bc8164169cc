#include "frontend/system_information.h"

#include <mntent.h>
#include <pwd.h>
#include <sys/statvfs.h>
#include <sys/sysinfo.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string_view>
#include <system_error>

#include "platform/number_text.h"
#include "run/messages.h"

namespace kaldra {

// ---------------------------------------------------------------------------------------------------------------------
// Asking the system

namespace {

void GatherNames(SystemFigures& figures) {
    if (const passwd* const user = getpwuid(geteuid())) figures.userName = user->pw_name;
    utsname names{};
    if (uname(&names) != 0) return;
    figures.computerName = names.nodename;
    figures.systemVersion = FormatText("%s %s", std::string_view(names.sysname), std::string_view(names.release));
}

std::string ProcessorName() {
    std::ifstream processors("/proc/cpuinfo");
    for (std::string line; std::getline(processors, line);) {
        if (!line.starts_with("model name")) continue;
        const std::size_t value = line.find_first_not_of(": \t", line.find(':'));
        return value == std::string::npos ? std::string() : line.substr(value);
    }
    return {};
}

void GatherMemory(SystemFigures& figures) {
    struct sysinfo memory {};
    if (sysinfo(&memory) != 0) return;
    const auto kilobytes = [&](unsigned long units) {
        return static_cast<std::int64_t>(static_cast<std::uint64_t>(units) * memory.mem_unit / 1024);
    };
    figures.memoryKB = kilobytes(memory.totalram);
    figures.freeMemoryKB = kilobytes(memory.freeram);
    figures.swapKB = kilobytes(memory.totalswap);
    figures.freeSwapKB = kilobytes(memory.freeswap);
}

struct Mount {
    std::string device;
    std::string folder;
};

std::vector<Mount> ReadMounts() {
    std::vector<Mount> mounts;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> table(setmntent("/proc/self/mounts", "re"), endmntent);
    if (table == nullptr) return mounts;
    while (const mntent* const entry = getmntent(table.get())) mounts.push_back({entry->mnt_fsname, entry->mnt_dir});
    return mounts;
}

bool IsWithin(std::string_view path, std::string_view folder) {
    if (folder == "/") return true;
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

// The mount that holds `path`: the longest folder, and of equal ones the last, which hides the others.
std::size_t MountOf(const std::vector<Mount>& mounts, std::string_view path) {
    std::size_t best = mounts.size();
    for (std::size_t i = 0; i < mounts.size(); ++i) {
        if (!IsWithin(path, mounts[i].folder)) continue;
        if (best == mounts.size() || mounts[i].folder.size() >= mounts[best].folder.size()) best = i;
    }
    return best;
}

// Drives of this machine; a loop is a file, and a network may not answer.
bool IsLocalDrive(const Mount& mount) {
    return mount.device.starts_with("/dev/") && !mount.device.starts_with("/dev/loop");
}

void Measure(Volume& volume) {
    struct statvfs status {};
    if (statvfs(volume.folder.c_str(), &status) != 0 || status.f_blocks == 0) return;
    const auto kilobytes = [&](std::uint64_t blocks) {
        return static_cast<std::int64_t>(blocks * status.f_frsize / 1024);
    };
    volume.totalKB = kilobytes(status.f_blocks);
    volume.freeKB = kilobytes(status.f_bavail);
}

// A drive that is mounted more than once is shown where the working folder is, or else at its shortest folder.
void GatherVolumes(SystemFigures& figures) {
    std::vector<Mount> mounts = ReadMounts();
    std::error_code error;
    const std::size_t current = MountOf(mounts, std::filesystem::current_path(error).string());
    if (current < mounts.size()) {
        std::rotate(mounts.begin(), mounts.begin() + static_cast<std::ptrdiff_t>(current),
                    mounts.begin() + static_cast<std::ptrdiff_t>(current) + 1);
    }
    const std::size_t others = current < mounts.size() ? 1 : 0;
    std::stable_sort(mounts.begin() + static_cast<std::ptrdiff_t>(others), mounts.end(),
                     [](const Mount& a, const Mount& b) { return a.folder.size() < b.folder.size(); });
    std::vector<std::string> seen;
    for (std::size_t i = 0; i < mounts.size(); ++i) {
        const bool isCurrent = i < others;
        if (!isCurrent && !IsLocalDrive(mounts[i])) continue;
        if (std::ranges::find(seen, mounts[i].device) != seen.end()) continue;
        seen.push_back(mounts[i].device);
        Volume volume{mounts[i].folder, isCurrent, {}, {}};
        Measure(volume);
        if (isCurrent || volume.totalKB) figures.volumes.push_back(std::move(volume));
    }
}

}  // namespace

SystemFigures GatherSystemFigures() {
    SystemFigures figures;
    GatherNames(figures);
    figures.processorName = ProcessorName();
    const long processors = sysconf(_SC_NPROCESSORS_ONLN);
    if (processors > 0) figures.processorCount = processors;
    GatherMemory(figures);
    GatherVolumes(figures);
    return figures;
}

// ---------------------------------------------------------------------------------------------------------------------
// Lines

namespace {

std::string OrUnavailable(const std::string& text) { return text.empty() ? std::string(StringText(1292)) : text; }

std::string NumberOrUnavailable(std::string_view format, const std::optional<std::int64_t>& value) {
    return value ? FormatText(format, *value) : std::string(StringText(1292));
}

}  // namespace

std::string AboutText() { return FormatText("%s Version %s", StringText(1198), StringText(1002)); }

std::string UserLine(const SystemFigures& figures) {
    if (figures.userName.empty()) return figures.computerName;
    if (figures.computerName.empty()) return figures.userName;
    return FormatText("%s on %s", figures.userName, figures.computerName);
}

std::vector<std::string> SystemLines(const SystemFigures& figures) {
    const std::string& processor = figures.processorName;
    return {
        " System Version:\t" + OrUnavailable(figures.systemVersion),
        " Number of Processors:\t" + NumberOrUnavailable("%d", figures.processorCount),
        " Processor Level:\t" + OrUnavailable(processor.empty() ? processor : processor + " (or compatible)"),
        " Physical Memory:\t" + NumberOrUnavailable("%d KB", figures.memoryKB),
        " Free Physical Memory:\t" + NumberOrUnavailable("%d KB", figures.freeMemoryKB),
        " Total Paging File Size:\t" + NumberOrUnavailable("%d KB", figures.swapKB),
        " Free Paging File:\t" + NumberOrUnavailable("%d KB", figures.freeSwapKB),
    };
}

std::vector<std::string> VolumeLines(const SystemFigures& figures) {
    std::vector<std::string> lines;
    for (const Volume& volume : figures.volumes) {
        const bool known = volume.totalKB && volume.freeKB;
        const std::string size =
            known ? FormatText("%d KB (%d KB free)", *volume.totalKB, *volume.freeKB) : std::string(StringText(1292));
        lines.push_back(' ' + volume.folder + (volume.current ? "*\t" : "\t") + size);
    }
    return lines;
}

}  // namespace kaldra
