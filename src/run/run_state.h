// RunState: the flags and counters that the front end and the calculation thread share.
//
// The atomics are the only words that one thread writes while the other polls them. Everything else is written on
// the front end's thread while no calculation thread lives, or by the calculation thread while it lives.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace kaldra {

// A path field holds this many characters; a longer path is refused, never cut.
inline constexpr std::size_t longestPath = 260;

// States of the phase-change control of one time step.
enum PhaseChangeModeValue : std::int32_t {
    phaseSearching = 0,    // only switched points take latent heat
    phaseEstablished = 1,  // nothing left to switch: every point takes latent heat
    phaseEnded = 2,        // the iteration of this step ends at its head
};

struct RunState {
    std::atomic<std::int32_t> running{0};                // 1 until Stop or the end of the run: the only stop signal
    std::atomic<std::int32_t> haltRequested{0};          // Halt Iteration was pressed for the step under way
    std::atomic<std::int32_t> saveStep{0};               // the results of the step under way will be written
    std::atomic<std::int32_t> convergenceFileExists{0};  // the .cnp file of this data file exists

    std::int32_t fileOpen = 0;        // a data file is selected
    std::int32_t currentStep = 0;     // step under way; 0 in a steady-state run
    std::int32_t startStep = 1;       // first step of the run; 0 for a steady-state analysis
    std::int32_t iteration = 0;       // iteration within the step, from 1
    std::int32_t graphOwnsModel = 0;  // the tables were last made by a graph request while idle
    std::int32_t PhaseChangeMode = phaseSearching;
    std::int32_t initialConditionMode = 0;  // 0 none, 1 temperatures, 2 temperatures and conductivities
    std::int32_t phaseRegionReported = 0;   // "Phase change region established." was written in this step
    std::int32_t unconvergedSteps = 0;      // steps of this run that ended at maxIterations,
    std::int32_t firstUnconvergedStep = 0;  // and the first of them

    std::string lockFilePath;            // marker for other programs that a run is under way
    std::string initialTemperatureFile;  // empty: none
    std::string initialConductivityFile;
    std::string pendingFileName;  // chosen by the user, not yet the data file
    std::string openPattern;      // file pattern of the Open dialog
};

extern RunState runState;

// Notes that the step under way has reached maxIterations without converging: no failure, but worth a word at the end.
inline void NoteUnconvergedStep() {
    if (runState.unconvergedSteps++ == 0) runState.firstUnconvergedStep = runState.currentStep;
}

// Gives `running`. Every long loop asks; 0 means unwind at once and give failure.
[[nodiscard]] inline int IsRunning() { return runState.running.load(std::memory_order_relaxed); }

}  // namespace kaldra
