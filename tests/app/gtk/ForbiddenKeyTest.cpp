#include "app/gtk/keys/ForbiddenKey.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/Files.h"

namespace {

const std::string kKeyDescriptor("\x06\xd0\xf1\x09\x01\xa1\x01\x09\x20", 9);
const std::string kMouseDescriptor("\x05\x01\x09\x02\xa1\x01\x09\x01", 8);

class ForbiddenKeyTest : public testing::Test {
 protected:
  void plug(const std::string& name, const std::string& descriptor) const {
    const std::string device = folder_ / ("sys/" + name + "/device");
    std::filesystem::create_directories(device);
    support::writeFile(device + "/report_descriptor", descriptor);
  }
  void permit(const std::string& name) const {
    std::filesystem::create_directories(folder_ / "dev");
    support::writeFile(folder_ / ("dev/" + name), "");
  }
  bool isFound() const { return hasForbiddenKey(folder_ / "sys", folder_ / "dev"); }

 private:
  const support::TemporaryFolder folder_;
};

TEST_F(ForbiddenKeyTest, FindsAKeyThatCannotBeOpened) {
  plug("hidraw0", kMouseDescriptor);
  EXPECT_FALSE(isFound());
  plug("hidraw1", kKeyDescriptor);
  EXPECT_TRUE(isFound());
  permit("hidraw1");
  EXPECT_FALSE(isFound());
}

TEST_F(ForbiddenKeyTest, FindsNothingWithoutHidDevices) {
  EXPECT_FALSE(isFound());
}

}  // namespace
