#include <ApplicationServices/ApplicationServices.h>
#include <CoreServices/CoreServices.h>
#import <Foundation/Foundation.h>

#include <string>
#include <vector>

#include "platform/Applications.h"
#include "platform/AutoreleasePool.h"
#include "platform/macos/FoundationText.h"

// The launcher and the references to files are of a time that newer systems warn of.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace platform {
namespace {

// Of an Apple event or a piece of one; disposed of at the end of its scope, if it came to be.
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
  const auto orEmpty = [](const char* text) { return text == nullptr ? std::string() : text; };
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

FrontLaunch launchInFront(const std::string& path, const std::vector<std::string>& arguments) {
  const AutoreleaseScope scope;
  Descriptor process, event;
  if (!describeThisProcess(process) || !describeActivation(process, event)) return {};
  FSRef file = {};
  const OSStatus status = FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), &file, nullptr);
  if (status != noErr) return {false, failureOf(status)};
  NSArray* const strings = stringsOf(arguments);
  return {strings != nil && launch(file, strings, event.get()), std::nullopt};
}

}  // namespace platform

#pragma GCC diagnostic pop
