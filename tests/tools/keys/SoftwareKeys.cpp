#include "tests/tools/keys/SoftwareKeys.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <stdexcept>

#include "tests/tools/support/EventLoop.h"

namespace tools {
namespace {

constexpr std::chrono::seconds kTimeout{30};

std::string quoted(const std::string& name) {
  return "\"" + name + "\"";
}

}  // namespace

SoftwareKeys::SoftwareKeys(const std::filesystem::path& folder)
    : socket_(folder / "keys"), cancellable_(g_cancellable_new()) {
  script_.reset(
      g_subprocess_new(static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDIN_PIPE | G_SUBPROCESS_FLAGS_STDOUT_PIPE),
                       nullptr, "/usr/bin/python3", SVO_SOFTWARE_KEYS_SCRIPT, socket_.c_str(), nullptr));
  if (!script_) throw std::runtime_error("python3 does not start");
  output_.reset(g_data_input_stream_new(g_subprocess_get_stdout_pipe(script_.get())));
  readEvent();
  if (!waitFor("listening")) throw std::runtime_error("software-keys does not start");
}

SoftwareKeys::~SoftwareKeys() {
  g_cancellable_cancel(cancellable_.get());
  (void)g_output_stream_close(g_subprocess_get_stdin_pipe(script_.get()), nullptr, nullptr);
  (void)g_subprocess_wait(script_.get(), nullptr, nullptr);
}

std::map<std::string, std::string> SoftwareKeys::environment() const {
  const char* const others = std::getenv("LD_PRELOAD");
  const std::string library = SVO_SOFTWARE_KEY_DEVICES;
  return {{"LD_PRELOAD", others == nullptr ? library : library + ":" + others}, {"SVO_SOFTWARE_KEYS", socket_}};
}

void SoftwareKeys::plug(const std::string& name, const std::string& options) {
  send("{\"plug\": " + quoted(name) + (options.empty() ? "" : ", ") + options + "}");
  if (!waitFor("plugged " + name)) throw std::runtime_error("a key is not plugged in");
}

void SoftwareKeys::pull(const std::string& name) {
  send("{\"pull\": " + quoted(name) + "}");
  if (!waitFor("pulled " + name)) throw std::runtime_error("a key is not pulled out");
}

void SoftwareKeys::touch(const std::string& name) {
  send("{\"touch\": " + quoted(name) + "}");
}

void SoftwareKeys::refuse(const std::string& name) {
  send("{\"refuse\": " + quoted(name) + "}");
}

void SoftwareKeys::at(const std::string& name, int command, const std::string& what) {
  send("{\"at\": [" + quoted(name) + ", " + std::to_string(command) + "], \"do\": " + what + "}");
}

bool SoftwareKeys::waitFor(const std::string& event) {
  const auto find = [&] { return std::find(events_.begin(), events_.end(), event); };
  if (!waitUntil([&] { return find() != events_.end(); }, kTimeout)) return false;
  events_.erase(find());
  return true;
}

void SoftwareKeys::send(const std::string& command) {
  const std::string line = command + "\n";
  if (!g_output_stream_write_all(g_subprocess_get_stdin_pipe(script_.get()), line.data(), line.size(), nullptr, nullptr,
                                 nullptr))
    throw std::runtime_error("software-keys has ended");
}

void SoftwareKeys::readEvent() {
  g_data_input_stream_read_line_async(output_.get(), G_PRIORITY_DEFAULT, cancellable_.get(), onEvent, this);
}

void SoftwareKeys::onEvent(GObject* output, GAsyncResult* result, gpointer self) {
  const platform::Owned<char, g_free> line(
      g_data_input_stream_read_line_finish_utf8(G_DATA_INPUT_STREAM(output), result, nullptr, nullptr));
  if (!line) return;  // the end; `self` may not exist any more
  auto* const keys = static_cast<SoftwareKeys*>(self);
  keys->events_.emplace_back(line.get());
  keys->readEvent();
}

}  // namespace tools
