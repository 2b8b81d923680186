// Turns WebKitGTK's raw load events into what happened: the main frame finished, or a load of the main frame or of a
// sub-frame failed. Nothing else gets through.
//
// What the raw events do, and what is made of it:
//   - Every failed load is followed by "finished" under an address that was not loaded: it is swallowed.
//   - Failures are told of the main frame only. A sub-frame's document is a resource, not the main one, for whose
//     address a navigation was asked before; its failure is the sub-frame's. Images and scripts fail in silence.
//   - A page finishes before the failures of its sub-frames are told: its finish is held back until they have been.
//   - A restricted port commits "about:blank" instead of failing: a failure.
//   - Nothing is told of a server that falls silent: `dataTimedOut` is called by a clock that this class winds, and
//     that stands still while a dialog waits for a person.
//   - Nothing is told of an address that makes no request, or of a redirect that leads nowhere: while a page is
//   awaited,
//     the clock runs also when nothing loads.
//   - A page process that ends is a failure.
// Plain C++, main thread.

#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>

#include "app/SignInFlow.h"
#include "app/gtk/LoadEvents.h"

class LoadOutcomes {
 public:
  virtual ~LoadOutcomes() = default;
  virtual void mainFrameFinished(const std::optional<std::string>& address) = 0;
  virtual void loadFailed(const LoadFailure& failure) = 0;
};

// Calls `LoadTracker::dataTimedOut` when it has been wound and not been stopped or wound again for a minute.
class DataClock {
 public:
  virtual ~DataClock() = default;
  virtual void wind() = 0;
  virtual void stop() = 0;
};

class LoadTracker : public LoadEvents {
 public:
  // Both must outlive the tracker.
  LoadTracker(LoadOutcomes& outcomes, DataClock& clock) : outcomes_(outcomes), clock_(clock) {}

  void loadRequested(const std::string& address) override;
  void loadStarted(const std::string& address) override;
  void loadRedirected(const std::string& address) override;
  void loadCommitted(const std::string& address) override;
  void loadFinished(const std::string& address) override;
  void loadFailed(bool provisional, const std::string& address, const LoadError& error) override;
  void navigationAsked(const std::string& address) override;
  void resourceStarted(unsigned id, const std::string& address, bool isMain) override;
  void resourceRedirected(unsigned id, const std::string& address) override;
  void resourceAnswered(unsigned id) override;
  void resourceFinished(unsigned id) override;
  void resourceFailed(unsigned id, const std::string& address, const LoadError& error) override;
  void downloadStarted(const std::string& address) override;
  void personAsked() override;
  void personAnswered() override;
  void progressed() override;
  void pageProcessEnded() override;

  // The page at `address` is requested next. No data until any page has come is a failure of `address`, whatever else
  // failed before; an empty address is unknown.
  void awaitPage(const std::string& address);

  // No data for as long as a request waits. A document that is not complete has failed; a page that only waits for
  // images and the like is shown without them, that is, finished.
  void dataTimedOut();

 private:
  enum class State { kIdle, kProvisional, kCommitted };

  struct SubFrame {
    std::string address;
    bool answered = false;
  };

  bool isWaiting() const { return state_ != State::kIdle || !subFrames_.empty() || awaited_.has_value(); }
  void beginLoad(const std::string& address);
  void keepTime();
  void forgetAsked(const std::string& address);
  void dropSubFrame(unsigned id);
  void tellHeldFinish();
  void finishMainFrame(const std::string& address);
  void failMainFrame(bool provisional, const std::string& address, int code, const std::string& domain);
  void failSubFrame(unsigned id, int code, const std::string& domain);

  LoadOutcomes& outcomes_;
  DataClock& clock_;

  State state_ = State::kIdle;
  std::string address_;  // of the main frame's load
  unsigned mainResource_ = 0;
  bool documentComplete_ = false;

  std::optional<std::string> heldFinish_;  // of a page whose sub-frames have not been heard of yet

  std::optional<std::string> awaited_;  // the page that is to replace the program's own

  int questions_ = 0;  // that wait for a person

  std::string lastAsked_;
  std::multiset<std::string> asked_;  // navigations that no load has taken up yet
  std::map<unsigned, SubFrame> subFrames_;
};
