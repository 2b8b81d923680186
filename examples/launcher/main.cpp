// Starts the sign-in window, waits for its answer and says what it means. Small enough to copy from.
//
//   launcher WINDOW SIGN_IN REDIRECT ENTERPRISE
//
// WINDOW is the path of the sign-in window's program, the others are addresses. Exits with the code of the answer:
// 0 signed in, 1 the user closed the window, 2 a page failed to load, 255 options are missing; 3 when no answer came.

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "examples/launcher/Answer.h"
#include "examples/launcher/AnswerPipe.h"
#include "examples/launcher/WindowProcess.h"

namespace {

int launch(const std::vector<std::string>& arguments) {
  // The pipe comes first: a message is lost when its only writer closes a pipe that nobody else has open.
  launcher::AnswerPipe pipe;
  launcher::WindowProcess window({arguments[1], "--zelURL=" + arguments[2], "--redirectURL=" + arguments[3],
                                  "--redirectType3URL=" + arguments[4], "--productName=Example Product",
                                  "--type3WindowTitle=Example Product for Enterprises", "--pipeName=" + pipe.path()});

  std::string message;
  while (!launcher::isComplete(message) && window.waitForDataOrEnd(pipe.fd()))
    message += pipe.readWhatIsThere();
  // The window may have written its message and ended between two looks at the pipe.
  message += pipe.readWhatIsThere();

  const launcher::Answer answer = launcher::read(message);
  std::printf("message: %s\nmeaning: %s\n", message.c_str(), launcher::meaning(answer).c_str());
  return answer.code;
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 5) {
    std::fprintf(stderr, "usage: launcher WINDOW SIGN_IN REDIRECT ENTERPRISE\n");
    return 64;
  }
  return launch({argv, argv + argc});
} catch (const std::exception& problem) {
  std::fprintf(stderr, "launcher: %s\n", problem.what());
  return 3;
}
