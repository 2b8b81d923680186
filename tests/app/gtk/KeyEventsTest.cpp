#include "app/gtk/KeyEvents.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <initializer_list>

#include "app/WindowKeys.h"
#include "tests/support/Shell.h"
#include "tests/tools/hand/VirtualDisplay.h"

namespace {

// Uses a virtual display with a Latin and a Cyrillic layout.
class KeyEventsTest : public testing::Test {
 protected:
  KeyEventsTest() {
    EXPECT_EQ(support::run("setxkbmap -display " + screen.name() + " us,ru").status, 0);
    display_ = gdk_display_open(screen.name().c_str());
    (void)hardwareKeyOf(GDK_KEY_c);  // GDK initializes its modifier map at the first lookup of a key
  }
  ~KeyEventsTest() override { gdk_display_close(display_); }

  GdkEventKey key(guint value, unsigned state = 0, guint16 place = 0) const {
    GdkEventKey event{};
    event.type = GDK_KEY_PRESS;
    event.window = gdk_screen_get_root_window(gdk_display_get_default_screen(display_));
    event.keyval = value;
    event.state = state;
    event.hardware_keycode = place;
    return event;
  }

  GdkEvent keyPress(guint value) const {
    GdkEvent event{};
    event.key = key(value);
    return event;
  }

  // The hardware key code of a key of the first layout.
  guint16 hardwareKeyOf(guint value) const {
    GdkKeymapKey* places = nullptr;
    gint count = 0;
    gdk_keymap_get_entries_for_keyval(gdk_keymap_get_for_display(display_), value, &places, &count);
    const auto place = static_cast<guint16>(count > 0 ? places[0].keycode : 0);
    g_free(places);
    return place;
  }

  tools::VirtualDisplay screen;

 private:
  GdkDisplay* display_ = nullptr;
};

TEST_F(KeyEventsTest, ALetterIsItself) {
  EXPECT_EQ(charactersOf(key(GDK_KEY_c)), "c");
  EXPECT_EQ(charactersOf(key(GDK_KEY_C, GDK_SHIFT_MASK)), "C");
}

TEST_F(KeyEventsTest, NonLatinLetterHasItsKeysLatinLetter) {
  EXPECT_EQ(charactersOf(key(GDK_KEY_Cyrillic_es, 0, hardwareKeyOf(GDK_KEY_c))), "c");
}

TEST_F(KeyEventsTest, NonLatinLetterWithoutAKeyIsItself) {
  EXPECT_EQ(charactersOf(key(GDK_KEY_Cyrillic_es)), "с");
}

TEST_F(KeyEventsTest, AModifierKeyHasNoCharacters) {
  EXPECT_EQ(charactersOf(key(GDK_KEY_Shift_L)), std::nullopt);
}

TEST_F(KeyEventsTest, AFunctionKeyHasEmptyCharacters) {
  EXPECT_EQ(charactersOf(key(GDK_KEY_F5)), "");
  EXPECT_EQ(charactersOf(key(GDK_KEY_Left)), "");
}

TEST_F(KeyEventsTest, ShiftAndTabAreTheBackTab) {
  EXPECT_EQ(charactersOf(key(GDK_KEY_ISO_Left_Tab, GDK_SHIFT_MASK)), "\x19");
}

TEST_F(KeyEventsTest, EachModifierIsItsOwnBit) {
  EXPECT_EQ(modifiersOf(key(GDK_KEY_c)), 0u);
  EXPECT_EQ(modifiersOf(key(GDK_KEY_c, GDK_CONTROL_MASK)), kKeyCommand);
  EXPECT_EQ(modifiersOf(key(GDK_KEY_c, GDK_MOD1_MASK)), kKeyOption);
  EXPECT_EQ(modifiersOf(key(GDK_KEY_c, GDK_SHIFT_MASK)), kKeyShift);
  EXPECT_EQ(modifiersOf(key(GDK_KEY_c, GDK_LOCK_MASK)), kKeyCapsLock);
  EXPECT_EQ(modifiersOf(key(GDK_KEY_c, GDK_MOD4_MASK)), kKeyControl);
}

TEST_F(KeyEventsTest, NumLockAndMouseButtonsAreIgnored) {
  EXPECT_EQ(modifiersOf(key(GDK_KEY_c, GDK_CONTROL_MASK | GDK_MOD2_MASK | GDK_BUTTON1_MASK)), kKeyCommand);
}

TEST_F(KeyEventsTest, KeypadAndFunctionKeysHaveTheirBits) {
  EXPECT_EQ(modifiersOf(key(GDK_KEY_KP_1)), kKeyNumericPad);
  EXPECT_EQ(modifiersOf(key(GDK_KEY_KP_Add)), kKeyNumericPad);
  EXPECT_EQ(modifiersOf(key(GDK_KEY_Left)), kKeyFunction);
  EXPECT_EQ(modifiersOf(key(GDK_KEY_Delete)), kKeyFunction);
  EXPECT_EQ(modifiersOf(key(GDK_KEY_F12)), kKeyFunction);
}

TEST_F(KeyEventsTest, WindowCommandsWorkOnEveryLayout) {
  EXPECT_EQ(windowCommandOf(key(GDK_KEY_w, GDK_CONTROL_MASK)), WindowCommand::kClose);
  EXPECT_EQ(windowCommandOf(key(GDK_KEY_Cyrillic_tse, GDK_CONTROL_MASK, hardwareKeyOf(GDK_KEY_w))),
            WindowCommand::kClose);
  EXPECT_EQ(windowCommandOf(key(GDK_KEY_W, GDK_CONTROL_MASK | GDK_LOCK_MASK)), WindowCommand::kClose);
  EXPECT_EQ(windowCommandOf(key(GDK_KEY_F4, GDK_MOD1_MASK)), WindowCommand::kClose);
}

TEST_F(KeyEventsTest, ZoomWorksOnTheKeypad) {
  EXPECT_EQ(windowCommandOf(key(GDK_KEY_plus, GDK_CONTROL_MASK | GDK_SHIFT_MASK)), WindowCommand::kZoomIn);
  EXPECT_EQ(windowCommandOf(key(GDK_KEY_equal, GDK_CONTROL_MASK)), WindowCommand::kZoomIn);
  EXPECT_EQ(windowCommandOf(key(GDK_KEY_KP_Add, GDK_CONTROL_MASK)), WindowCommand::kZoomIn);
  EXPECT_EQ(windowCommandOf(key(GDK_KEY_KP_Subtract, GDK_CONTROL_MASK)), WindowCommand::kZoomOut);
  EXPECT_EQ(windowCommandOf(key(GDK_KEY_KP_0, GDK_CONTROL_MASK | GDK_MOD2_MASK)), WindowCommand::kZoomReset);
}

TEST_F(KeyEventsTest, OtherModifiersMakeNoWindowCommand) {
  EXPECT_EQ(windowCommandOf(key(GDK_KEY_w)), std::nullopt);
  EXPECT_EQ(windowCommandOf(key(GDK_KEY_w, GDK_CONTROL_MASK | GDK_SHIFT_MASK)), std::nullopt);
  EXPECT_EQ(windowCommandOf(key(GDK_KEY_w, GDK_CONTROL_MASK | GDK_MOD1_MASK)), std::nullopt);
  EXPECT_EQ(windowCommandOf(key(GDK_KEY_F4, GDK_MOD1_MASK | GDK_CONTROL_MASK)), std::nullopt);
}

TEST_F(KeyEventsTest, CopyKeysAreRecognizedOnEveryLayout) {
  EXPECT_TRUE(copies(key(GDK_KEY_c, GDK_CONTROL_MASK)));
  EXPECT_TRUE(copies(key(GDK_KEY_X, GDK_CONTROL_MASK | GDK_LOCK_MASK)));
  EXPECT_TRUE(copies(key(GDK_KEY_Cyrillic_es, GDK_CONTROL_MASK, hardwareKeyOf(GDK_KEY_c))));
  EXPECT_TRUE(copies(key(GDK_KEY_Insert, GDK_CONTROL_MASK)));
  EXPECT_TRUE(copies(key(GDK_KEY_Delete, GDK_SHIFT_MASK)));
  EXPECT_FALSE(copies(key(GDK_KEY_c)));
  EXPECT_FALSE(copies(key(GDK_KEY_v, GDK_CONTROL_MASK)));
  EXPECT_FALSE(copies(key(GDK_KEY_Insert, GDK_SHIFT_MASK)));
  EXPECT_FALSE(copies(key(GDK_KEY_Delete)));
}

TEST_F(KeyEventsTest, PressesOfButtonsAreDeliberate) {
  GdkEvent click{};
  click.type = GDK_BUTTON_PRESS;
  EXPECT_TRUE(isDeliberate(&click));
  EXPECT_TRUE(opensList(&click));
  for (const guint pressing : std::initializer_list<guint>{GDK_KEY_Return, GDK_KEY_KP_Enter, GDK_KEY_space}) {
    const GdkEvent event = keyPress(pressing);
    EXPECT_TRUE(isDeliberate(&event)) << pressing;
    EXPECT_TRUE(opensList(&event)) << pressing;
  }
}

TEST_F(KeyEventsTest, APressIsDeliveredFirstOnce) {
  KeyPresses presses;
  GdkEvent press = keyPress(GDK_KEY_Return);
  const auto isFirstAt = [&](guint32 time) {
    press.key.time = time;
    return presses.isFirst(&press);
  };
  EXPECT_TRUE(isFirstAt(4'000'000'000));
  EXPECT_FALSE(isFirstAt(4'000'000'000));
  EXPECT_TRUE(isFirstAt(4'000'000'005));
  EXPECT_FALSE(isFirstAt(4'000'000'000)) << "delivered again after a newer one";
  EXPECT_TRUE(isFirstAt(5)) << "the time has overflowed";
  EXPECT_FALSE(isFirstAt(4'294'967'290));
  EXPECT_TRUE(isFirstAt(4'000'000'000)) << "of another clock";
  EXPECT_TRUE(isFirstAt(GDK_CURRENT_TIME));
  EXPECT_TRUE(isFirstAt(GDK_CURRENT_TIME));

  EXPECT_TRUE(isFirstAt(7));
  press.key.hardware_keycode = 54;
  EXPECT_TRUE(isFirstAt(7)) << "another key at the same time";
  EXPECT_FALSE(isFirstAt(7));
  press.key.hardware_keycode = 0;
  EXPECT_FALSE(isFirstAt(7));

  GdkEvent click{};
  click.type = GDK_BUTTON_PRESS;
  EXPECT_TRUE(presses.isFirst(&click));
  EXPECT_TRUE(presses.isFirst(&click));
}

TEST_F(KeyEventsTest, ATouchCountsOnceAtItsEnd) {
  GdkEvent touch{};
  for (const GdkEventType type : {GDK_TOUCH_BEGIN, GDK_TOUCH_UPDATE, GDK_TOUCH_CANCEL}) {
    touch.type = type;
    EXPECT_FALSE(isDeliberate(&touch)) << type;
    EXPECT_FALSE(opensList(&touch)) << type;
  }
  touch.type = GDK_TOUCH_END;
  EXPECT_TRUE(isDeliberate(&touch));
}

TEST_F(KeyEventsTest, VerticalArrowsOnlyOpenLists) {
  for (const guint arrow : std::initializer_list<guint>{GDK_KEY_Up, GDK_KEY_KP_Up, GDK_KEY_Down, GDK_KEY_KP_Down}) {
    const GdkEvent event = keyPress(arrow);
    EXPECT_FALSE(isDeliberate(&event)) << arrow;
    EXPECT_TRUE(opensList(&event)) << arrow;
  }
}

TEST_F(KeyEventsTest, OtherKeysAreNotDeliberate) {
  for (const guint other : std::initializer_list<guint>{GDK_KEY_a, GDK_KEY_Tab, GDK_KEY_Escape, GDK_KEY_Left}) {
    const GdkEvent event = keyPress(other);
    EXPECT_FALSE(opensList(&event)) << other;
  }
}

}  // namespace
