// How often a page may trouble a person who does nothing: so many times, and anew after each act of theirs.
//
// A page that opens a hundred windows or shows dialogs without end is stopped; one that opens a window or two for every
// click never notices. Plain C++.

#pragma once

class Allowance {
 public:
  explicit Allowance(int times) : times_(times), left_(times) {}

  // Whether once more is allowed; it is used up then.
  bool spend() {
    if (left_ == 0) return false;
    --left_;
    return true;
  }

  // The person has clicked or typed.
  void renew() { left_ = times_; }

 private:
  int times_;
  int left_;
};
