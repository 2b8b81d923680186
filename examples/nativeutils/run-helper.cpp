// Decodes a program from a Base64 file to a temporary folder, runs it, and removes the folder.
//
//   run-helper FILE [ARGUMENT...]     (FILE holds the Base64 text of the program)

#include <nativeutils/NativeUtils.h>
#include <sys/stat.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

int runIn(std::string& folder, const std::string& text, const std::vector<std::string>& arguments) {
  std::string program;
  if (!utilCreateTempFileAtFolderWithBase64Data(text.c_str(), static_cast<int>(text.size()), folder, "helper",
                                                program) ||
      chmod(program.c_str(), 0700) != 0) {
    std::fputs("the helper could not be created\n", stderr);
    return 1;
  }
  unsigned long status = 0;
  unsigned long code = 0;
  if (!utilCreateProcessWithReturnCode(program, arguments, status, true, code, false)) {
    std::fputs("the helper could not be started\n", stderr);
    return 1;
  }
  std::printf("the helper returned %lu\n", code);
  return 0;
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 2) {
    std::fputs("usage: run-helper FILE [ARGUMENT...]\n", stderr);
    return 2;
  }
  utilSetLogLevel(4, "run-helper", nullptr);

  std::ifstream file(arguments[1]);
  const std::string text(std::istreambuf_iterator<char>(file), {});
  std::string folder;
  if (!utilCreateAndGetTempFolderPath(folder)) {
    std::fputs("no folder could be created in /tmp\n", stderr);
    return 1;
  }
  const int result = runIn(folder, text, {arguments + 2, arguments + count});
  utilDeleteFolder(folder, false, false);
  return result;
}
