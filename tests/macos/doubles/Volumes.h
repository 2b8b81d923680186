// The volume that the File Manager reports for every path.

#pragma once

#include <string>

namespace doubles {

struct Volume {
  std::u16string name = u"Macintosh HD";
  int recordVersion = 4;  // of its parameters
  int extendedAttributes = 0;
};

inline Volume volume;

}  // namespace doubles
