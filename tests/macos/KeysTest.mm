#include "tests/macos/CocoaTest.h"

#include <ostream>
#include <string>

#include "tests/macos/doubles/Editing.h"
#include "tests/macos/doubles/FailingUrl.h"

namespace {

using testing::ElementsAre;

constexpr NSUInteger kCommand = NSCommandKeyMask;

class KeysTest : public CocoaTest {
 protected:
  KeysTest() {
    [window setContentView:content];
    [content addSubview:responder];
    [window makeFirstResponder:responder];
    (void)doubles::takeCalls();
  }
  ~KeysTest() override {
    [window makeFirstResponder:nil];
    [window setContentView:webView];
    [responder release];
    [content release];
  }

  Calls press(NSString* key, NSUInteger modifiers) {
    [window keyDown:keyPress(key, modifiers)];
    return doubles::takeCalls();
  }

  static std::string toContent(const char* command) {
    return std::string("EditingView ") + command + " from the window";
  }

  EditingView* content = [[EditingView alloc] initWithFrame:NSMakeRect(0, 0, 10, 10)];
  EditingResponder* responder = [[EditingResponder alloc] initWithFrame:NSMakeRect(0, 0, 10, 10)];
};

struct Shortcut {
  const char* key;
  const char* command;

  friend void PrintTo(const Shortcut& shortcut, std::ostream* out) { *out << shortcut.command; }
};

class ShortcutTest : public KeysTest, public testing::WithParamInterface<Shortcut> {};

TEST_P(ShortcutTest, GoesToTheContentIfSupported) {
  EXPECT_THAT(press(string(GetParam().key), kCommand), ElementsAre(toContent(GetParam().command)));
}

TEST_P(ShortcutTest, IsCaseInsensitive) {
  EXPECT_THAT(press([string(GetParam().key) uppercaseString], kCommand), ElementsAre(toContent(GetParam().command)));
}

TEST_P(ShortcutTest, IsDroppedIfNotSupported) {
  [responder disableCommands];
  EXPECT_THAT(press(string(GetParam().key), kCommand), ElementsAre());
}

TEST_P(ShortcutTest, IsPassedOnWithAnyOtherModifier) {
  for (const NSUInteger other : {NSShiftKeyMask, NSControlKeyMask, NSAlternateKeyMask, NSAlphaShiftKeyMask,
                                 NSFunctionKeyMask, NSNumericPadKeyMask, NSHelpKeyMask}) {
    EXPECT_THAT(press(string(GetParam().key), kCommand | other),
                ElementsAre(std::string("super keyDown ") + GetParam().key));
  }
}

TEST_P(ShortcutTest, IgnoresTheDeviceBits) {
  EXPECT_THAT(press(string(GetParam().key), kCommand | 0xFFFF), ElementsAre(toContent(GetParam().command)));
}

INSTANTIATE_TEST_SUITE_P(Each, ShortcutTest,
                         testing::Values(Shortcut{"a", "selectAll"}, Shortcut{"c", "copy"}, Shortcut{"v", "paste"},
                                         Shortcut{"x", "cut"}),
                         [](const auto& test) { return test.param.command; });

TEST_F(KeysTest, UndoAlwaysGoesToTheContent) {
  [responder disableCommands];
  EXPECT_THAT(press(@"z", kCommand), ElementsAre("EditingView undo"));
  EXPECT_THAT(press(@"Z", kCommand), ElementsAre("EditingView undo"));
}

TEST_F(KeysTest, AnotherKeyWithCommandIsDropped) {
  EXPECT_THAT(press(@"k", kCommand), ElementsAre());
  EXPECT_THAT(press(@"", kCommand), ElementsAre());
  EXPECT_THAT(press(@"aa", kCommand), ElementsAre());
}

TEST_F(KeysTest, APlainKeyIsPassedOn) {
  EXPECT_THAT(press(@"a", 0), ElementsAre("super keyDown a"));
  EXPECT_THAT(press(@"q", 0xFFFF), ElementsAre("super keyDown q"));
}

TEST_F(KeysTest, AKeyWithoutCharactersIsDropped) {
  EXPECT_THAT(press(nil, 0), ElementsAre());
  EXPECT_THAT(press(nil, kCommand), ElementsAre());
}

TEST_F(KeysTest, CharactersWithoutUtf8FormAreNotMissing) {
  doubles::failCall("UTF8String");
  EXPECT_THAT(press([FailingString stringWithText:@"a"], kCommand), ElementsAre());
  EXPECT_THAT(press([FailingString stringWithText:@"a"], 0), ElementsAre("super keyDown without a UTF-8 form"));
}

TEST_F(KeysTest, AnUnusedKeyReachesTheWindow) {
  [window sendEvent:keyPress(@"a", kCommand)];
  EXPECT_THAT(doubles::takeCalls(), ElementsAre(toContent("selectAll")));
}

TEST_F(KeysTest, TheWindowAcceptsTheKeyboardFocus) {
  EXPECT_TRUE([window canBecomeKeyWindow]);
  EXPECT_TRUE([window canBecomeMainWindow]);
  EXPECT_TRUE([window acceptsFirstResponder]);
}

TEST_F(KeysTest, ABorderlessWindowAcceptsTheKeyboardFocus) {
  [window setStyleMask:NSBorderlessWindowMask];
  EXPECT_TRUE([window canBecomeKeyWindow]);
  EXPECT_TRUE([window canBecomeMainWindow]);
}

}  // namespace
