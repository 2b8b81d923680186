// Limits how often a page may do something without user input: `max` times, and again `max` times after each input.
//
// Stops a page that opens windows or shows dialogs without end. Plain C++.

#pragma once

class RequestLimit {
 public:
  explicit RequestLimit(int max) : max_(max), remaining_(max) {}

  // Returns whether the request is allowed, and counts it.
  bool take() {
    if (remaining_ == 0) return false;
    --remaining_;
    return true;
  }

  // The user has clicked or pressed a key.
  void reset() { remaining_ = max_; }

 private:
  int max_;
  int remaining_;
};
