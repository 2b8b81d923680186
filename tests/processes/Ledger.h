// Tells, from a log folder, which lines of which writer are there: whole, how often and in which order.

#pragma once

#include <map>
#include <string>

namespace processes {

// The message that a writer sends as its `sequence`th, counted from 1; each tenth is of 20 KB. Both ends show, so that
// a line is either whole or not this one.
std::string messageOf(const std::string& writer, int sequence);

// In bytes, roughly, with all the fields of the line.
constexpr double meanLineSize = 2150;

struct Account {
  int last = 0;      // the highest number found
  int repeated = 0;  // how many were found again
  int skipped = 0;   // how many were missing before a higher one, lost or out of order
};

struct Ledger {
  Account of(const std::string& writer) const;

  std::map<std::string, Account> writers;
  int archives = 0;
  int torn = 0;  // lines that are no whole message of anybody's
};

// Reads the archives of "Kelvo.log" in the order in which they were made, and the file itself at last. Their names
// begin with the month, and tell the hour of a clock that is put back in autumn.
Ledger readLedger(const std::string& folder);

}  // namespace processes
