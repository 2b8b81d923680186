// The report of the torture: one row per kind of attack.

#pragma once

#include <string>
#include <utility>

namespace torture {

struct Row {
  explicit Row(std::string what) : name(std::move(what)) {}

  int failures() const { return lost + glued + reordered + wrong + crashed + hung + (recovered > limit ? 1 : 0); }
  bool passed() const { return failures() == 0; }

  // Adds the attempts of a row of the same kind.
  void add(const Row& other);

  std::string name;
  int tried = 0;
  int lost = 0;          // lines that were acknowledged and are not in the log
  int glued = 0;         // lines that contain the text of two
  int reordered = 0;     // lines of one writer in another order
  int wrong = 0;         // violations of what the name of the row says
  int crashed = 0;       // processes that ended by a signal or with an error
  int hung = 0;          // processes that did not end, or that no other could log beside
  double recovered = 0;  // seconds until a new line was in the log, the slowest
  double limit = 61;     // of `recovered`
};

// Returns the numbers of a row.
std::string textOf(const Row& row);

// Prints the rows as they come, and remembers whether one failed.
class Table {
 public:
  void print(const Row& row);

  // For an attack that this user or system cannot carry out.
  void printImpossible(const std::string& name);

  bool passed() const { return passed_; }

 private:
  void printHead();

  bool passed_ = true;
  bool hasHead_ = false;
};

}  // namespace torture
