// Reads a log folder and reports which lines of which writer it contains.

#pragma once

#include <map>
#include <set>
#include <string>

namespace processes {

// Returns the message with which a writer logs its line number `sequence`, counted from 1. Every tenth message has 20
// KB. Start and end of a message identify it, so an incomplete or mixed line is recognized.
std::string messageOf(const std::string& writer, int sequence);

// Approximate, in bytes, with all fields of a line.
constexpr double kMeanLineSize = 2150;

struct WriterLines {
  int last = 0;           // the highest number found
  int repeated = 0;       // numbers found again
  int reordered = 0;      // numbers first found after a higher one
  std::set<int> missing;  // numbers below `last` that were not found
};

struct LogLines {
  WriterLines of(const std::string& writer) const;

  std::map<std::string, WriterLines> writers;
  int archives = 0;
  int incomplete = 0;  // lines that are no complete message of any writer
  int glued = 0;       // those of them that contain the fields of two lines
};

// Reads the archives of "Kelvo.log" in order of creation, then the file itself. Does not sort by name: names begin with
// the month, and local time goes back by an hour in autumn.
LogLines readLog(const std::string& folder);

}  // namespace processes
