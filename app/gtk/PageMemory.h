// The memory of WebKit's processes: those of the page, and the network process, which keeps the page's blobs.
//
// - A process gets memory only while it computes. Whenever one has computed for 50 ms, the owning thread gets a signal:
//   an idle page wakes no thread, and a busy one is measured although it reports nothing.
// - One thread, which must block the signal.

#pragma once

#include <time.h>

#include <list>

#include "app/gtk/Descendants.h"
#include "platform/UniqueFd.h"

class PageMemory {
 public:
  // `signal` is sent to the calling thread.
  explicit PageMemory(int signal) : signal_(signal) {}

  // Looks for processes that WebKit has started.
  void search();

  // Returns the resident memory of all processes together, in bytes.
  long resident() const;

 private:
  class Process {
   public:
    Process(pid_t id, int signal);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t id() const { return id_; }
    long resident() const;  // in memory pages; 0 after the end
    bool hasEnded() const { return resident() == 0; }

   private:
    pid_t id_;
    platform::UniqueFd figures_;
    timer_t timer_{};
    bool hasTimer_;
  };

  int signal_;
  std::list<Process> processes_;
};

// Returns resident and shared memory from an open statm file of /proc, in memory pages; zeros if the process has ended.
struct MemoryFigures {
  long resident = 0;
  long shared = 0;
};
MemoryFigures readMemoryFigures(int statm);
