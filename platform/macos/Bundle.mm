#include "platform/Bundle.h"

#import <Foundation/Foundation.h>

#include "platform/AutoreleasePool.h"
#include "platform/macos/FoundationText.h"

namespace platform {
namespace {

Architecture architectureOf(NSInteger number) {
  switch (number) {
    case NSBundleExecutableArchitectureI386:
      return Architecture::x86;
    case NSBundleExecutableArchitectureX86_64:
      return Architecture::x86_64;
    case NSBundleExecutableArchitecturePPC:
      return Architecture::ppc;
    case NSBundleExecutableArchitecturePPC64:
      return Architecture::ppc64;
    default:
      return Architecture::other;
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

}  // namespace platform
