// Hostile pages, and the input of a user, generated from a seed. The same seed gives the same page and the same input.
//
//   generatedPage(17).primitives  => {"Titles", "Dialogs", "Drags", …}

#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "tests/tools/site/LoopbackServer.h"

namespace endtoend {

// One way in which a page annoys.
struct Primitive {
  const char* name;
  const char* script;     // of one step, number `n`
  bool exhausts = false;  // memory, processor or requests, and no other test has a page of this kind
  bool ends = false;      // the run, so it starts when "/late" has a response
};

void PrintTo(const Primitive& primitive, std::ostream* out);
const std::vector<Primitive>& primitives();

// Coordinates are within the page.
struct HandAction {
  enum class Kind {
    kMove,
    kClick,
    kDoubleClick,
    kRightClick,
    kDrag,
    kWheel,
    kKey,
    kEditingKey,
    kText,
    kEndPage,
    kEndNetwork
  };

  Kind kind;
  int x = 0, y = 0;
  int toX = 0, toY = 0;
  std::size_t choice = 0;  // of a key or a text
};

struct GeneratedPage {
  std::vector<std::string> primitives;
  std::string html;              // requests "/go" when it has loaded, and starts when that has a response
  std::vector<HandAction> hand;  // before its last third, "/late" gets no response
};

GeneratedPage generatedPage(unsigned seed, std::size_t actions);

// A page with one primitive. The hand is the one of seed 0.
GeneratedPage pageOf(const Primitive& primitive, std::size_t actions);

// Serves what the pages request.
void serveFiles(tools::LoopbackServer& site);

}  // namespace endtoend
