#include "app/CommandLine.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

CommandLine parsed(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "/opt/kelvo/svo-signin");
  CommandLine options;
  EXPECT_TRUE(options.InitCommandLine(arguments.size(), arguments.data()));
  return options;
}

TEST(CommandLine, TakesTheValueAfterTheEqualsSignOnly) {
  EXPECT_EQ(parsed({"--pipeName=/tmp/x"}).pipe_name, "/tmp/x");
  EXPECT_EQ(parsed({"--pipeName", "/tmp/x"}).pipe_name, "");
}

TEST(CommandLine, SplitsAtTheFirstEqualsSign) {
  EXPECT_EQ(parsed({"--zelURL=cb:/host/a?b=c&d=e"}).zel_url, "cb:/host/a?b=c&d=e");
}

TEST(CommandLine, LowerCasesTheTwoRedirectAddressesOnly) {
  const CommandLine options = parsed({"--redirectURL=cb:/Host/Done", "--redirectType3URL=T3:/Start",
                                      "--zelURL=cb:/Host", "--pipeName=/Tmp/P", "--type3WindowTitle=My Company"});
  EXPECT_EQ(options.redirect_url, "cb:/host/done");
  EXPECT_EQ(options.redirect_type3_url, "t3:/start");
  EXPECT_EQ(options.zel_url, "cb:/Host");
  EXPECT_EQ(options.pipe_name, "/Tmp/P");
  EXPECT_EQ(options.type3_window_title, "My Company");
}

TEST(CommandLine, KeepsCaseAndSpacesOfTheProductName) {
  EXPECT_EQ(parsed({"--productName=My App"}).app_name, "My App");
}

TEST(CommandLine, UsesTheFirstOfSeveralEqualOptions) {
  EXPECT_EQ(parsed({"--pipeName=/a", "--pipeName=/b"}).pipe_name, "/a");
}

TEST(CommandLine, IgnoresAnOptionWithoutEqualsSign) {
  EXPECT_EQ(parsed({"--pipeName", "--pipeName=/b"}).pipe_name, "/b");
}

TEST(CommandLine, MatchesTheStartOfAnArgument) {
  EXPECT_EQ(parsed({"--pipeNameFoo=/c"}).pipe_name, "/c");
}

TEST(CommandLine, NamesAreCaseSensitive) {
  EXPECT_EQ(parsed({"--PIPENAME=/d"}).pipe_name, "");
}

TEST(CommandLine, WithoutArgumentsAllFieldsAreEmpty) {
  const CommandLine options = parsed({});
  EXPECT_EQ(options.zel_url + options.redirect_url + options.pipe_name + options.redirect_type3_url + options.app_name +
                options.type3_window_title,
            "");
}

TEST(CommandLine, AnEmptyValueEqualsAMissingOption) {
  EXPECT_EQ(parsed({"--productName="}).app_name, "");
}

TEST(CommandLine, TheProgramPathIsNeverAnOption) {
  const char* arguments[] = {"--pipeName=/p"};
  CommandLine options;
  options.InitCommandLine(1, arguments);
  EXPECT_EQ(options.pipe_name, "");
}

TEST(CommandLine, AcceptsNullVectorAndNullElements) {
  CommandLine options;
  EXPECT_TRUE(options.InitCommandLine(0, nullptr));
  const char* arguments[] = {"svo-signin", nullptr, "--pipeName=/p"};
  options.InitCommandLine(3, arguments);
  EXPECT_EQ(options.pipe_name, "/p");
}

TEST(CommandLine, ASecondParseReplacesEveryField) {
  CommandLine options = parsed({"--pipeName=/a", "--productName=A"});
  const char* arguments[] = {"svo-signin", "--pipeName=/b"};
  options.InitCommandLine(2, arguments);
  EXPECT_EQ(options.pipe_name, "/b");
  EXPECT_EQ(options.app_name, "");
}

TEST(CommandLine, LowerCasesOnlyAsciiLetters) {
  EXPECT_EQ(CommandLine().ToLowerCase("ÄB/Ü?C"), "Äb/Ü?c");
  EXPECT_EQ(CommandLine().ToLowerCase(""), "");
}

TEST(CommandLine, ThereIsOneInstance) {
  EXPECT_EQ(CommandLine::GetInstance(), CommandLine::GetInstance());
}

}  // namespace
