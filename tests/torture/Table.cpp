#include "tests/torture/Table.h"

#include <cmath>
#include <cstdio>
#include <string>

namespace torture {

void Table::printHead() {
  if (hasHead_) return;
  hasHead_ = true;
  std::printf("%-52s %6s %5s %6s %10s %6s %8s %5s %12s\n", "attack", "tried", "lost", "glued", "reordered", "wrong",
              "crashed", "hung", "recovered s");
}

void Table::print(const Row& row) {
  printHead();
  char recovered[32] = "never";
  if (std::isfinite(row.recovered)) std::snprintf(recovered, sizeof recovered, "%.3f", row.recovered);
  std::printf("%-52s %6d %5d %6d %10d %6d %8d %5d %12s  %s\n", row.name.c_str(), row.tried, row.lost, row.glued,
              row.reordered, row.wrong, row.crashed, row.hung, recovered, row.passed() ? "ok" : "FAILED");
  std::fflush(stdout);
  passed_ = passed_ && row.passed();
}

void Table::printImpossible(const std::string& name) {
  printHead();
  std::printf("%-52s not possible for this user on this system\n", name.c_str());
  std::fflush(stdout);
}

}  // namespace torture
