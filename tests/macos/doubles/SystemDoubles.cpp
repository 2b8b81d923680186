#include "tests/macos/doubles/SystemDoubles.h"

#include <map>
#include <memory>
#include <mutex>

namespace doubles {
namespace {

std::mutex mutex;

struct State {
  std::map<std::string, int> failing;
  std::map<std::string, int> failingNext;
  std::map<std::string, int> objects;
};

// Never destroyed: doubles are called before `main` and by threads that outlive it.
State& state() {
  static State& instance = *std::make_unique<State>().release();
  return instance;
}

}  // namespace

void failCall(const std::string& call, int status) {
  const std::lock_guard<std::mutex> lock(mutex);
  state().failing[call] = status;
}

void failNextCall(const std::string& call, int status) {
  const std::lock_guard<std::mutex> lock(mutex);
  state().failingNext[call] = status;
}

int statusOf(const std::string& call) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (const auto next = state().failingNext.extract(call)) return next.mapped();
  const auto entry = state().failing.find(call);
  return entry == state().failing.end() ? 0 : entry->second;
}

void objectCreated(const std::string& type) {
  const std::lock_guard<std::mutex> lock(mutex);
  ++state().objects[type];
}

void objectReleased(const std::string& type) {
  const std::lock_guard<std::mutex> lock(mutex);
  --state().objects[type];
}

std::vector<std::string> unreleasedObjects() {
  const std::lock_guard<std::mutex> lock(mutex);
  std::vector<std::string> types;
  for (const auto& [type, count] : state().objects) {
    if (count != 0) types.push_back(type + " " + std::to_string(count));
  }
  return types;
}

void reset() {
  const std::lock_guard<std::mutex> lock(mutex);
  state() = {};
}

}  // namespace doubles
