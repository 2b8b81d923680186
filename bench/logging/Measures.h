// The benchmarks of the log. Each function prints its results.

#pragma once

namespace bench {

// Pairs per result, enough for a stable median.
constexpr int kRepetitions = 9;

// One process: a line against a plain write of the same bytes, and a call whose level is disabled.
void measureSingleLines();

// 1 to 64 processes and one file: throughput, the 99.9th percentile of the time of a line, and the fairness, against an
// independent logger that locks its file; throughput against plain writes.
void measureManyProcesses();

// Rotation of a full file against copying it with `cp` and emptying it with `truncate`.
void measureRotation();

}  // namespace bench
