#include "packager/content/gradle_application.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

using testing::TempDir;
using testing::writeFile;
using Names = std::vector<std::string>;

// As Gradle 7 and 8 write it, shortened.
constexpr char kScript[] =
    "#!/bin/sh\n"
    "# Resolve links: $0 may be a link\n"
    "APP_HOME=$( cd -P \"${APP_HOME:-./}..\" > /dev/null && printf '%s\\n' \"$PWD\" ) || exit\n"
    "DEFAULT_JVM_OPTS='\"-Xmx64m\" \"-Dgreeting=a b\" \"-Dhome=$APP_HOME/lib\"'\n"
    "\n"
    "CLASSPATH=$APP_HOME/lib/app.jar:$APP_HOME/lib/zz.jar:$APP_HOME/lib/aa.jar\n"
    "\n"
    "# * args from the command line\n"
    "set -- \\\n"
    "        -classpath \"$CLASSPATH\" \\\n"
    "        org.example.App \\\n"
    "        \"$@\"\n"
    "exec \"$JAVACMD\" \"$@\"\n";

TEST(GradleApplication, ReadStartScriptKnowsTheOrderOfTheClassPathTheMainClassAndTheOptions) {
  const StartScript script = readStartScript(kScript);
  EXPECT_EQ(script.classPath, (Names{"lib/app.jar", "lib/zz.jar", "lib/aa.jar"}));
  EXPECT_EQ(script.mainClass, "org.example.App");
  EXPECT_EQ(script.jvmOptions, (Names{"-Xmx64m", "-Dgreeting=a b", "-Dhome=$APP_HOME/lib"}));
}

TEST(GradleApplication, ReadStartScriptTakesThoseOfOlderVersions) {
  const StartScript script = readStartScript(
      "#!/usr/bin/env sh\nDEFAULT_JVM_OPTS=\"\"\nCLASSPATH=$APP_HOME/lib/a.jar\n"
      "eval set -- $DEFAULT_JVM_OPTS $JAVA_OPTS -classpath \"\\\"$CLASSPATH\\\"\" "
      "org.example.Old \"$APP_ARGS\"\n");
  EXPECT_EQ(script.classPath, Names{"lib/a.jar"});
  EXPECT_EQ(script.mainClass, "org.example.Old");
  EXPECT_EQ(script.jvmOptions, Names{});
}

TEST(GradleApplication, ReadStartScriptSaysNothingOfWhatItDoesNotUnderstand) {
  for (const char* text :
       {"", "CLASSPATH=", "\nCLASSPATH=$HOME/a.jar:/b.jar\n", "-classpath \"$CLASSPATH\"",
        "-classpath \"$CLASSPATH\" --module a/b \"$@\"", "\nDEFAULT_JVM_OPTS='\"-Xm"}) {
    const StartScript script = readStartScript(text);
    EXPECT_EQ(script.classPath, Names{}) << text;
    EXPECT_EQ(script.mainClass, "") << text;
    EXPECT_EQ(script.jvmOptions, Names{}) << text;
  }
}

TEST(GradleApplication, IsTheInstallationAsItLies) {
  const TempDir dir;
  for (const char* jar : {"aa.jar", "app.jar", "not-on-it.jar", "zz.jar"}) {
    writeFile(dir / "build/install/app/lib" + ('/' + std::string(jar)), "x");
  }
  writeFile(dir / "build/install/app/bin/aaa", "#!/bin/sh\necho another script\n");
  writeFile(dir / "build/install/app/bin/app", kScript);
  writeFile(dir / "build/install/app/bin/app.bat", kScript);
  const auto found = findGradleApplication(dir.str());
  ASSERT_TRUE(found);
  EXPECT_EQ(found->name, "app");
  EXPECT_EQ(found->root, "build/install/app");
  EXPECT_EQ(found->mainClass, "org.example.App");
  EXPECT_EQ(found->jars, (Names{"lib/app.jar", "lib/zz.jar", "lib/aa.jar"}));
  EXPECT_EQ(found->reasons,
            (Names{"build/install/app, as Gradle's application plugin has installed it: packed as "
                   "it lies",
                   "main class, class path and options: from its script bin/app"}));
}

TEST(GradleApplication, HasAllJarsWhereNoScriptTellsOfThem) {
  const TempDir dir;
  writeFile(dir / "build/install/empty/bin/empty", kScript);
  writeFile(dir / "build/install/other/lib/b.jar", "x");
  writeFile(dir / "build/install/other/lib/a.jar", "x");
  writeFile(dir / "build/install/other/lib/a:b.jar", "x");
  const auto found = findGradleApplication(dir.str());
  ASSERT_TRUE(found);
  EXPECT_EQ(found->root, "build/install/other");
  EXPECT_EQ(found->mainClass, "");
  EXPECT_EQ(found->jars, (Names{"lib/a.jar", "lib/b.jar"}));
  writeFile(dir / "build/install/other/bin/run", kScript);
  EXPECT_EQ(findGradleApplication(dir.str())->jars, (Names{"lib/a.jar", "lib/b.jar"}));
}

TEST(GradleApplication, IsNotThereWithoutAnInstallation) {
  const TempDir dir;
  EXPECT_FALSE(findGradleApplication(dir.str()));
  writeFile(dir / "build/install", "a file");
  EXPECT_FALSE(findGradleApplication(dir.str()));
}

}  // namespace
}  // namespace quillory::pack
