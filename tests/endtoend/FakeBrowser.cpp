#include "tests/endtoend/FakeBrowser.h"

#include <fstream>

namespace endtoend {
namespace {

constexpr const char* kTypes[] = {
    "x-scheme-handler/http",       "x-scheme-handler/https", "x-scheme-handler/mailto", "x-scheme-handler/tel",
    "x-scheme-handler/javascript", "x-scheme-handler/data",  "x-scheme-handler/custom", "text/plain",
};

}  // namespace

FakeBrowser::FakeBrowser(const std::filesystem::path& folder) : folder_(folder), watched_(folder / "log") {
  const std::filesystem::path script = folder / "fake-browser";
  const std::filesystem::path applications = folder / "applications";
  std::filesystem::create_directories(applications);
  std::ofstream(script) << "#!/bin/sh\nprintf '%s\\n' \"$1\" >>'" << log().string() << "'\n";
  std::filesystem::permissions(script, std::filesystem::perms::owner_all);

  std::ofstream entry(applications / "fake-browser.desktop");
  std::ofstream defaults(applications / "mimeapps.list");
  entry << "[Desktop Entry]\nType=Application\nName=Fake browser\nExec=" << script.string() << " %u\nMimeType=";
  defaults << "[Default Applications]\n";
  for (const char* const type : kTypes) {
    entry << type << ";";
    defaults << type << "=fake-browser.desktop\n";
  }
  entry << "\n";
}

std::map<std::string, std::string> FakeBrowser::environment() const {
  return {{"XDG_DATA_DIRS", folder_.string() + ":/usr/local/share:/usr/share"}};
}

std::vector<std::string> FakeBrowser::opened() const {
  std::ifstream file(log());
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);)
    lines.push_back(line);
  return lines;
}

}  // namespace endtoend
