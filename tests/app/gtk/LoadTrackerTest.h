// A LoadTracker whose outcomes are recorded and whose timer is a fake.

#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "app/gtk/load/LoadTracker.h"

using Outcomes = std::vector<std::string>;

class LoadTrackerTest : public testing::Test {
 protected:
  using Kind = LoadEvent::Kind;

  class RecordedOutcomes : public LoadOutcomes {
   public:
    void mainFrameFinished(const std::optional<std::string>& address) override {
      all.push_back("finished " + address.value_or("-"));
    }
    void loadFailed(const LoadFailure& failure) override {
      all.push_back((failure.provisional ? "failed-provisional " : "failed ") + failure.address.value_or("-") + " " +
                    std::to_string(failure.code));
    }

    Outcomes all;
  };

  class FakeTimer : public IdleTimer {
   public:
    void start() override { runs = true; }
    void cancel() override { runs = false; }

    bool runs = false;
  };

  void handle(Kind kind, const std::string& address = {}, unsigned resource = 0, const LoadError& error = {}) {
    tracker.handle({kind, address, resource, error});
  }

  // A committed page with a frame, whose document is resource 2.
  void loadPageWithFrame() {
    handle(Kind::kStarted, "http://site/page");
    handle(Kind::kMainResourceStarted, "http://site/page", 1);
    handle(Kind::kCommitted, "http://site/page");
    handle(Kind::kNavigation, "http://site/frame");
    handle(Kind::kResourceStarted, "http://site/frame", 2);
  }

  // The spinner page has finished and the sign-in page is requested.
  void loadSpinnerPage() {
    const std::string spinner = "file:///spinner_html.html";
    handle(Kind::kStarted, spinner);
    handle(Kind::kCommitted, spinner);
    handle(Kind::kFinished, spinner);
    tracker.awaitPage("http://site/signin");
    outcomes.all.clear();
  }

  RecordedOutcomes outcomes;
  FakeTimer timer;
  LoadTracker tracker{outcomes, timer};
};
