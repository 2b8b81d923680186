// The Process Manager, Apple events, status texts and Launch Services.
//
// - `LSOpenApplication` starts the program. It requires the Apple event that activates a new instance.
// - Every process has windows, even one that has ended: the result must not depend on when a program ends.

#include <ApplicationServices/ApplicationServices.h>
#include <CoreServices/CoreServices.h>
#import <Foundation/Foundation.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include "tests/macos/doubles/Desktop.h"
#include "tests/macos/doubles/FileManager.h"
#include "tests/macos/doubles/SystemDoubles.h"

namespace {

OSErr createDescriptor(AEDesc* result, DescType type) {
  *result = {type, nullptr};
  doubles::objectCreated("AEDesc");
  return noErr;
}

std::vector<std::string> textsOf(CFArrayRef array) {
  NSArray* const strings = static_cast<id>(const_cast<void*>(static_cast<const void*>(array)));
  std::vector<std::string> texts;
  for (NSUInteger i = 0; i < [strings count]; ++i)
    texts.push_back([[strings objectAtIndex:i] UTF8String]);
  return texts;
}

// The new process is not a child of this one on macOS, so the caller must not have to wait for it.
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

OSStatus GetProcessForPID(pid_t pid, ProcessSerialNumber* psn) {
  if (const int status = doubles::statusOf("GetProcessForPID")) return status;
  *psn = {0, static_cast<UInt32>(pid)};
  return noErr;
}

OSErr SetFrontProcess(const ProcessSerialNumber* pPSN) {
  if (const int status = doubles::statusOf("SetFrontProcess")) return static_cast<OSErr>(status);
  doubles::desktop.frontProcess = static_cast<pid_t>(pPSN->lowLongOfPSN);
  return noErr;
}

OSErr AECreateDesc(DescType typeCode, const void* dataPtr, Size dataSize, AEDesc* result) {
  if (const int status = doubles::statusOf("AECreateDesc")) return static_cast<OSErr>(status);
  if (typeCode != typeProcessSerialNumber || dataSize != sizeof(ProcessSerialNumber)) return paramErr;
  const auto* const process = static_cast<const ProcessSerialNumber*>(dataPtr);
  if (process->highLongOfPSN != 0 || process->lowLongOfPSN != kCurrentProcess) return procNotFound;
  return createDescriptor(result, typeCode);
}

OSErr AECreateAppleEvent(AEEventClass theAEEventClass, AEEventID theAEEventID, const AEAddressDesc* target, AEReturnID,
                         AETransactionID, AppleEvent* result) {
  if (const int status = doubles::statusOf("AECreateAppleEvent")) return static_cast<OSErr>(status);
  const bool activates = theAEEventClass == kAEMiscStandards && theAEEventID == kAEActivate;
  if (!activates || target->descriptorType != typeProcessSerialNumber) return paramErr;
  return createDescriptor(result, typeAppleEvent);
}

OSErr AEDisposeDesc(AEDesc* theAEDesc) {
  if (theAEDesc->descriptorType != typeNull) doubles::objectReleased("AEDesc");
  *theAEDesc = {typeNull, nullptr};
  return noErr;
}

const char* GetMacOSStatusErrorString(OSStatus err) {
  if (doubles::statusOf("GetMacOSStatusErrorString") != 0) return nullptr;
  return err == fnfErr ? "fnfErr" : "";
}

const char* GetMacOSStatusCommentString(OSStatus err) {
  if (doubles::statusOf("GetMacOSStatusCommentString") != 0) return nullptr;
  return err == fnfErr ? "File not found" : "";
}

OSStatus LSOpenApplication(const LSApplicationParameters* appParams, ProcessSerialNumber*) {
  constexpr OSStatus kLSUnknownErr = -10810;
  if (const int status = doubles::statusOf("LSOpenApplication")) return status;
  const bool isNewInstance = (appParams->flags & kLSLaunchNewInstance) != 0;
  if (!isNewInstance || appParams->initialEvent->descriptorType != typeAppleEvent) return paramErr;
  return start(doubles::pathOf(*appParams->application), textsOf(appParams->argv)) ? static_cast<OSStatus>(noErr)
                                                                                   : kLSUnknownErr;
}
