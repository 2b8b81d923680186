// The groups of attacks. Each prints its rows.

#pragma once

#include "tests/torture/Table.h"

namespace torture {

// How often an attack with chance is repeated: `whole` times, in the short form an appropriate part of it.
struct Scale {
  int of(int whole) const { return isShort ? (whole + 39) / 40 : whole; }

  // The limit for a new process to log a line. The short form runs beside other tests, which make it wait.
  double secondsToGetThrough() const { return isShort ? 30 : 1; }

  bool isShort;
};

// SIGKILL at random moments of processes that write, cut, start and leave.
void runKills(Table& table, Scale scale);

// The Nth call fails, for every N.
void runFaults(Table& table, Scale scale);

// Full disks, missing files, limits, clocks.
void runConditions(Table& table, Scale scale);

// Locks that another process holds, removes or leaves in a bad state; pipes and links in the log's place.
void runOthers(Table& table, Scale scale);

// What the console user puts into the home folder for a process of root that logs there. Part of `runOthers`.
void runTraps(Table& table);

// Processes that follow only the plain order of semaphore operations, beside those of this system.
void runFamilies(Table& table, Scale scale);

// With this argument the program only reports, by its exit status, whether it has inherited an open log.
constexpr char kOpenLogOption[] = "--has-open-log";

// Threads, forks, exec, exceptions, exit.
void runThreads(Table& table, Scale scale);

}  // namespace torture
