// The volumes as the File Manager knows them; a test decides.

#pragma once

#include <string>

namespace doubles {

struct Volume {
  std::u16string name = u"Macintosh HD";
  int recordVersion = 4;  // of its parameters
  int extendedAttributes = 0;
};

// The number by which every item's volume is known.
constexpr int volumeNumber = -100;

inline Volume volume;

}  // namespace doubles
