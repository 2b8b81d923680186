#include "app/ResultChannel.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "platform/UniqueFd.h"
#include "tests/support/Files.h"

namespace {

// The runtime of UBSan, built with ASan here, writes to pipes of its own to test addresses.
#ifdef __SANITIZE_ADDRESS__
constexpr bool kRuntimeWrites = true;
#else
constexpr bool kRuntimeWrites = false;
#endif

std::string escaped(std::string text) {
  EncodeXMLData(text);
  return text;
}

std::string message(int code, std::string url = {}) {
  return ConstructOutputString(code, url);
}

class ResultPipe : public testing::Test {
 protected:
  ResultPipe() : path_(std::string(std::getenv("HOME")) + "/pipe") {}
  ~ResultPipe() override {
    if (reader_ >= 0) ::close(reader_);
    ::unlink(path_.c_str());
  }

  void makePipe() {
    ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    reader_ = ::open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(reader_, 0);
  }

  std::string received() const {
    std::string text(1 << 17, '\0');
    const ssize_t count = ::read(reader_, text.data(), text.size());
    text.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
    return text;
  }

  // Fills the pipe except for `room` bytes.
  void fill(std::size_t room) {
    const int writer = ::open(path_.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    const std::string filling(static_cast<std::size_t>(::fcntl(writer, F_GETPIPE_SZ)) - room, '.');
    EXPECT_EQ(::write(writer, filling.data(), filling.size()), static_cast<ssize_t>(filling.size()));
    ::close(writer);
  }

  // The number of write(2) calls of this process so far.
  static long writes() {
    std::ifstream counts("/proc/self/io");
    for (std::string line; std::getline(counts, line);) {
      if (line.rfind("syscw: ", 0) == 0) return std::stol(line.substr(7));
    }
    ADD_FAILURE() << "/proc/self/io counts no writes";
    return 0;
  }

  mode_t mode() const {
    struct stat status {};
    EXPECT_EQ(::stat(path_.c_str(), &status), 0);
    return status.st_mode & 0777;
  }

  std::string path_;
  int reader_ = -1;
};

TEST(ResultChannel, EscapesTheFivePredefinedEntities) {
  EXPECT_EQ(escaped(R"("&'<>)"), "&quot;&amp;&apos;&lt;&gt;");
}

TEST(ResultChannel, EscapesAmpersandOnce) {
  EXPECT_EQ(escaped("a&b"), "a&amp;b");
  EXPECT_EQ(escaped("&amp;"), "&amp;amp;");
}

TEST(ResultChannel, KeepsEveryOtherByte) {
  const std::string unusual("\x01\t\n\xC3\xA4\xFF\0z", 8);
  EXPECT_EQ(escaped(unusual), unusual);
  EXPECT_EQ(escaped(""), "");
}

TEST(ResultChannel, SendsTheEscapedAddress) {
  EXPECT_EQ(message(kSignedIn, "cb:/done?a=1&b='x'"), "<result><URL>cb:/done?a=1&amp;b=&apos;x&apos;</URL></result>");
}

TEST(ResultChannel, HasAMessageForEachCode) {
  EXPECT_EQ(message(1), "<errorNo><error>1</error></errorNo>");
  EXPECT_EQ(message(2), "<errorNo><error>2</error></errorNo>");
  EXPECT_EQ(message(255), "<errorNo><error>255</error></errorNo>");
}

TEST(ResultChannel, ReportsEveryOtherCodeAsMissingOptions) {
  EXPECT_EQ(message(7), "<errorNo><error>255</error></errorNo>");
  EXPECT_EQ(message(-1), "<errorNo><error>255</error></errorNo>");
}

TEST(ResultChannel, EscapesTheCallersAddressWhateverTheCode) {
  std::string url = "a&b";
  ConstructOutputString(2, url);
  EXPECT_EQ(url, "a&amp;b");
}

TEST_F(ResultPipe, ReceivesTheMessageAndNothingElse) {
  makePipe();
  EXPECT_TRUE(WriteFIFO(path_, message(1)));
  EXPECT_EQ(received(), "<errorNo><error>1</error></errorNo>");
}

TEST_F(ResultPipe, GetsTheMode0644) {
  makePipe();
  EXPECT_TRUE(WriteFIFO(path_, "x"));
  EXPECT_EQ(mode(), 0644u);
}

TEST_F(ResultPipe, DoesNotBlockWithoutAReader) {
  ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
  EXPECT_TRUE(WriteFIFO(path_, "x"));
}

TEST_F(ResultPipe, IsNotCreated) {
  EXPECT_FALSE(WriteFIFO(path_, "x"));
  EXPECT_NE(::access(path_.c_str(), F_OK), 0);
  EXPECT_FALSE(WriteFIFO("", "x"));
}

TEST_F(ResultPipe, OverwritesTheStartOfARegularFile) {
  std::ofstream(path_) << "0123456789";
  ASSERT_EQ(::chmod(path_.c_str(), 0600), 0);
  EXPECT_TRUE(WriteFIFO(path_, "abc"));

  std::stringstream content;
  content << std::ifstream(path_).rdbuf();
  EXPECT_EQ(content.str(), "abc3456789");
  EXPECT_EQ(mode(), 0644u);
}

TEST_F(ResultPipe, DoesNotTouchAFolder) {
  ASSERT_EQ(::mkdir(path_.c_str(), 0700), 0);
  EXPECT_FALSE(WriteFIFO(path_, "x"));
  EXPECT_EQ(mode(), 0700u);
  ASSERT_EQ(::rmdir(path_.c_str()), 0);
}

// A terminal is a device that every user may create.
TEST_F(ResultPipe, DoesNotTouchADevice) {
  const platform::UniqueFd terminal(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  ASSERT_TRUE(terminal);
  ASSERT_EQ(::grantpt(terminal.get()), 0);
  ASSERT_EQ(::unlockpt(terminal.get()), 0);
  const std::string device = ::ptsname(terminal.get());
  ASSERT_EQ(::chmod(device.c_str(), 0620), 0);

  EXPECT_FALSE(WriteFIFO(device, "x"));
  ASSERT_EQ(::symlink(device.c_str(), path_.c_str()), 0);
  EXPECT_FALSE(WriteFIFO(path_, "x"));

  EXPECT_EQ(support::modeOf(device), 0620u);
  char byte = 0;
  EXPECT_EQ(::read(terminal.get(), &byte, 1), -1);
}

TEST_F(ResultPipe, TakesAnAddressOf60Kilobytes) {
  makePipe();
  const std::string text = message(kSignedIn, "http://host/done?" + std::string(60 * 1024, 'a'));
  EXPECT_TRUE(WriteFIFO(path_, text));
  EXPECT_EQ(received(), text);
}

TEST_F(ResultPipe, GetsTheMessageInOneWrite) {
  if (kRuntimeWrites) GTEST_SKIP() << "the sanitizer's runtime writes too";
  makePipe();
  const long before = writes();
  EXPECT_TRUE(WriteFIFO(path_, std::string(60 * 1024, 'a')));
  EXPECT_EQ(writes() - before, 1);
}

TEST_F(ResultPipe, IsWrittenOnceWhenHalfFits) {
  if (kRuntimeWrites) GTEST_SKIP() << "the sanitizer's runtime writes too";
  makePipe();
  constexpr std::size_t kPage = 4096;  // a pipe's buffer is counted in pages
  fill(kPage);
  const long before = writes();
  EXPECT_FALSE(WriteFIFO(path_, std::string(2 * kPage, 'a')));
  EXPECT_EQ(writes() - before, 1);
  const std::string text = received();
  EXPECT_EQ(text.substr(text.find('a')), std::string(kPage, 'a'));
}

TEST_F(ResultPipe, IsWrittenOnceWhenFull) {
  if (kRuntimeWrites) GTEST_SKIP() << "the sanitizer's runtime writes too";
  makePipe();
  fill(0);
  const long before = writes();
  EXPECT_FALSE(WriteFIFO(path_, message(1)));
  EXPECT_EQ(writes() - before, 1);
}

TEST_F(ResultPipe, ReportsATruncatedMessage) {
  makePipe();
  EXPECT_FALSE(WriteFIFO(path_, std::string(1 << 20, 'a')));
}

}  // namespace
