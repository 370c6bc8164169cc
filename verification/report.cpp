#include "report.h"

#include <cmath>
#include <cstdio>

namespace verification {

namespace {

void PrintLine(const std::string& name, const std::string& quantity, double expected, double got, double error,
               const std::string& tolerance, const char* verdict) {
    std::printf("%-16s %-50s %12.6g %12.6g %10.2e %9s  %s\n", name.c_str(), quantity.c_str(), expected, got, error,
                tolerance.c_str(), verdict);
    std::fflush(stdout);
}

}  // namespace

void Report::BeginCase(const std::string& name) {
    if (case_.empty()) {
        std::printf("%-16s %-50s %12s %12s %10s %9s  %s\n", "case", "quantity", "expected", "got", "error", "tolerance",
                    "verdict");
    }
    case_ = name;
}

void Report::Judge(const std::string& quantity, double expected, double got, double error, double tolerance) {
    const bool met = error <= tolerance;  // false for an error that is not a number
    ++(met ? met_ : missed_);
    char text[16];
    std::snprintf(text, sizeof text, "%.2e", tolerance);
    PrintLine(case_, quantity, expected, got, error, text, met ? "ok" : "OFF");
}

void Report::Relative(const std::string& quantity, double expected, double got, double tolerance) {
    Judge(quantity, expected, got, std::abs(got - expected) / std::abs(expected), tolerance);
}

void Report::Absolute(const std::string& quantity, double expected, double got, double tolerance) {
    Judge(quantity, expected, got, std::abs(got - expected), tolerance);
}

void Report::Known(const std::string& quantity, double expected, double got, const std::string& reason) {
    ++known_;
    const double error = expected == 0 ? std::abs(got) : std::abs(got - expected) / std::abs(expected);
    PrintLine(case_, quantity, expected, got, error, "none", "known");
    std::printf("%-16s   %s\n", "", reason.c_str());
}

void Report::Failure(const std::string& error) {
    ++missed_;
    std::printf("%-16s FAILED: %s\n", case_.c_str(), error.c_str());
}

bool Report::Finish() const {
    std::printf("\n%d figures within their tolerance, %d off, %d known limits of the method.\n", met_, missed_, known_);
    return missed_ == 0;
}

}  // namespace verification
