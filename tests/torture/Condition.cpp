#include "tests/torture/Condition.h"

#include "applog/Logger.h"

namespace torture {
namespace {

using When = Condition::When;

void suffer(const Condition& condition, Writer& writer) {
  if (condition.when == When::kAtStart) {
    writer.loseLines();
    condition.impose();
    Writer::start();
  } else {
    Writer::start();
    writer.lines(5);
    if (condition.when == When::kAtCut) makeCutDue(writer);
    writer.loseLines(condition.losesEarlierLines);
    condition.impose();
  }
  writer.lines(3);
  condition.lift();
  writer.recover();
  writer.lines(5);
  writer.addWrong(condition.violations());
}

}  // namespace

void run(Table& table, Scale scale, const Condition& condition) {
  if (!condition.isPossible) return table.printImpossible(condition.name);
  Row row(condition.name);
  row.limit = condition.limit;
  for (int i = 0; i < scale.of(40) && row.hung == 0; ++i) {
    reset();
    makeLogFolder();
    condition.prepare();
    torment(row, [&](Writer& writer) { suffer(condition, writer); });
  }
  table.print(row);
}

}  // namespace torture
