#include "tests/macos/doubles/SystemCalls.h"

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace doubles {
namespace {

// Nobody reads what a program that runs for long, or climbs for long, has asked.
constexpr std::size_t mostLines = 1000;

std::mutex turn;

struct Record {
  std::vector<std::string> lines;
  std::map<std::string, int> failing;
  std::map<std::string, int> failingNext;
  std::map<std::string, int> objects;
};

// Some are called before the program begins, and by threads that are left behind at its end.
Record& record() {
  static Record& only = *std::make_unique<Record>().release();
  return only;
}

}  // namespace

void noteCall(const std::string& line) {
  const std::lock_guard<std::mutex> held(turn);
  std::vector<std::string>& lines = record().lines;
  if (lines.size() < mostLines) lines.push_back(line);
}

std::vector<std::string> takenCalls() {
  const std::lock_guard<std::mutex> held(turn);
  return std::exchange(record().lines, {});
}

void failCall(const std::string& call, int status) {
  const std::lock_guard<std::mutex> held(turn);
  record().failing[call] = status;
}

void failNextCall(const std::string& call, int status) {
  const std::lock_guard<std::mutex> held(turn);
  record().failingNext[call] = status;
}

int statusOf(const std::string& call) {
  const std::lock_guard<std::mutex> held(turn);
  if (const auto next = record().failingNext.extract(call)) return next.mapped();
  const auto entry = record().failing.find(call);
  return entry == record().failing.end() ? 0 : entry->second;
}

void made(const std::string& type) {
  const std::lock_guard<std::mutex> held(turn);
  ++record().objects[type];
}

void givenBack(const std::string& type) {
  const std::lock_guard<std::mutex> held(turn);
  --record().objects[type];
}

std::vector<std::string> unsettled() {
  const std::lock_guard<std::mutex> held(turn);
  std::vector<std::string> left;
  for (const auto& [type, count] : record().objects) {
    if (count != 0) left.push_back(type + " " + std::to_string(count));
  }
  return left;
}

void forgetCalls() {
  const std::lock_guard<std::mutex> held(turn);
  record().lines.clear();
  record().failing.clear();
  record().failingNext.clear();
  record().objects.clear();
}

}  // namespace doubles
