// Makes system calls of this process fail, and moves the clocks that it reads.
//
// - Replaces functions of the C library and `operator new` in this program, not what the libraries call internally.
// - A child of `fork` inherits the state.
// - Counts the calls of all threads together.

#pragma once

#include <chrono>
#include <string>

namespace torture {

// Kinds of faults besides the `errno` values, which are positive.
constexpr int kShortWrite = -1;  // a write that succeeds for half of its bytes
constexpr int kNoMemory = -2;    // `operator new` throws

struct Fault {
  int error;             // an `errno` value or a kind above
  int nth = 1;           // the first call that fails, counted from 1
  bool lasting = false;  // whether later calls fail too
  std::string only;      // the name of the function whose calls are counted; "" for all.
                         // "semop +" and "semop -" are releases and takes.
};

void arm(const Fault& fault);

// Ends the fault. Returns the name of the first function that failed; "" if no call failed.
std::string disarm();

// Adds to the time of every clock.
void advanceClocks(std::chrono::seconds time);

}  // namespace torture
