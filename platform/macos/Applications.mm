#include "platform/Applications.h"

#import <Cocoa/Cocoa.h>

#include "platform/AutoreleasePool.h"
#include "platform/macos/FoundationText.h"

namespace platform {

bool openUrl(const std::string& url) {
  // Newer systems make an address of any text.
  if (!isUrl(url)) return false;
  const AutoreleaseScope scope;
  NSURL* const address = [NSURL URLWithString:stringOf(url)];
  return address != nil && [[NSWorkspace sharedWorkspace] openURL:address];
}

}  // namespace platform
