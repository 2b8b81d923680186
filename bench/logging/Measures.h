// The benchmarks of the log. Each function prints its results.

#pragma once

namespace bench {

// Pairs per result, enough for a stable median.
constexpr int kRepetitions = 9;

// One process: a line against a plain write of the same bytes, and a call whose level is disabled.
void measureSingleLines();

// Four processes and one file: against an independent logger that locks its file, against plain writes, and the 99.9th
// percentile of the time per line.
void measureFourProcesses();

// Rotation of a full file against renaming it and creating a new one.
void measureRotation();

}  // namespace bench
