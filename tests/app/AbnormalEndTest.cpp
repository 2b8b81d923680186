#include "app/AbnormalEnd.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <string>

#include "app/ResultChannel.h"
#include "platform/UniqueFd.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"

namespace {

const std::string kMessage = "<errorNo><error>2</error></errorNo>";

class AbnormalEnd : public testing::Test {
 protected:
  AbnormalEnd() {
    EXPECT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    reader_.reset(::open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  }

  // Runs `body` in a child that reports its abnormal end. Returns the child's status, as `support::Child::wait` does.
  int end(const std::function<void()>& body) const {
    return support::inChild([&] {
      forbidCoreFiles();
      reportAbnormalEnd(path_, cleanUp);
      body();
      return 0;
    });
  }

  std::string received() const {
    std::array<char, 1024> block{};
    const ssize_t count = ::read(reader_.get(), block.data(), block.size());
    return {block.data(), count < 0 ? 0 : static_cast<std::size_t>(count)};
  }

  const support::TemporaryFolder folder_;
  const std::string path_ = folder_ / "pipe";
  platform::UniqueFd reader_;
  void (*cleanUp)() = nullptr;
};

struct Signal {
  int number;
  const char* name;
};

class SignalEnd : public AbnormalEnd, public testing::WithParamInterface<Signal> {};

TEST_P(SignalEnd, WritesOneMessage) {
  EXPECT_NE(end([] { (void)::raise(GetParam().number); }), 0);
  EXPECT_EQ(received(), kMessage);
}

INSTANTIATE_TEST_SUITE_P(Signals, SignalEnd,
                         testing::Values(Signal{SIGABRT, "SIGABRT"}, Signal{SIGBUS, "SIGBUS"}, Signal{SIGFPE, "SIGFPE"},
                                         Signal{SIGILL, "SIGILL"}, Signal{SIGQUIT, "SIGQUIT"},
                                         Signal{SIGSEGV, "SIGSEGV"}, Signal{SIGSYS, "SIGSYS"},
                                         Signal{SIGTRAP, "SIGTRAP"}, Signal{SIGXCPU, "SIGXCPU"},
                                         Signal{SIGXFSZ, "SIGXFSZ"}),
                         [](const auto& each) { return std::string(each.param.name); });

// Restores the action of the signal after a test that changes it.
class FileSizeSignal : public AbnormalEnd {
 protected:
  ~FileSizeSignal() override { (void)::signal(SIGXFSZ, SIG_DFL); }
};

TEST_F(FileSizeSignal, ThatTheLogIgnoresIsIgnored) {
  (void)::signal(SIGXFSZ, [](int) {});
  EXPECT_EQ(end([] {
              (void)::raise(SIGXFSZ);
              ::_exit(claimMessage() ? 7 : 1);
            }),
            7);
  EXPECT_EQ(received(), "");
}

TEST_F(FileSizeSignal, ThatTheLogPassesOnWritesTheMessage) {
  (void)::signal(SIGXFSZ, [](int number) {
    (void)::signal(number, SIG_DFL);
    (void)::raise(number);
  });
  EXPECT_EQ(end([] { (void)::raise(SIGXFSZ); }), 128 + SIGXFSZ);
  EXPECT_EQ(received(), kMessage);
}

TEST_F(AbnormalEnd, ByExitWritesOneMessage) {
  EXPECT_EQ(end([] { std::exit(3); }), 3);
  EXPECT_EQ(received(), kMessage);
}

TEST_F(AbnormalEnd, AddsNothingToAClaimedMessage) {
  (void)end([this] {
    EXPECT_TRUE(claimMessage());
    EXPECT_FALSE(claimMessage());
    EXPECT_TRUE(WriteFIFO(path_, "1"));
    std::abort();
  });
  EXPECT_EQ(received(), "1");
}

TEST_F(AbnormalEnd, ClaimsNothingUntilItIsReported) {
  EXPECT_TRUE(claimMessage());
  EXPECT_TRUE(claimMessage());
}

TEST_F(AbnormalEnd, NeedsNoFreeDescriptor) {
  (void)end([] {
    while (::open("/dev/null", O_RDONLY) != -1) {
    }
    std::abort();
  });
  EXPECT_EQ(received(), kMessage);
}

// Without this, the compiler turns the recursion into a loop.
volatile bool endless = true;

int useUpTheStack(int depth) {
  volatile char block[4096] = {};
  return endless ? useUpTheStack(depth + 1) + block[0] : depth;
}

TEST_F(AbnormalEnd, NeedsNoFreeStack) {
  (void)end([] { (void)useUpTheStack(0); });
  EXPECT_EQ(received(), kMessage);
}

TEST_F(AbnormalEnd, CleansUpAfterTheMessage) {
  cleanUp = [] { (void)!::write(STDOUT_FILENO, "cleaned", 7); };
  const std::string file = folder_ / "output";
  (void)end([&] {
    (void)::dup2(::open(file.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600), STDOUT_FILENO);
    std::abort();
  });
  EXPECT_EQ(received(), kMessage);
  EXPECT_EQ(support::contentsOf(file), "cleaned");
}

TEST_F(AbnormalEnd, LeavesNoCoreFile) {
  EXPECT_EQ(end([] {
              rlimit limit{1, 1};
              (void)::getrlimit(RLIMIT_CORE, &limit);
              (void)claimMessage();
              if (limit.rlim_cur == 0 && limit.rlim_max == 0) ::_exit(7);
            }),
            7);
}

}  // namespace
