#include "tests/torture/Table.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

namespace torture {

void Row::add(const Row& other) {
  tried += other.tried;
  lost += other.lost;
  glued += other.glued;
  reordered += other.reordered;
  wrong += other.wrong;
  crashed += other.crashed;
  hung += other.hung;
  recovered = std::max(recovered, other.recovered);
}

std::string textOf(const Row& row) {
  char recovered[32] = "never";
  if (std::isfinite(row.recovered)) std::snprintf(recovered, sizeof recovered, "%.3f", row.recovered);
  char text[128];
  std::snprintf(text, sizeof text, "%6d %5d %6d %10d %6d %8d %5d %12s", row.tried, row.lost, row.glued, row.reordered,
                row.wrong, row.crashed, row.hung, recovered);
  return text;
}

void Table::printHead() {
  if (hasHead_) return;
  hasHead_ = true;
  std::printf("%-52s %6s %5s %6s %10s %6s %8s %5s %12s\n", "attack", "tried", "lost", "glued", "reordered", "wrong",
              "crashed", "hung", "recovered s");
}

void Table::print(const Row& row) {
  printHead();
  std::printf("%-52s %s  %s\n", row.name.c_str(), textOf(row).c_str(), row.passed() ? "ok" : "FAILED");
  std::fflush(stdout);
  passed_ = passed_ && row.passed();
}

void Table::printImpossible(const std::string& name) {
  printHead();
  std::printf("%-52s not possible for this user on this system\n", name.c_str());
  std::fflush(stdout);
}

}  // namespace torture
