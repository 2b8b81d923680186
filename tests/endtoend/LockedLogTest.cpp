// Another process keeps the user's log locked. The sign-in goes on without log lines.

#include <signal.h>

#include "tests/endtoend/EndToEndTest.h"
#include "tests/support/Child.h"
#include "tests/support/Semaphores.h"

namespace endtoend {
namespace {

constexpr int kFlagNumber = 2147483547;
constexpr int kMutex = 1;

class LockedLogTest : public EndToEndTest {
 protected:
  LockedLogTest() {
    support::setValueOf(set, kMutex, 1);
    sembuf take{kMutex, -1, SEM_UNDO};
    ::semop(set, &take, 1);
  }

  const int set = ::semget(::ftok(homeFolder().c_str(), kFlagNumber), 2, IPC_CREAT | 0666);
  const support::SetRemover remover{homeFolder(), kFlagNumber};
};

TEST_F(LockedLogTest, ASignInSucceeds) {
  site.serve("/signin", redirectTo(site.address("/done")));
  EXPECT_EQ(messageOfARun(), result(site.address("/done")));
  EXPECT_THAT(logLines(), testing::IsEmpty());
}

TEST_F(LockedLogTest, ASignalDuringTheWaitClosesTheWindow) {
  start();
  ASSERT_TRUE(support::becomesTrue([this] { return support::waitersOn(set, kMutex) == 1; }));
  run->signal(SIGTERM);
  EXPECT_EQ(message(), kWindowClosed);
}

}  // namespace
}  // namespace endtoend
