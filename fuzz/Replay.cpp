// Runs a fuzz target over the stored inputs of a corpus file. Needs no libFuzzer.
//
//   replay-NAME CORPUS
//
// - Each line of CORPUS is a name, a tab, and the input as Base64.
// - Prints the name of each input before running it: the last one printed is the one that failed.
// - Exits with 1 for a missing or empty file, and for a line of another form.

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/Fuzzing.h"
#include "nativeutils/Base64.h"

namespace {

bool replay(const std::string& line) {
  const std::size_t tab = line.find('\t');
  if (tab == std::string::npos) return false;
  std::vector<char> input;
  bool isBase64 = false;
  Base64Decode(line.data() + tab + 1, line.data() + line.size(), std::back_inserter(input), isBase64);
  if (!isBase64) return false;
  std::fprintf(stderr, "%s\n", line.substr(0, tab).c_str());
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s CORPUS\n", argv[0]);
    return 64;
  }
  std::ifstream corpus(argv[1]);
  int count = 0;
  for (std::string line; std::getline(corpus, line);) {
    ++count;
    if (replay(line)) continue;
    std::fprintf(stderr, "%s:%d: expected a name, a tab, and Base64\n", argv[1], count);
    return 1;
  }
  if (count > 0) return 0;
  std::fprintf(stderr, "%s: no inputs\n", argv[1]);
  return 1;
}
