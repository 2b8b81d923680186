// A log folder under torture, and the processes that log into it.

#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "tests/processes/LogReader.h"
#include "tests/support/Child.h"
#include "tests/torture/Table.h"

namespace torture {

// A process that makes no progress for longer hangs.
inline std::chrono::seconds hangLimit{60};

constexpr double kNever = std::numeric_limits<double>::infinity();

// How far a process has come; in memory that it shares with the torturer. Lines are counted from 1.
struct Progress {
  std::atomic<int> begun{0};         // lines whose call has begun
  std::atomic<int> acknowledged{0};  // lines whose call has returned
  std::atomic<int> exemptFrom{0};    // lines that may be lost: from here
  std::atomic<int> exemptTo{0};      // up to, but not including this; 0 means all
  std::atomic<double> recovered{0};  // seconds, or `kNever`
  std::atomic<int> wrong{0};
};

// Logs numbered lines of one writer.
class Writer {
 public:
  Writer(std::string name, Progress& progress) : name_(std::move(name)), progress_(progress) {}

  // Creates the logger of this process.
  static void start();

  void line();
  void lines(int count);

  // From now on lines may be lost, until `recover` finds one in the log.
  void loseLines(bool earlierToo = false) { progress_.exemptFrom = earlierToo ? 1 : progress_.begun + 1; }

  // Logs one line per second of the advanced clock until one is in the log, at most for a little more than a minute.
  void recover();

  void addWrong(int count) { progress_.wrong += count; }

 private:
  bool isInLog(int number) const;

  std::string name_;
  Progress& progress_;
};

// Returns the path of the log.
std::string logPath();

// Removes what is mounted on the log's folder, every file of the home folder and every semaphore set of the namespace.
void reset();

// Creates the folder of the log.
void makeLogFolder();

// Extends a log to the size at which it is cut, without using space on the disk.
void fillLog(const std::string& path = logPath());

// Returns the file names of the archives of the next seconds.
std::vector<std::string> nextArchiveNames();

// Advances the clock and logs a line, so that the next line checks the size of the log.
void makeCutDue(Writer& writer);

// Waits for the end of a process. Returns its exit status as `Child::wait` does. If `progress` has not changed within
// `hangLimit`, kills the process and returns `kHung`.
constexpr int kHung = -1;
int statusOf(
    support::Child& process, const std::function<int()>& progress = [] { return 0; });

// Runs a process that logs one line. Adds its end and its duration to the row.
void runFreshWriter(Row& row, const std::string& name, Progress& progress);

// Adds to the row how a process ended.
void addEnd(Row& row, int status);

// Adds to the row what became of the lines of a writer.
void addLines(Row& row, const processes::LogLines& found, const std::string& name, const Progress& progress);

// Runs `body` in a process of its own and adds its end, its lines and what a fresh writer finds.
// Its writer is called "w".
void torment(Row& row, const std::function<void(Writer&)>& body);

}  // namespace torture
