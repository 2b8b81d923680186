// Interprets WebKitGTK's load events: reports when the main frame has finished and when a load of the main frame or of
// a sub-frame has failed.
//
// - WebKit follows every failed load with kFinished and an address that was not loaded. That event is dropped.
// - WebKit reports load failures of the main frame only. A sub-frame's document is a resource, not the main one, whose
//   address had a kNavigation before. Its failure is the sub-frame's failure. Failed images and scripts are dropped.
// - A page finishes before the failures of its sub-frames are reported. Its finish is reported after theirs.
// - A restricted port commits "about:blank" instead of failing. It is reported as a failure.
// - A server that stops sending causes no event. The idle timer detects it; it does not run while a prompt is shown.
// - An address that makes no request, and a redirect without a target, cause no event. The timer also runs while a page
//   is awaited.
// - An ended process is reported as a failure.
// - A page cannot make the tracker keep more than 1000 navigations that load nothing, such as those to a fragment.
// Plain C++, main thread.

#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <optional>
#include <string>

#include "app/SignInFlow.h"
#include "app/gtk/load/LoadEvent.h"

// The owner calls `LoadTracker::timedOut` when the timer expires.
class IdleTimer {
 public:
  virtual ~IdleTimer() = default;
  virtual void start() = 0;  // restarts a timer that runs
  virtual void cancel() = 0;
};

class LoadTracker {
 public:
  // Both must outlive the tracker.
  LoadTracker(LoadOutcomes& outcomes, IdleTimer& timer) : outcomes_(outcomes), timer_(timer) {}

  LoadTracker(const LoadTracker&) = delete;
  LoadTracker& operator=(const LoadTracker&) = delete;

  void handle(const LoadEvent& event);

  // The page at `address` is requested next; an empty address is unknown. If no data arrives before any page has been
  // committed, that is a failure of `address`.
  void awaitPage(const std::string& address);

  // The idle timer has expired. An incomplete document has failed. A page that waits only for images and other
  // resources has finished.
  void timedOut();

 private:
  enum class State { kIdle, kProvisional, kCommitted };

  struct SubFrame {
    std::string address;
    bool hasResponse = false;
  };

  void started(const std::string& address);
  void committed(const std::string& address);
  void finished(const std::string& address);
  void resourceStarted(unsigned id, const std::string& address);
  void resourceRedirected(unsigned id, const std::string& address);
  void resourceResponded(unsigned id);
  void resourceFinished(unsigned id);

  bool isWaiting() const { return state_ != State::kIdle || !subFrames_.empty() || awaitedPage_.has_value(); }
  void beginLoad(const std::string& address);
  void updateTimer();
  void addNavigation(const std::string& address);
  bool removeNavigation(const std::string& address);
  void removeSubFrame(unsigned id);
  void reportPendingFinish();
  void finishMainFrame(const std::string& address);
  void failMainFrame(bool provisional, const std::string& address, int code, const std::string& domain);
  void failSubFrame(unsigned id, int code, const std::string& domain);

  LoadOutcomes& outcomes_;
  IdleTimer& timer_;

  State state_ = State::kIdle;
  std::string address_;  // of the main frame's load
  unsigned mainResource_ = 0;
  bool documentComplete_ = false;

  std::optional<std::string> pendingFinish_;  // of a page whose sub-frames still load
  std::optional<std::string> awaitedPage_;
  int openPrompts_ = 0;

  std::string lastNavigation_;
  std::deque<std::size_t> navigations_;     // hashes of the addresses that no load has taken yet
  std::map<unsigned, SubFrame> subFrames_;  // by the resource of their document
};
