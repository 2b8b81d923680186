#include "platform/Desktop.h"

#include <ApplicationServices/ApplicationServices.h>
#import <Cocoa/Cocoa.h>
#include <CoreServices/CoreServices.h>
#import <Foundation/Foundation.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/EventLoop.h"
#include "platform/Text.h"
#include "platform/Url.h"
#include "platform/macos/FoundationText.h"

// Launch Services and file references are deprecated.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace platform {
namespace {

// Foundation accepts square brackets anywhere, and on newer systems any text.
bool isAcceptedUrl(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '[' || c == ']'; }, '!');
  return isUrl(text);
}

// Owns the descriptor of an Apple event or of a part of one.
class Descriptor {
 public:
  Descriptor() = default;
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { (void)AEDisposeDesc(&record_); }

  AEDesc* get() { return &record_; }

 private:
  AEDesc record_ = {typeNull, nullptr};
};

bool describeThisProcess(Descriptor& process) {
  const ProcessSerialNumber number = {0, kCurrentProcess};
  return AECreateDesc(typeProcessSerialNumber, &number, sizeof number, process.get()) == noErr;
}

bool describeActivation(Descriptor& process, Descriptor& event) {
  return AECreateAppleEvent(kAEMiscStandards, kAEActivate, process.get(), kAutoGenerateReturnID, kAnyTransactionID,
                            event.get()) == noErr;
}

ReferenceFailure failureOf(OSStatus status) {
  return {orEmpty(GetMacOSStatusErrorString(status)), orEmpty(GetMacOSStatusCommentString(status))};
}

bool launch(const FSRef& file, NSArray* arguments, AEDesc* event) {
  LSApplicationParameters parameters = {};
  parameters.version = 0;
  parameters.flags = kLSLaunchDefaults | kLSLaunchAsync | kLSLaunchNewInstance;
  parameters.application = &file;
  parameters.argv = reinterpret_cast<CFArrayRef>(arguments);
  parameters.initialEvent = event;
  return LSOpenApplication(&parameters, nullptr) == noErr;
}

}  // namespace

bool openUrl(const std::string& url) {
  if (!isAcceptedUrl(url)) return false;
  const AutoreleaseScope scope;
  NSURL* const parsed = [NSURL URLWithString:stringOf(url)];
  return parsed != nil && [[NSWorkspace sharedWorkspace] openURL:parsed];
}

LaunchResult launchInForeground(const std::string& path, const std::vector<std::string>& arguments) {
  const AutoreleaseScope scope;
  Descriptor process, event;
  if (!describeThisProcess(process) || !describeActivation(process, event)) return {};
  FSRef file = {};
  const OSStatus status = FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), &file, nullptr);
  if (status != noErr) return {false, failureOf(status)};
  NSArray* const strings = stringsOf(arguments);
  return {strings != nil && launch(file, strings, event.get()), std::nullopt};
}

RaiseResult raiseWindow(pid_t process) {
  ProcessSerialNumber number = {};
  if (GetProcessForPID(process, &number) != noErr) return RaiseResult::kNotFound;
  return SetFrontProcess(&number) == noErr ? RaiseResult::kRaised : RaiseResult::kFailed;
}

void postToAllSessions(const std::string& name, const std::string& object) {
  const AutoreleaseScope scope;
  NSString* const notification = stringOf(name);
  NSString* const notificationObject = stringOf(object);
  if (notification == nil || notificationObject == nil) return;
  [[NSDistributedNotificationCenter defaultCenter] postNotificationName:notification
                                                                 object:notificationObject
                                                               userInfo:nil
                                                                options:NSDistributedNotificationPostToAllSessions];
}

}  // namespace platform

#pragma GCC diagnostic pop
