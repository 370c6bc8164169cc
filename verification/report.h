// The table of figures: one line each, and the count of those that are off.
#pragma once

#include <string>

namespace verification {

class Report {
public:
    void BeginCase(const std::string& name);

    // A figure that has to lie within `tolerance` of what is expected, as a part of it.
    void Relative(const std::string& quantity, double expected, double got, double tolerance);
    // The same by difference: for an expected 0, an order, a phase.
    void Absolute(const std::string& quantity, double expected, double got, double tolerance);
    // A figure that the method is known to miss, or that only describes: printed as a part of what is expected, with
    // the reason, and never failed.
    void Known(const std::string& quantity, double expected, double got, const std::string& reason);
    // A case that ended with an error.
    void Failure(const std::string& error);

    // Prints the summary. True if every figure was met.
    bool Finish() const;

private:
    void Judge(const std::string& quantity, double expected, double got, double error, double tolerance);

    std::string case_;
    int met_ = 0, missed_ = 0, known_ = 0;
};

}  // namespace verification
