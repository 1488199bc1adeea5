// Bundles with a runtime that jlink has made, from training to the starts on a user's machine.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "tests/e2e/launcher_run.h"
#include "tests/harness/eventually.h"
#include "tests/packager/project_fixture.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;
using ::testing::Not;

class LinkedRuntime : public ::testing::Test {
 protected:
  // Writes the configuration of the project with the real programs and these tables behind it.
  std::string configWith(const std::string& tables) {
    std::string config = project_.config(tables);
    config.replace(config.find("\"launcher\""), 10, "\"" QUILLORY_LAUNCHER "\"");
    config.replace(config.find("\"lzma64\""), 8, "\"" QUILLORY_LZMA64 "\"");
    // The updater that comes with the program starts the JVM with the application's own paths.
    config.erase(config.find("[updater]"), config.find("[signing]") - config.find("[updater]"));
    return project_.writeConfig(config);
  }
  // Runs quillory-pack, with its own cache; what it says.
  ChildResult packing(const std::vector<std::string>& arguments) {
    ChildOptions options = user_.options();
    options.environment["QUILLORY_PACK_CACHE"] = project_ / "cache";
    options.limit = std::chrono::seconds(120);
    std::vector<std::string> command = {QUILLORY_PACK};
    command.insert(command.end(), arguments.begin(), arguments.end());
    ChildResult result = runChild(command, options);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    return result;
  }
  ChildResult launch() {
    ChildOptions options = user_.options();
    options.limit = std::chrono::seconds(120);
    ChildResult result = runChild({project_ / "dist/Hello.app/Contents/MacOS/Hello"}, options);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    return result;
  }
  // The one path below the master folder that ends so; "" for none.
  std::string installed(const std::string& ending) const {
    // What is made meanwhile may be gone when it is looked at.
    std::error_code gone;
    for (fs::recursive_directory_iterator entry(user_.master("Hello"), gone), end;
         !gone && entry != end; entry.increment(gone)) {
      if (entry->path().string().ends_with(ending)) return entry->path();
    }
    return "";
  }
  static std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
      if (!line.starts_with('#')) lines.push_back(line);
    }
    return lines;
  }

  Project project_;
  TestUser user_;
};

// The first class that a run needed and that the JDK's own list lacks is mapped, not loaded.
TEST_F(LinkedRuntime, HasTheArchiveOfWhatTrainingHasFoundAndThenTheApplicationsOwn) {
  const std::string config = configWith("[runtime]\nmodules = [\"java.base\"]\n");
  packing({"train", config, "--", "trained"});
  const std::vector<std::string> trained = linesOf(readFile(project_ / "quillory.classlist"));
  EXPECT_THAT(trained, IsSupersetOf({"java/lang/Object", "java/lang/Thread"}));
  EXPECT_THAT(trained, Not(IsSupersetOf({"com/example/hello/Hello"})));

  packing({"bundle", config, "--compression", "0"});
  EXPECT_THAT(launch().out, HasSubstr("Hello from Java "));
  const std::vector<std::string> list = linesOf(readFile(installed("/lib/classlist")));
  EXPECT_THAT(list, IsSupersetOf(trained));
  EXPECT_NE(installed("/lib/server/classes.jsa"), "");
  // Those of the updater stand before the trained ones, and both behind the JDK's own.
  const std::string added = list.back();
  EXPECT_THAT(trained, IsSupersetOf({added}));
  std::string name = added;
  std::replace(name.begin(), name.end(), '/', '.');
  const ChildResult run = runChild({installed("/bin/java"), "-Xlog:class+load", "-cp",
                                    project_ / "hello.jar", "com.example.hello.Hello"},
                                   user_.options());
  EXPECT_THAT(run.out, HasSubstr(" " + name + " source: shared objects file\n"));

  ASSERT_TRUE(eventually([&] { return !installed("-complete.guard").empty(); }));
  const ChildResult second = launch();
  EXPECT_THAT(second.out, HasSubstr("[Extractor] Using the startup archive " +
                                    user_.master("Hello") + "/QYApps/StartupArchive-"));
  EXPECT_THAT(second.out, HasSubstr("Hello from Java "));
}

// jlink links what the module requires, used or not, and nothing says "com.example" to it.
TEST_F(LinkedRuntime, RunsAModule) {
  const std::string source = project_ / "source";
  writeFile(source + "/module-info.java", "module com.example.words { requires java.logging; }\n");
  writeFile(source + "/com/example/words/Main.java",
            "package com.example.words;\n"
            "public final class Main {\n"
            "  public static void main(String[] words) {\n"
            "    Module own = Main.class.getModule();\n"
            "    System.out.println(own + \" got \" + String.join(\",\", words) + \", \"\n"
            "        + own.getLayer().findModule(\"java.logging\").isPresent());\n"
            "  }\n"
            "}\n");
  ASSERT_EQ(runChild({"javac", "-d", project_ / "classes", source + "/module-info.java",
                      source + "/com/example/words/Main.java"})
                .exitStatus,
            0);
  ASSERT_EQ(runChild({"jar", "--create", "--file", project_ / "words.jar", "-C",
                      project_ / "classes", "."})
                .exitStatus,
            0);
  std::string config = readFile(configWith("arguments = [\"packed\"]\n[runtime]\njlink = true\n"));
  config.replace(config.find("main-class = \"com.example.hello.Hello\""), 38,
                 "module = \"com.example.words/com.example.words.Main\"");
  config.replace(config.find("hello.jar"), 9, "words.jar");
  packing({"bundle", project_.writeConfig(config), "--compression", "0"});
  const ChildResult start = launch();
  EXPECT_THAT(start.out, HasSubstr("module com.example.words got packed, true\n")) << start.err;
}

}  // namespace
}  // namespace quillory::testing
