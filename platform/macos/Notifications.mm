#include "platform/Notifications.h"

#import <Foundation/Foundation.h>

#include "platform/AutoreleasePool.h"
#include "platform/macos/FoundationText.h"

namespace platform {

void postToAllSessions(const std::string& name, const std::string& object) {
  const AutoreleaseScope scope;
  NSString* const word = stringOf(name);
  NSString* const sender = stringOf(object);
  if (word == nil || sender == nil) return;
  [[NSDistributedNotificationCenter defaultCenter] postNotificationName:word
                                                                 object:sender
                                                               userInfo:nil
                                                                options:NSDistributedNotificationPostToAllSessions];
}

}  // namespace platform
