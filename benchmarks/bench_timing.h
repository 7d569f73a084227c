// Timing helpers shared by the benchmark programs: a measure is always timed beside its floor,
// the least the machine must do for the same work, and the two take turns.
#ifndef PINDLE_BENCH_TIMING_H
#define PINDLE_BENCH_TIMING_H

#include <benchmark/benchmark.h>

#include <chrono>
#include <fstream>
#include <string>

namespace BenchTiming {

using Clock = std::chrono::steady_clock;

inline double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// Runs the measure and its floor once per iteration, taking turns at going first so that
// neither always runs in the other's wake (freed page cache, write-back under way). Both return
// the seconds of their own timed part only. Adds the "floor_ms" and "ratio" counters.
template <class Measure, class Floor>
void alternate(benchmark::State& state, Measure measure, Floor floor) {
    double total = 0, floorTotal = 0;
    bool floorFirst = false;
    for (auto _ : state) {
        if (floorFirst)
            floorTotal += floor();
        double seconds = measure();
        state.SetIterationTime(seconds);
        total += seconds;
        if (!floorFirst)
            floorTotal += floor();
        floorFirst = !floorFirst;
    }
    state.counters["floor_ms"] =
        benchmark::Counter(floorTotal * 1e3, benchmark::Counter::kAvgIterations);
    state.counters["ratio"] = floorTotal > 0 ? total / floorTotal : 0;
}

// Peak resident memory against the bytes of the records it holds and the budget of 1.1 times
// those plus 30 MB. Adds "peak_mb", "data_mb", "budget_mb" and the named ratio.
inline void reportPeak(benchmark::State& state, long peakKiB, double dataBytes,
                       const char* ratioName) {
    constexpr double kMega = 1e6;
    double peakBytes = static_cast<double>(peakKiB) * 1024;
    state.counters["peak_mb"] = peakBytes / kMega;
    state.counters["data_mb"] = dataBytes / kMega;
    state.counters["budget_mb"] = (1.1 * dataBytes + 30 * kMega) / kMega;
    state.counters[ratioName] = peakBytes / dataBytes;
}

// Bytes this process has handed to write() and its kin so far ("wchar" of /proc/self/io).
inline double writtenBytes() {
    std::ifstream io("/proc/self/io");
    std::string key;
    double value = 0;
    while (io >> key >> value) {
        if (key == "wchar:")
            return value;
    }
    return 0;
}

} // namespace BenchTiming

#endif
