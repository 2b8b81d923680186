// Lines that are lost because the lock cannot be taken.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "logging/BinaryLock.h"
#include "tests/logging/FileTargetFixture.h"
#include "tests/support/SemaphoreOperations.h"

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::SizeIs;

class MissingLinesTest : public RegisteredTargetTest {
 protected:
  MissingLinesTest() {
    holder.create(file, 11);
    holder.wait();
  }
  ~MissingLinesTest() override { holder.finalize(); }

  std::vector<std::string> lines() const { return support::linesOf(file); }

  tarn::BinaryLock holder;
};

TEST_F(MissingLinesTest, TheNextLineSaysHowManyAreMissing) {
  log(tarn::INFO, "one");
  log(tarn::INFO, "two");
  EXPECT_THAT(lines(), SizeIs(0));
  holder.release();
  log(tarn::INFO, "three");
  log(tarn::INFO, "four");
  EXPECT_THAT(lines(), ElementsAre(HasSubstr(" | Missing log lines: 2"), EndsWith(" | three"), EndsWith(" | four")));
  EXPECT_THAT(lines()[0], HasSubstr("[WARN]"));
}

TEST_F(MissingLinesTest, LinesBelowTheLevelAreNotCounted) {
  target.countMissingLine(tarn::DEBUG);
  holder.release();
  log(tarn::INFO, "one");
  EXPECT_THAT(lines(), ElementsAre(EndsWith(" | one")));
}

TEST_F(MissingLinesTest, RegistrationEndsWhileTheLockIsHeld) {
  tarn::LogTargetDefault other("other");
  other.setLogFile("Kelvo.log", folder.path().c_str());
  EXPECT_TRUE(other.onRegisterTarget());
  holder.release();
  other.writeLog(tarn::INFO, "", "", "", "", "", "", "text", nullptr, 0);
  EXPECT_THAT(lines(), ElementsAre(EndsWith(" | text")));
}

TEST_F(MissingLinesTest, ARemovedSetLosesNoLine) {
  ::semctl(support::setOf(file, 11), 0, IPC_RMID);
  log(tarn::INFO, "one");
  EXPECT_THAT(lines(), ElementsAre(EndsWith(" | one")));
}

TEST_F(MissingLinesTest, AnyFailureOfTheLockIsCounted) {
  holder.release();
  {
    const support::FailingOperation failing(1, -1, ENOMEM);
    log(tarn::INFO, "one");
  }
  log(tarn::INFO, "two");
  EXPECT_THAT(lines(), ElementsAre(HasSubstr(" | Missing log lines: 1"), EndsWith(" | two")));
}

}  // namespace
