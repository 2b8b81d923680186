#include "tests/macos/doubles/SystemCalls.h"

#include <map>
#include <mutex>
#include <utility>

namespace doubles {
namespace {

std::mutex turn;
std::vector<std::string> lines;
std::map<std::string, int> failing;
std::map<std::string, int> objects;

}  // namespace

void noteCall(const std::string& line) {
  const std::lock_guard<std::mutex> held(turn);
  lines.push_back(line);
}

std::vector<std::string> takenCalls() {
  const std::lock_guard<std::mutex> held(turn);
  return std::exchange(lines, {});
}

void failCall(const std::string& call, int status) {
  const std::lock_guard<std::mutex> held(turn);
  failing[call] = status;
}

int statusOf(const std::string& call) {
  const std::lock_guard<std::mutex> held(turn);
  const auto entry = failing.find(call);
  return entry == failing.end() ? 0 : entry->second;
}

void made(const std::string& type) {
  const std::lock_guard<std::mutex> held(turn);
  ++objects[type];
}

void givenBack(const std::string& type) {
  const std::lock_guard<std::mutex> held(turn);
  --objects[type];
}

std::vector<std::string> unsettled() {
  const std::lock_guard<std::mutex> held(turn);
  std::vector<std::string> left;
  for (const auto& [type, count] : objects) {
    if (count != 0) left.push_back(type + " " + std::to_string(count));
  }
  return left;
}

void forgetCalls() {
  const std::lock_guard<std::mutex> held(turn);
  lines.clear();
  failing.clear();
  objects.clear();
}

}  // namespace doubles
