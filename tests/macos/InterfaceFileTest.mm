// The main interface file, the property lists and the icon. GNUstep reads them.

#include "tests/macos/CocoaTest.h"

#include <arpa/inet.h>

#include <cstdint>
#include <string>

#include "tests/macos/doubles/DisabledLeakCheck.h"

namespace {

AppDelegate* loadInterfaceFile() {
  const doubles::DisabledLeakCheck scope;
  [NSBundle loadNibFile:@SVO_INTERFACE_FILE
      externalNameTable:[NSDictionary dictionaryWithObject:NSApp forKey:NSNibOwner]
               withZone:NSDefaultMallocZone()];
  return static_cast<AppDelegate*>([NSApp delegate]);
}

class InterfaceFileTest : public CocoaTest {
 protected:
  // The menu items of the file. GNUstep adds its own menus and items after them.
  static NSArray* items(NSUInteger menu) {
    return [[[[[NSApp mainMenu] itemArray] objectAtIndex:menu] submenu] itemArray];
  }

  AppDelegate* const loaded = loadInterfaceFile();
};

TEST_F(InterfaceFileTest, MakesTheDelegateTheApplicationsDelegate) {
  EXPECT_TRUE([loaded isKindOfClass:[AppDelegate class]]);
}

TEST_F(InterfaceFileTest, ConnectsTheWindowAndTheWebView) {
  EXPECT_TRUE([[loaded window] isKindOfClass:[SVOWindow class]]);
  EXPECT_TRUE([[loaded webView] isKindOfClass:[WebView class]]);
  EXPECT_EQ([[loaded webView] window], [loaded window]);
}

TEST_F(InterfaceFileTest, ShowsAWindowThatIsNotResizable) {
  EXPECT_TRUE([[loaded window] isVisible]);
  EXPECT_EQ([[loaded window] styleMask],
            NSUInteger{NSTitledWindowMask | NSClosableWindowMask | NSMiniaturizableWindowMask});
  EXPECT_EQ(doubles::text([[loaded window] title]), "Sign In");
}

// The delegate uses the window after it has closed.
TEST_F(InterfaceFileTest, KeepsTheWindowWhenItCloses) {
  EXPECT_FALSE([[loaded window] isReleasedWhenClosed]);
}

// A window that is minimized does not perform `performClose:`.
TEST_F(InterfaceFileTest, QuittingNeedsNoWindow) {
  NSMenuItem* const quit = [items(0) lastObject];
  EXPECT_EQ(doubles::text([quit title]), "Quit SVO");
  EXPECT_TRUE(sel_isEqual([quit action], @selector(terminate:)));
  EXPECT_EQ([quit target], nil);
  EXPECT_EQ(doubles::text([quit keyEquivalent]), "q");
}

TEST_F(InterfaceFileTest, PagesMayUsePlainHttp) {
  NSDictionary* const list = [NSDictionary dictionaryWithContentsOfFile:@SVO_PROPERTY_LIST];
  EXPECT_TRUE([[list objectForKey:@"NSAppTransportSecurity"]
      isEqual:[NSDictionary dictionaryWithObject:[NSNumber numberWithBool:YES] forKey:@"NSAllowsArbitraryLoads"]]);
}

TEST_F(InterfaceFileTest, TheIconIsAnIcon) {
  NSDictionary* const list = [NSDictionary dictionaryWithContentsOfFile:@SVO_PROPERTY_LIST];
  NSString* const name = [list objectForKey:@"CFBundleIconFile"];
  NSData* const icon = [NSData dataWithContentsOfFile:[@SVO_COCOA_FOLDER stringByAppendingString:name]];
  ASSERT_GT([icon length], 8u);
  std::uint32_t size = 0;
  [icon getBytes:&size range:NSMakeRange(4, sizeof size)];
  EXPECT_EQ(std::string(static_cast<const char*>([icon bytes]), 4), "icns");
  EXPECT_EQ(NSUInteger{ntohl(size)}, [icon length]);
}

TEST_F(InterfaceFileTest, TheHardenedRuntimeAllowsCompiledScriptsOnly) {
  NSDictionary* const list = [NSDictionary dictionaryWithContentsOfFile:@SVO_COCOA_FOLDER "SVO.entitlements"];
  EXPECT_TRUE([list isEqual:[NSDictionary dictionaryWithObject:[NSNumber numberWithBool:YES]
                                                        forKey:@"com.apple.security.cs.allow-jit"]]);
}

TEST_F(InterfaceFileTest, NoMenuTakesAKeyFromThePage) {
  for (const NSUInteger menu : {0u, 1u}) {
    EXPECT_GE([items(menu) count], 2u);
    for (NSUInteger i = 0; i < [items(menu) count]; ++i) {
      const std::string key = doubles::text([[items(menu) objectAtIndex:i] keyEquivalent]);
      EXPECT_THAT(key, testing::AnyOf("", "h", "m", "q", "w"));
    }
  }
}

}  // namespace
