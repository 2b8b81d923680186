#include "platform/Machine.h"

#include <CoreServices/CoreServices.h>
#import <Foundation/Foundation.h>
#include <pthread.h>

#include "platform/EventLoop.h"
#include "platform/macos/FoundationText.h"

namespace platform {
namespace {

Architecture architectureOf(NSInteger number) {
  switch (number) {
    case NSBundleExecutableArchitectureI386:
      return Architecture::kX86;
    case NSBundleExecutableArchitectureX86_64:
      return Architecture::kX64;
    case NSBundleExecutableArchitecturePPC:
      return Architecture::kPpc;
    case NSBundleExecutableArchitecturePPC64:
      return Architecture::kPpc64;
    default:
      return Architecture::kOther;
  }
}

}  // namespace

std::string bundlePath() {
  const AutoreleaseScope scope;
  return textOf([[NSBundle mainBundle] bundlePath]);
}

std::string executablePath() {
  const AutoreleaseScope scope;
  return textOf([[NSBundle mainBundle] executablePath]);
}

std::vector<Architecture> executableArchitectures() {
  const AutoreleaseScope scope;
  NSArray* const numbers = [[NSBundle mainBundle] executableArchitectures];
  std::vector<Architecture> architectures;
  for (NSUInteger i = 0; i < [numbers count]; ++i)
    architectures.push_back(architectureOf([[numbers objectAtIndex:i] integerValue]));
  return architectures;
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
std::optional<int> systemVersionPart(VersionPart part) {
  const OSType selector = part == VersionPart::kMajor   ? gestaltSystemVersionMajor
                          : part == VersionPart::kMinor ? gestaltSystemVersionMinor
                                                        : gestaltSystemVersionBugFix;
  SInt32 number = 0;
  if (Gestalt(selector, &number) != noErr) return std::nullopt;
  return number;
}
#pragma GCC diagnostic pop

std::optional<SystemVersion> systemVersion() {
  const std::optional<int> major = systemVersionPart(VersionPart::kMajor);
  if (!major) return std::nullopt;
  const std::optional<int> minor = systemVersionPart(VersionPart::kMinor);
  if (!minor) return std::nullopt;
  const std::optional<int> bugFix = systemVersionPart(VersionPart::kBugFix);
  if (!bugFix) return std::nullopt;
  return SystemVersion{*major, *minor, *bugFix};
}

// Returns the number of the system call `thread_selfid`, whose direct use is deprecated. The thread library caches it
// and queries it again after a fork.
std::uint64_t currentThreadId() {
  std::uint64_t id = 0;
  (void)::pthread_threadid_np(::pthread_self(), &id);  // cannot fail for a running thread
  return id;
}

}  // namespace platform
