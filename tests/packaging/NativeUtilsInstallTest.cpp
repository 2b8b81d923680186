// The files of the components `nativeutils` and `nativeutils-dev`, and programs that link the installed library.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/packaging/StagedTest.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"
#include "tests/support/Shell.h"

namespace {

using support::Outcome;
using support::run;
using testing::ElementsAreArray;

const char* const kHeaders[] = {"Backup.h",    "Base64.h",  "Files.h",  "Log.h",       "NativeUtils.h",
                                "Processes.h", "Strings.h", "System.h", "UserFolder.h"};

class NativeUtilsInstallTest : public packaging_test::StagedTest {
 protected:
  NativeUtilsInstallTest() {
    install("nativeutils", "/usr");
    install("nativeutils-dev", "/usr");
  }

  std::string include() const { return staged("/usr/include"); }
  std::string libraries() const { return staged("/usr/" LIBRARY_FOLDER); }

  // Returns the sorted names of the functions in the headers, one per line.
  std::string declaredFunctions() const {
    return run("sed -nE 's/^[a-zA-Z].*\\b((util|Base64)\\w+)\\(.*/\\1/p' '" + include() + "'/nativeutils/*.h | sort -u")
        .output;
  }

  // Returns the sorted symbols that an `nm` command lists; of the library's functions only the names.
  static std::string symbolsOf(const std::string& listing) {
    return run(listing + " | sed -E 's/^[A-Z] (.* )?((util|Base64)\\w+)(<.*>)?\\(.*/\\2/' | sort -u").output;
  }

  static std::string outputOf(const std::string& program, const std::string& libraryFolder) {
    const Outcome outcome = run("LD_LIBRARY_PATH='" + libraryFolder + "' '" + program + "'");
    EXPECT_EQ(outcome.status, 0);
    return outcome.output;
  }

  // The output of tests/packaging/consumer.
  static std::string expectedOutput() { return "36 Zm9v 8 Logger of the consumer\n" + support::ownHome() + "\n"; }

  std::string buildWithPkgConfig(const std::string& flags) const {
    std::string program = buildFolder_ / "consumer";
    const std::string pkgConfig = "PKG_CONFIG_LIBDIR='" + libraries() + "/pkgconfig' pkg-config ";
    const Outcome outcome =
        run(CXX_COMPILER " " SANITIZER_FLAGS " -std=c++17 -Wall -Wextra -Wpedantic -Werror -o '" + program +
            "' " CONSUMER_FOLDER "/consumer.cpp $(" + pkgConfig + flags + " nativeutils)");
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    return program;
  }

  support::TemporaryFolder buildFolder_;
};

TEST_F(NativeUtilsInstallTest, ContainsExactlyTheFilesOfThePackages) {
  std::vector<std::string> files;
  for (const char* const header : kHeaders)
    files.push_back(std::string("/usr/include/nativeutils/") + header);
  for (const char* const file : {"cmake/nativeutils/nativeutils-config-" BUILD_TYPE ".cmake",
                                 "cmake/nativeutils/nativeutils-config-version.cmake",
                                 "cmake/nativeutils/nativeutils-config.cmake", "libnativeutils.a", "libnativeutils.so",
                                 "libnativeutils.so.9", "libnativeutils.so." VERSION, "pkgconfig/nativeutils.pc"})
    files.push_back(std::string("/usr/" LIBRARY_FOLDER "/") + file);
  for (const char* const document :
       {"libnativeutils-dev/changelog.gz", "libnativeutils-dev/copyright",
        "libnativeutils-dev/examples/replace-folder.cpp", "libnativeutils-dev/examples/run-helper.cpp",
        "libnativeutils-dev/examples/system-report.cpp", "libnativeutils-dev/nativeutils.md",
        "libnativeutils9/changelog.gz", "libnativeutils9/copyright"})
    files.push_back(std::string("/usr/share/doc/") + document);
  files.emplace_back("/usr/share/lintian/overrides/libnativeutils9");
  EXPECT_THAT(stagedFiles(), ElementsAreArray(files));
}

TEST_F(NativeUtilsInstallTest, EachHeaderCompilesAlone) {
  for (const char* const header : kHeaders) {
    const Outcome outcome =
        run("echo '#include <nativeutils/" + std::string(header) +
            ">' | " CXX_COMPILER " -std=c++17 -Wall -Wextra -Wpedantic -Werror -fsyntax-only -x c++ -I'" + include() +
            "' -");
    EXPECT_EQ(outcome.status, 0) << header << "\n" << outcome.output;
  }
}

TEST_F(NativeUtilsInstallTest, SharedLibraryExportsOnlyTheDeclaredFunctions) {
  EXPECT_EQ(symbolsOf("nm -DC --defined-only --without-symbol-versions '" + libraries() +
                      "/libnativeutils.so' | sed 's/^[0-9a-f]* //' | grep -v '^A NATIVEUTILS_9$'"),
            declaredFunctions());
}

TEST_F(NativeUtilsInstallTest, StaticLibraryExportsOnlyTheDeclaredFunctions) {
  EXPECT_EQ(symbolsOf("nm -gC --defined-only '" + libraries() + "/libnativeutils.a' | sed -n 's/^[0-9a-f]\\+ //p'"),
            declaredFunctions());
}

TEST_F(NativeUtilsInstallTest, CMakeFindsTheLibrary) {
  const Outcome outcome = run(CMAKE_PROGRAM " -G Ninja -DCMAKE_CXX_COMPILER='" CXX_COMPILER "' -DCMAKE_PREFIX_PATH='" +
                              staged("/usr") + "' -S " CONSUMER_FOLDER " -B '" + buildFolder_.path() +
                              "' && " CMAKE_PROGRAM " --build '" + buildFolder_.path() + "'");
  ASSERT_EQ(outcome.status, 0) << outcome.output;
  EXPECT_EQ(outputOf(buildFolder_ / "consumer-shared", ""), expectedOutput());
  EXPECT_EQ(outputOf(buildFolder_ / "consumer-static", ""), expectedOutput());
}

TEST_F(NativeUtilsInstallTest, PkgConfigFindsTheLibrary) {
  EXPECT_EQ(outputOf(buildWithPkgConfig("--cflags --libs"), libraries()), expectedOutput());
}

TEST_F(NativeUtilsInstallTest, PkgConfigFindsTheStaticLibrary) {
  std::filesystem::remove(libraries() + "/libnativeutils.so");
  EXPECT_EQ(outputOf(buildWithPkgConfig("--static --cflags --libs"), ""), expectedOutput());
}

// Configures the project, or a project that contains it, in a temporary build folder.
class ConfigureTest : public testing::Test {
 protected:
  Outcome configure(const std::string& source, const std::string& options) const {
    return run(CMAKE_PROGRAM " -G Ninja -DCMAKE_CXX_COMPILER='" CXX_COMPILER "' " + options + " -S '" + source +
               "' -B '" + folder_ / "build" + "'");
  }

  support::TemporaryFolder folder_;
};

TEST_F(ConfigureTest, LibraryNeedsNeitherGtkNorWebKit) {
  const std::string pkgConfig = folder_ / "pkg-config";
  std::ofstream(pkgConfig) << "#!/bin/sh\n"
                              "case \"$*\" in *gtk*|*webkit*|*icu*|*x11*|*wayland*|*soup*) exit 1 ;; esac\n"
                              "exec pkg-config \"$@\"\n";
  std::filesystem::permissions(pkgConfig, std::filesystem::perms::owner_all);
  const std::string options = "-DPKG_CONFIG_EXECUTABLE='" + pkgConfig + "' -DSVO_BUILD_APP=";

  const Outcome library = configure(SOURCE_FOLDER, options + "OFF");
  EXPECT_EQ(library.status, 0) << library.output;
  const Outcome app = configure(SOURCE_FOLDER, options + "ON");
  EXPECT_NE(app.status, 0) << app.output;
}

TEST_F(ConfigureTest, SubprojectKeepsTheSettingsOfItsParent) {
  std::ofstream(folder_ / "CMakeLists.txt")
      << "cmake_minimum_required(VERSION 3.25)\n"
         "project(parent LANGUAGES CXX)\n"
         "add_subdirectory(" SOURCE_FOLDER
         " svo)\n"
         "add_executable(parent " CONSUMER_FOLDER
         "/consumer.cpp)\n"
         "target_link_libraries(parent PRIVATE nativeutils::nativeutils)\n"
         "if(CMAKE_BUILD_TYPE OR CMAKE_OSX_DEPLOYMENT_TARGET OR TARGET svo::app)\n"
         "  message(FATAL_ERROR \"changed\")\n"
         "endif()\n";
  const Outcome outcome = configure(folder_.path(), "");
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  EXPECT_FALSE(std::filesystem::exists(folder_ / "build/CPackConfig.cmake"));
}

}  // namespace
