#include <CoreServices/CoreServices.h>

#include <memory>
#include <string>

#include "tests/macos/doubles/Launcher.h"
#include "tests/macos/doubles/SystemCalls.h"

namespace {

std::string lettersOf(FourCharCode code) {
  std::string letters;
  for (int shift = 24; shift >= 0; shift -= 8)
    letters += static_cast<char>(code >> shift & 0xFF);
  return letters;
}

// A descriptor holds what it describes in words.
void fill(AEDesc* record, DescType type, const std::string& words) {
  record->descriptorType = type;
  record->dataHandle = reinterpret_cast<AEDataStorage>(std::make_unique<std::string>(words).release());
  doubles::made("AEDesc");
}

}  // namespace

namespace doubles {

std::string wordsOf(const AEDesc* record) {
  if (record == nullptr || record->descriptorType == typeNull) return "nothing";
  return *reinterpret_cast<const std::string*>(record->dataHandle);
}

}  // namespace doubles

OSErr AECreateDesc(DescType typeCode, const void* dataPtr, Size dataSize, AEDesc* result) {
  const auto* const number = static_cast<const ProcessSerialNumber*>(dataPtr);
  const bool isNumber = typeCode == typeProcessSerialNumber && dataSize == sizeof *number;
  const std::string words =
      lettersOf(typeCode) +
      (isNumber ? std::to_string(number->highLongOfPSN) + "," + std::to_string(number->lowLongOfPSN) : "of no process");
  doubles::noteCall("AECreateDesc " + words);
  if (const int status = doubles::statusOf("AECreateDesc")) return static_cast<OSErr>(status);
  fill(result, typeCode, words);
  return noErr;
}

OSErr AECreateAppleEvent(AEEventClass theAEEventClass, AEEventID theAEEventID, const AEAddressDesc* target,
                         AEReturnID returnID, AETransactionID transactionID, AppleEvent* result) {
  const std::string words = lettersOf(theAEEventClass) + " " + lettersOf(theAEEventID) + " to " +
                            doubles::wordsOf(target) + " return " + std::to_string(returnID) + " transaction " +
                            std::to_string(transactionID);
  doubles::noteCall("AECreateAppleEvent " + words);
  if (const int status = doubles::statusOf("AECreateAppleEvent")) return static_cast<OSErr>(status);
  fill(result, typeAppleEvent, words);
  return noErr;
}

// An empty descriptor is none.
OSErr AEDisposeDesc(AEDesc* theAEDesc) {
  if (theAEDesc->descriptorType == typeNull) return noErr;
  doubles::noteCall("AEDisposeDesc " + lettersOf(theAEDesc->descriptorType));
  const std::unique_ptr<std::string> gone(reinterpret_cast<std::string*>(theAEDesc->dataHandle));
  *theAEDesc = {typeNull, nullptr};
  doubles::givenBack("AEDesc");
  return noErr;
}
