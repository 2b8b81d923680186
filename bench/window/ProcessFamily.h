// Every process of a program: its own, the page and the network process of its web view, and whatever else it starts.
//
// They are known by a variable that they inherit in their environment, so that one which has left its parent is found
// too. Only processes of the same user are seen.

#pragma once

#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

namespace bench {

class ProcessFamily {
 public:
  // A family that has no process yet; no other of this process has the same mark.
  ProcessFamily();

  // The variable, and the value of it, that the program has to be started with.
  std::pair<std::string, std::string> mark() const;

  // The memory of all its processes, in megabytes (10^6 bytes): the sum of their proportional set sizes, in which a
  // page that n processes share counts an n-th for each. A process that ends meanwhile counts nothing.
  double memory() const;

  // Tells all that still run to end and waits for their ends. Throws std::runtime_error when one does not end.
  void end() const;

 private:
  std::vector<pid_t> members() const;

  std::string mark_;
};

}  // namespace bench
