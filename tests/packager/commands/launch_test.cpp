// A bundle made by the program in one state of the machine and started by the launcher in another.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/e2e/launcher_run.h"
#include "tests/harness/child_process.h"
#include "tests/packager/project_fixture.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kTestRuntime[] = "folder = \"" QUILLORY_TEST_RUNTIME "\"";

std::string configOf(const Project& project, const std::string& version,
                     const std::string& runtime) {
  std::string config = project.config("arguments = [\"packed\"]\n[runtime]\n" + runtime + "\n");
  config.replace(config.find("version = 3"), 11, "version = " + version);
  config.replace(config.find("\"launcher\""), 10, "\"" QUILLORY_LAUNCHER "\"");
  config.replace(config.find("\"lzma64\""), 8, "\"" QUILLORY_LZMA64 "\"");
  return config;
}

// Packs with another umask, home, language and folder than what the start gets, and moves the
// bundle.
std::string packElsewhere(const Project& project, const std::string& version, const TempDir& place,
                          const std::string& runtime = kTestRuntime) {
  project.writeConfig(configOf(project, version, runtime));
  ChildOptions options;
  options.environment = {{"HOME", project / "packer"}, {"LANG", "C"}, {"TZ", "Asia/Tokyo"}};
  options.directory = project.folder().str();
  options.limit = std::chrono::seconds(120);
  const ChildResult packed = runChild(
      {"sh", "-c", "umask 077; exec '" QUILLORY_PACK "' bundle -q --compression 0"}, options);
  EXPECT_EQ(packed.exitStatus, 0) << packed.err;
  const std::string bundle = place / ("Moved here " + version + ".app");
  fs::rename(project / "dist/Hello.app", bundle);
  return bundle;
}

ChildResult launch(const std::string& bundle, const TestUser& user,
                   const std::string& javaOptions = "") {
  ChildOptions options = user.options();
  if (!javaOptions.empty()) options.environment["JAVA_TOOL_OPTIONS"] = javaOptions;
  options.limit = std::chrono::seconds(120);
  return runChild({bundle + "/Contents/MacOS/Hello", "from the user"}, options);
}

TEST(LaunchOfAPackedBundle, InstallsStartsAndUpdatesTheApplication) {
  const Project project;
  const TempDir place;
  const TestUser user;
  const std::string bundle = packElsewhere(project, "3", place);
  const ChildResult first = launch(bundle, user);
  EXPECT_EQ(first.exitStatus, 0) << first.err;
  EXPECT_THAT(first.out, HasSubstr("[ExtractArchive] Archive signature verified.\n"));
  EXPECT_THAT(first.out, HasSubstr("Hello from Java "));
  EXPECT_THAT(first.out, HasSubstr("Quillory-Hello-3-complete/lib/hello.jar"));
  EXPECT_THAT(first.out, HasSubstr("  1: packed\n  2: from the user\n"));

  const ChildResult second = launch(bundle, user);
  EXPECT_THAT(second.out, HasSubstr("[Extractor] Running without extraction now\n"));
  EXPECT_THAT(second.out, HasSubstr("Hello from Java "));

  const ChildResult update = launch(packElsewhere(project, "4", place), user);
  EXPECT_THAT(update.out, HasSubstr("Quillory-Hello-4-complete/lib/hello.jar"));
  EXPECT_TRUE(fs::exists(user.master("Hello") + "/Quillory-Hello-3-complete"));
}

// What a runtime was linked with reaches the JVM in the launcher's own process, too.
TEST(LaunchOfAPackedBundle, StartsTheApplicationAsItIsStartedByHand) {
  const Project project;
  const TempDir place;
  const TestUser user;
  const std::string bundle = packElsewhere(project, "3", place,
                                           "modules = [\"java.base\"]\n[jvm]\n"
                                           "options = [\"-XX:+UseSerialGC\", \"-Xlog:gc\"]\n"
                                           "system-properties = { \"quiet\" = true }");
  const ChildResult start = launch(bundle, user);
  EXPECT_EQ(start.exitStatus, 0) << start.err;
  EXPECT_THAT(start.out, HasSubstr("[gc] Using Serial\n"));
  EXPECT_THAT(start.out, HasSubstr("arguments: 2\n  1: packed\n  2: from the user\n"));
}

// Of the classes that a start loads before those of the application, all that are Java's own come
// from the archive of classes.
TEST(LaunchOfAPackedBundle, FindsEveryClassOfJavaInTheArchiveOfClasses) {
  const Project project;
  const TempDir place;
  const TestUser user;
  const std::string bundle = packElsewhere(project, "3", place, "modules = [\"java.base\"]");
  ASSERT_EQ(launch(bundle, user).exitStatus, 0);
  const std::string log = place / "classes.log";
  ASSERT_EQ(launch(bundle, user, "-Xlog:class+load:file=" + log).exitStatus, 0);

  const std::string loaded = readFile(log);
  const std::size_t application = loaded.find("com.example.hello.Hello source: ");
  ASSERT_NE(application, std::string::npos) << loaded;
  EXPECT_THAT(loaded, HasSubstr("java.net.URLClassLoader source: shared objects file"));
  EXPECT_THAT(loaded.substr(0, application), Not(HasSubstr("source: jrt:")));
}

}  // namespace
}  // namespace quillory::testing
