// What bench-nativeutils measures: each function prints its figures, and each stands in a file of its own.

#pragma once

namespace bench {

// As many pairs as make a median steady.
constexpr int repetitions = 9;

// Base64 against OpenSSL's, and text with line breaks against text without.
void measureBase64();

// Deleting, backing up and copying against rm, find and cp.
void measureFiles();

// A program that is run to its end against the two system calls that this takes.
void measureProcesses();

}  // namespace bench
