#include "tests/macos/doubles/Launcher.h"

#import <Foundation/Foundation.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>
#include <vector>

#include "tests/macos/doubles/FileManager.h"
#include "tests/macos/doubles/SystemCalls.h"

namespace {

std::vector<std::string> textsOf(CFArrayRef array) {
  NSArray* const strings = static_cast<id>(const_cast<void*>(static_cast<const void*>(array)));
  std::vector<std::string> texts;
  for (NSUInteger i = 0; i < [strings count]; ++i)
    texts.push_back([[strings objectAtIndex:i] UTF8String]);
  return texts;
}

std::string told(const LSApplicationParameters& parameters) {
  std::string words = "version " + std::to_string(parameters.version) + " flags " + std::to_string(parameters.flags) +
                      " file " + doubles::pathOf(*parameters.application);
  if (parameters.asyncLaunchRefCon != nullptr) words += " with a word";
  if (parameters.environment != nullptr) words += " with an environment";
  for (const std::string& argument : textsOf(parameters.argv))
    words += " <" + argument + ">";
  return words + " event " + doubles::wordsOf(parameters.initialEvent);
}

// Somebody else's child on a Mac; here at least nobody has to wait for it.
bool start(const std::string& program, std::vector<std::string> arguments) {
  std::string path = program;
  std::vector<char*> pointers{path.data()};
  for (std::string& argument : arguments)
    pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  pid_t process = 0;
  if (::posix_spawn(&process, path.c_str(), nullptr, nullptr, pointers.data(), ::environ) != 0) return false;
  std::thread([process] { ::waitpid(process, nullptr, 0); }).detach();
  return true;
}

}  // namespace

OSStatus LSOpenApplication(const LSApplicationParameters* appParams, ProcessSerialNumber*) {
  constexpr OSStatus kLSUnknownErr = -10810;
  doubles::noteCall("LSOpenApplication " + told(*appParams));
  if (const int status = doubles::statusOf("LSOpenApplication")) return status;
  return start(doubles::pathOf(*appParams->application), textsOf(appParams->argv)) ? static_cast<OSStatus>(noErr)
                                                                                   : kLSUnknownErr;
}
