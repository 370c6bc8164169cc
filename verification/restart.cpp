// A run that starts again from printed results. Seven printed digits do not restore every f32, so a restarted run is
// not the uninterrupted one to the byte; it follows it within the tolerance of the convergence criterion. Two restarts
// from the same files have nothing to differ in, and are equal to the byte.

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string>

#include "cases.h"
#include "freezing_column.h"

namespace verification {

namespace {

void CopyInto(const Folder& from, const Folder& to) {
    std::filesystem::copy(from.Path(), to.Path(), std::filesystem::copy_options::recursive);
}

std::string BytesOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::set<std::string> NamesIn(const Folder& folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
        names.insert(entry.path().filename().string());
    }
    return names;
}

// Files that one folder has and the other has not, or that differ.
int CountDifferences(const Folder& a, const Folder& b) {
    std::set<std::string> names = NamesIn(a);
    names.merge(NamesIn(b));
    int count = 0;
    for (const std::string& name : names) {
        const bool inBoth = NamesIn(a).contains(name) && NamesIn(b).contains(name);
        if (!inBoth || BytesOf(a.Path() / name) != BytesOf(b.Path() / name)) ++count;
    }
    return count;
}

// The difference of two solutions in the norm of the convergence criterion, by that norm, in per cent.
double PercentDifference(const std::vector<NodeRow>& a, const std::vector<NodeRow>& b) {
    double difference = 0, size = 0;
    for (std::size_t n = 0; n < a.size(); ++n) {
        difference += std::pow(a[n].temperature - b[n].temperature, 2);
        size += std::pow(a[n].temperature, 2);
    }
    return 100 * std::sqrt(difference) / (std::sqrt(size) + 1);
}

void CompareRestart(Report& report, const Pose& pose, int startStep, const std::string& text) {
    const Folder whole, first, second;
    Run(FreezingColumn(pose), whole);
    CopyInto(whole, first);
    CopyInto(whole, second);
    for (const Folder* folder : {&first, &second}) {
        if (RunFolder(*folder, startStep) > 0) throw std::runtime_error("a restarted step did not converge");
    }
    report.Absolute(text + ", differing files of two restarts", 0, CountDifferences(first, second), 0);
    double worst = 0;
    for (int step = startStep; step <= StepCount(pose); ++step) {
        worst = std::max(worst, PercentDifference(ReadNodes(whole, step), ReadNodes(first, step)));
    }
    report.Absolute(text + ", largest difference in %", 0, worst, pose.tolerance);
}

}  // namespace

void Restart(Report& report, bool) {
    CompareRestart(report, {.range = 4, .spacing = 0.1, .dt = 1, .tolerance = 0.01, .days = 40, .saves = 40}, 21,
                   "wide range");
    CompareRestart(report, {.dt = 1, .tolerance = 0.5, .days = 40, .saves = 40}, 21, "narrow range");
}

}  // namespace verification
