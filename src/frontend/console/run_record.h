// FILE.run.json: what made the results beside a data file.
//
// It is there from the beginning of a run, then with the reason "under way", and written anew at its end, however that
// comes; so a run that was killed can be told from one that finished.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kaldra {

struct StepRecord {
    std::int32_t step = 0;  // 0: steady state
    float elapsed = 0;
    std::int32_t iterations = 0;
    bool converged = false;
    bool halted = false;  // by Halt Iteration
    bool saved = false;
};

// A file that the run read.
struct FileRecord {
    std::string path;    // empty: none
    std::string sha256;  // empty: could not be read
};

struct RunRecord {
    std::vector<std::string> commandLine;
    std::string workingFolder;
    FileRecord dataFile, initialTemperatures, initialConductivities;
    std::int32_t analysisType = 0;
    std::int32_t startStep = 0;
    std::string solver;  // empty: not yet chosen
    int threads = 0;
    std::string begin, end;  // UTC; end empty: under way
    double seconds = 0;
    std::vector<StepRecord> steps;
    std::vector<std::string> messages, warnings;
    std::int32_t stepUnderWay = -1;  // that a failed or stopped run did not end; -1: none
    std::string exitReason;
    int exitStatus = -1;  // -1: none yet
};

// The record's name beside a data file.
[[nodiscard]] std::string RunRecordName(const std::string& dataFile);

// Writes the record beside its data file. Gives 1, or 0 after message 5003 or 1138.
[[nodiscard]] int WriteRunRecord(const RunRecord& record);

// The present time as 2031-12-24T18:00:00Z.
[[nodiscard]] std::string PresentTime();

[[nodiscard]] FileRecord RecordOfFile(const std::string& path);

}  // namespace kaldra
