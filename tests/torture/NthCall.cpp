#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

#include "tests/support/Child.h"
#include "tests/torture/Faults.h"
#include "tests/torture/Groups.h"
#include "tests/torture/Scene.h"

namespace torture {
namespace {

constexpr int kMaxCalls = 40;
constexpr int kMaxHung = 3;  // per kind; a hung process takes long

enum class Part { kStart, kLine, kCut, kEnd };

constexpr std::array<const char*, 4> kPartNames = {"start", "line", "cut", "end"};

struct Kind {
  int error;
  const char* name;
  bool mayLast;  // a call that is repeated on this error would be repeated for ever
};

constexpr Kind kKinds[] = {{EINTR, "EINTR", false},
                           {EIO, "EIO", true},
                           {ENOSPC, "ENOSPC", true},
                           {EMFILE, "EMFILE", true},
                           {EACCES, "EACCES", true},
                           {ENOMEM, "ENOMEM", true},
                           {EIDRM, "EIDRM", true},
                           {EAGAIN, "EAGAIN", true},
                           {kShortWrite, "short writes", true},
                           {kNoMemory, "exceptions: no memory", true}};

using FailedCall = std::array<char, 32>;

// One part of a process's life, in which the Nth call fails.
struct Attack {
  Part part;
  Fault fault;
  FailedCall* failedCall;  // receives the name of the function; shared with the torturer
};

Attack current{};

void endFault() {
  (*current.failedCall)[disarm().copy(current.failedCall->data(), current.failedCall->size() - 1)] = '\0';
}

template <typename Body>
void tryTo(const Body& body) {
  try {
    body();
  } catch (const std::bad_alloc&) {
  }
}

void attackLines(Writer& writer) {
  if (current.part == Part::kCut) makeCutDue(writer);
  writer.loseLines();
  arm(current.fault);
  for (int i = 0; i < 3; ++i)
    tryTo([&] { writer.line(); });
  endFault();
  writer.recover();
  writer.lines(3);
}

void attackStart(Writer& writer) {
  writer.loseLines();
  arm(current.fault);
  tryTo([] { Writer::start(); });
  endFault();
  Writer::start();
  writer.recover();
  writer.lines(3);
}

void live(Writer& writer) {
  if (current.part == Part::kStart) return attackStart(writer);
  if (current.part == Part::kEnd) (void)std::atexit(endFault);  // called after the end of the logger, which is younger
  Writer::start();
  writer.lines(3);
  if (current.part == Part::kEnd) return arm(current.fault);
  attackLines(writer);
}

// Returns false if the process made fewer calls in that part.
bool attack(Row& row, Part part, const Fault& fault) {
  const support::Shared<FailedCall> failedCall;
  reset();
  makeLogFolder();
  current = {part, fault, &*failedCall};
  Row attempt(std::string(kPartNames[static_cast<std::size_t>(part)]) + ", call " + std::to_string(fault.nth));
  torment(attempt, live);
  attempt.name += std::string(" ") + failedCall->data() + (fault.lasting ? ", lasting" : "");
  if (!attempt.passed()) std::fprintf(stderr, "-- %-49s %s\n", attempt.name.c_str(), textOf(attempt).c_str());
  row.add(attempt);
  return (*failedCall)[0] != '\0';
}

void runKind(Table& table, Scale scale, const Kind& kind) {
  Row row(std::string("the Nth call fails: ") + kind.name);
  const int step = scale.isShort && kind.error != kNoMemory ? 4 : 1;
  for (const Part part : {Part::kStart, Part::kLine, Part::kCut, Part::kEnd}) {
    for (const bool lasting : {false, true}) {
      if ((lasting && !kind.mayLast) || (part == Part::kEnd && kind.error == kNoMemory)) continue;
      for (int nth = 1; nth <= kMaxCalls && row.hung < kMaxHung; nth += step)
        if (!attack(row, part, {kind.error, nth, lasting, ""})) break;
    }
  }
  table.print(row);
}

}  // namespace

void runFaults(Table& table, Scale scale) {
  for (const Kind& kind : kKinds)
    runKind(table, scale, kind);
}

}  // namespace torture
