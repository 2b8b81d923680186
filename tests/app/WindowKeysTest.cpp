#include "app/WindowKeys.h"

#include <gtest/gtest.h>

namespace {

using Action = KeyDecision::Action;

bool doesEverything(EditingCommand) {
  return true;
}

bool doesNothing(EditingCommand) {
  return false;
}

KeyDecision pressed(const char* characters, unsigned long modifiers) {
  return decideKey(characters, modifiers, doesEverything);
}

TEST(WindowKeys, CommandWithKnownLetterIsAnEditingCommand) {
  EXPECT_EQ(pressed("a", kKeyCommand).command, EditingCommand::kSelectAll);
  EXPECT_EQ(pressed("c", kKeyCommand).command, EditingCommand::kCopy);
  EXPECT_EQ(pressed("v", kKeyCommand).command, EditingCommand::kPaste);
  EXPECT_EQ(pressed("x", kKeyCommand).command, EditingCommand::kCut);
  EXPECT_EQ(pressed("z", kKeyCommand).command, EditingCommand::kUndo);
  EXPECT_EQ(pressed("a", kKeyCommand).action, Action::kPerform);
}

TEST(WindowKeys, LettersAreCaseInsensitive) {
  EXPECT_EQ(pressed("V", kKeyCommand).command, EditingCommand::kPaste);
}

TEST(WindowKeys, FurtherModifiersPassTheEventOn) {
  for (const unsigned long further :
       {kKeyShift, kKeyControl, kKeyOption, kKeyCapsLock, kKeyNumericPad, kKeyFunction, KeyModifier{1UL << 22}}) {
    EXPECT_EQ(pressed("a", kKeyCommand | further).action, Action::kPassOn) << further;
    EXPECT_EQ(pressed("a", kKeyCommand | further).command, std::nullopt) << further;
  }
}

TEST(WindowKeys, CapsLockPassesCopyOn) {
  EXPECT_EQ(pressed("C", kKeyCommand | kKeyCapsLock).action, Action::kPassOn);
}

TEST(WindowKeys, TheLowModifierBitsAreIgnored) {
  EXPECT_EQ(pressed("a", kKeyCommand | 0x108).command, EditingCommand::kSelectAll);
}

TEST(WindowKeys, OtherCommandKeysAreDropped) {
  EXPECT_EQ(pressed("k", kKeyCommand).action, Action::kDrop);
  EXPECT_EQ(pressed("", kKeyCommand).action, Action::kDrop);
  EXPECT_EQ(pressed("aa", kKeyCommand).action, Action::kDrop);
}

TEST(WindowKeys, APlainLetterIsPassedOn) {
  EXPECT_EQ(pressed("a", 0).action, Action::kPassOn);
}

TEST(WindowKeys, AKeyWithoutCharactersIsDropped) {
  EXPECT_EQ(decideKey(std::nullopt, 0, doesEverything).action, Action::kDrop);
  EXPECT_EQ(decideKey(std::nullopt, kKeyCommand, doesEverything).action, Action::kDrop);
}

TEST(WindowKeys, AnUnsupportedCommandIsDropped) {
  for (const char* letter : {"a", "c", "v", "x"}) {
    EXPECT_EQ(decideKey(letter, kKeyCommand, doesNothing).action, Action::kDrop) << letter;
  }
}

TEST(WindowKeys, UndoNeedsNoSupport) {
  EXPECT_EQ(decideKey("z", kKeyCommand, doesNothing).command, EditingCommand::kUndo);
}

}  // namespace
