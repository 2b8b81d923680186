#include "tests/endtoend/TokenStore.h"

#include <fcntl.h>
#include <glib-unix.h>
#include <sys/inotify.h>
#include <sys/stat.h>

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <utility>

#include "platform/linux/Glib.h"
#include "tests/tools/support/ChildProcess.h"
#include "tests/tools/support/EventLoop.h"

namespace endtoend {

bool TokenStore::isPossible() {
  for (const char* const program : {"softhsm2-util", "p11tool"}) {
    if (!platform::Owned<char, g_free>(g_find_program_in_path(program))) return false;
  }
  return true;
}

TokenStore::TokenStore(const std::filesystem::path& folder) : folder_(folder) {
  std::filesystem::create_directories(folder / "tokens");
  std::ofstream(folder / "softhsm2.conf") << "directories.tokendir = " << (folder / "tokens").string() << "\n";
}

TokenStore::~TokenStore() {
  if (source_ != 0) g_source_remove(source_);
}

std::map<std::string, std::string> TokenStore::environment() const {
  return {{"SOFTHSM2_CONF", folder_ / "softhsm2.conf"}};
}

void TokenStore::add(const std::string& label, const std::string& pin) const {
  run({"softhsm2-util", "--init-token", "--free", "--label", label, "--pin", pin, "--so-pin", "87654321"});
}

void TokenStore::store(const std::string& label, const std::string& pin, const std::filesystem::path& file) const {
  const platform::Owned<char, g_free> escaped(g_uri_escape_string(label.c_str(), nullptr, FALSE));
  const std::string token = std::string("pkcs11:token=") + escaped.get();
  for (const auto& [option, path] :
       {std::pair("--load-privkey", file.string() + ".key"), std::pair("--load-certificate", file.string())}) {
    run({"p11tool", "--batch", "--login", "--set-pin", pin, "--id", "01", "--label", file.stem(), "--write", option,
         path, token});
  }
}

void TokenStore::removeAll() const {
  std::filesystem::remove_all(folder_ / "tokens");
  std::filesystem::create_directory(folder_ / "tokens");
}

// The pipe has a writer that writes nothing.
void TokenStore::block() {
  const std::filesystem::path configuration = folder_ / "softhsm2.conf";
  std::filesystem::remove(configuration);
  if (mkfifo(configuration.c_str(), 0600) != 0) throw std::runtime_error("mkfifo failed");
  pipe_.reset(open(configuration.c_str(), O_RDWR | O_CLOEXEC));
  opened_.reset(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
  if (inotify_add_watch(opened_.get(), configuration.c_str(), IN_OPEN) == -1)
    throw std::runtime_error("inotify_add_watch failed");
  source_ = g_unix_fd_add(opened_.get(), G_IO_IN, onOpened, this);
}

gboolean TokenStore::onOpened(gint, GIOCondition, gpointer self) {
  auto* const store = static_cast<TokenStore*>(self);
  store->source_ = 0;
  store->hasBlocked_ = true;
  return G_SOURCE_REMOVE;
}

void TokenStore::run(const std::vector<std::string>& command) const {
  tools::ChildProcess::Setup setup;
  setup.command = command;
  setup.environment = environment();
  setup.outputFile = folder_ / "output";
  setup.errorFile = folder_ / "errors";
  const tools::ChildProcess process(setup);
  (void)tools::waitUntil([&] { return process.ended(); }, std::chrono::seconds(30));
  if (process.exitStatus() != 0) throw std::runtime_error(command.front() + " failed");
}

}  // namespace endtoend
