#include "platform/Applications.h"

#import <Cocoa/Cocoa.h>

#include <algorithm>

#include "platform/AutoreleasePool.h"
#include "platform/Url.h"
#include "platform/macos/FoundationText.h"

namespace platform {
namespace {

// Foundation takes brackets anywhere. Newer systems' takes any text at all, and mends it.
bool isAddress(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '[' || c == ']'; }, '!');
  return isUrl(text);
}

}  // namespace

bool openUrl(const std::string& url) {
  if (!isAddress(url)) return false;
  const AutoreleaseScope scope;
  NSURL* const address = [NSURL URLWithString:stringOf(url)];
  return address != nil && [[NSWorkspace sharedWorkspace] openURL:address];
}

}  // namespace platform
