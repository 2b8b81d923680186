// All processes of a program: its own, the page process and the network process of its web view, and all others that it
// starts.
//
// - The processes are identified by an environment variable that they inherit. A process with another parent is found
//   too.
// - Only processes of the same user are found.

#pragma once

#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

namespace bench {

class ProcessFamily {
 public:
  // A family without processes. Its mark is unique.
  ProcessFamily();

  // The name and the value of the environment variable to start the program with.
  std::pair<std::string, std::string> mark() const;

  // The memory of all processes, in megabytes (10^6 bytes): the sum of their proportional set sizes. A page that n
  // processes share counts 1/n for each. A process that ends during the call counts 0.
  double memory() const;

  // Terminates all running processes and waits for their ends. Throws std::runtime_error if one does not end.
  void end() const;

 private:
  std::vector<pid_t> members() const;

  std::string mark_;
};

}  // namespace bench
