// The figures of bench-nativeutils. Each function measures and prints its figures.

#pragma once

namespace bench {

// The number of pairs per figure.
constexpr int kRepetitions = 9;

// Base64 against OpenSSL, and text with line breaks against text without.
void measureBase64();

// Deleting, backing up and copying against rm, find and cp.
void measureFiles();

// Running a program to its end, against posix_spawn and waitpid.
void measureProcesses();

}  // namespace bench
