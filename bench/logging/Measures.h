// What bench-logging measures: each function prints its figures.

#pragma once

namespace bench {

// As many pairs as make a median steady.
constexpr int repetitions = 9;

// A line of one process against a bare write of the same bytes, and a call that writes nothing.
void measureSingleLines();

// Four processes on one file: against an independent logger that locks its file, against bare writes, and the worst
// line in a thousand.
void measureFourProcesses();

// Cutting a full file against giving it another name and making a new one.
void measureCutting();

}  // namespace bench
