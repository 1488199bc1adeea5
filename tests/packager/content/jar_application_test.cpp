#include "packager/content/jar_application.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::runChild;
using testing::TempDir;
using testing::writeFile;
using Names = std::vector<std::string>;

class JarApplication : public ::testing::Test {
 protected:
  // A jar without classes, with these lines in its manifest.
  void jar(const std::string& path, const std::string& manifest = "") {
    fs::create_directories(fs::path(dir_ / path).parent_path());
    writeFile(dir_ / "manifest", "Manifest-Version: 1.0\n" + manifest);
    const auto made =
        runChild({"jar", "--create", "--file", dir_ / path, "--manifest", dir_ / "manifest"});
    ASSERT_EQ(made.exitStatus, 0) << made.err;
    fs::remove(dir_ / "manifest");
  }
  Names jars() {
    const auto found = findJarApplication(dir_.str());
    return found ? found->jars : Names{"none"};
  }

  TempDir dir_;
};

TEST_F(JarApplication, HasWhatCanBeStartedFirst) {
  EXPECT_EQ(jars(), Names{"none"});
  jar("target/aaa.jar");
  jar("target/my-app-1.0.jar", "Main-Class: a.Main\n");
  jar("target/my-app-1.0-tests.jar");
  jar("target/lib/dep.jar");
  jar("target/dependency/other.jar");
  const auto found = findJarApplication(dir_.str());
  ASSERT_TRUE(found);
  EXPECT_EQ(found->jars, (Names{"target/my-app-1.0.jar", "target/aaa.jar", "target/lib/dep.jar",
                                "target/dependency/other.jar"}));
  EXPECT_EQ(found->name, "my-app-1.0");
  EXPECT_EQ(found->mainClass, "a.Main");
  EXPECT_EQ(found->reasons, Names{"main class: from the manifest of target/my-app-1.0.jar"});
}

TEST_F(JarApplication, LeavesOutTheThinOneOfTwo) {
  jar("target/app.jar", "Main-Class: a.Main\n");
  jar("target/original-app.jar", "Main-Class: a.Main\n");
  EXPECT_EQ(jars(), Names{"target/app.jar"});
  jar("target/app-jar-with-dependencies.jar", "Main-Class: a.Main\n");
  jar("target/original-other.jar");
  EXPECT_EQ(jars(), (Names{"target/app-jar-with-dependencies.jar", "target/original-other.jar"}));
}

TEST_F(JarApplication, HasAJarOnceThatHasTwoNames) {
  jar("app-1.2.jar", "Main-Class: a.Main\n");
  fs::create_symlink("app-1.2.jar", dir_ / "app.jar");
  fs::create_symlink("nowhere.jar", dir_ / "dangling.jar");
  EXPECT_EQ(jars(), Names{"app-1.2.jar"});
}

TEST_F(JarApplication, FollowsTheClassPathsOfManifests) {
  jar("here/app.jar",
      "Main-Class: a.Main\nClass-Path: parts/one.jar ../share/two%20words.jar gone.jar data/ "
      "no.jar\n");
  jar("here/parts/one.jar", "Class-Path: more/three.jar ../app.jar\n");
  jar("here/parts/more/three.jar");
  jar("share/two words.jar", "Class-Path: file://" + dir_ / "share/four.jar\n");
  jar("share/four.jar", "Class-Path: four.jar\n");
  writeFile(dir_ / "here/no.jar", "no jar");
  const auto found = findJarApplication(dir_ / "here");
  ASSERT_TRUE(found);
  EXPECT_EQ(found->jars, (Names{"app.jar", "parts/one.jar", dir_ / "share/two words.jar",
                                "parts/more/three.jar", dir_ / "share/four.jar"}));
  EXPECT_EQ(found->reasons.at(1), "4 of the jars: from the class path in a manifest");
}

TEST_F(JarApplication, TakesTheMainClassOfABuildFileThatAJarHas) {
  const std::pair<const char*, const char*> cases[] = {
      {"pom.xml",
       "<x><mainClass>${main}</mainClass><mainClass> com.example.hello.Hello "
       "</mainClass></x>"},
      {"build.gradle", "application {\n  mainClass = 'com.example.hello.Hello'\n}\n"},
      {"build.gradle", "mainClassName = \"com.example.hello.Hello\"\n"},
      {"build.gradle.kts", "application { mainClass.set(\"com.example.hello.Hello\") }"},
      {"build.xml", "<attribute name=\"Main-Class\" value=\"com.example.hello.Hello\"/>"}};
  jar("target/empty.jar");
  const Names unpacked = {"jar", "--update",       "--file", dir_ / "target/empty.jar",
                          "-C",  dir_ / "classes", "."};
  writeFile(dir_ / "classes/com/example/hello/Hello.class", "x");
  ASSERT_EQ(runChild(unpacked).exitStatus, 0);
  for (const auto& [file, text] : cases) {
    EXPECT_EQ(findJarApplication(dir_.str())->mainClass, "") << file;
    writeFile(dir_ / file, text);
    const auto found = findJarApplication(dir_.str());
    EXPECT_EQ(found->mainClass, "com.example.hello.Hello") << text;
    EXPECT_EQ(found->reasons, Names{"main class: from " + std::string(file)});
    fs::remove(dir_ / file);
  }
  writeFile(dir_ / "pom.xml", "<mainClass>com.example.Missing</mainClass>");
  EXPECT_EQ(findJarApplication(dir_.str())->mainClass, "");
}

// As packages of distributions have it, and Gradle's and Maven's plugins for distributions.
TEST_F(JarApplication, TakesTheCommandOfAScriptBesideItsJars) {
  jar("app/lib/aaa-demo.jar", "Main-Class: a.Demo\n");
  jar("app/lib/main.jar");
  writeFile(dir_ / "classes/org/example/App.class", "x");
  ASSERT_EQ(runChild({"jar", "--update", "--file", dir_ / "app/lib/main.jar", "-C",
                      dir_ / "classes", "."})
                .exitStatus,
            0);
  writeFile(dir_ / "app/bin/other", "#!/bin/sh\nexec true\n");
  writeFile(dir_ / "app/bin/run",
            "#!/bin/sh\nexec java -Xmx99m -cp \"$HOME/lib/*\" org.example.App --gui \"$@\"\n");
  writeFile(dir_ / "app/bin/run.bat", "java -Xmx1m org.example.App\n");
  writeFile(dir_ / "app/resources/a", "x");
  auto found = findJarApplication(dir_ / "app");
  ASSERT_TRUE(found);
  EXPECT_EQ(found->jars, (Names{"lib/main.jar", "lib/aaa-demo.jar"}));
  EXPECT_EQ(found->name, "main");
  EXPECT_EQ(found->mainClass, "org.example.App");
  EXPECT_EQ(found->jvmOptions, Names{"-Xmx99m"});
  EXPECT_EQ(found->arguments, Names{"--gui"});
  EXPECT_EQ(found->files, Names{"resources"});
  EXPECT_EQ(found->layout, "");
  EXPECT_EQ(found->reasons, (Names{"main class, options and arguments: from the script bin/run",
                                   "the folders beside lib/: packed beside it, as it is ready to "
                                   "run"}));
  writeFile(dir_ / "app/pom.xml", "");
  found = findJarApplication(dir_ / "app");
  EXPECT_EQ(found->mainClass, "a.Demo") << "who builds has scripts for other things";
  EXPECT_EQ(found->files, Names{});
}

TEST_F(JarApplication, IsTheOneThatAScriptStartsAsAJar) {
  jar("aaa.jar", "Main-Class: a.Other\n");
  jar("main.jar", "Main-Class: a.Main\n");
  writeFile(dir_ / "data/a", "x");
  writeFile(dir_ / "README", "#!/bin/sh\njava -jar aaa.jar\n");
  writeFile(dir_ / "start.sh", "#!/bin/sh\njava -Dx=y -jar \"$HERE/main.jar\" \"$@\"\n");
  const auto found = findJarApplication(dir_.str());
  ASSERT_TRUE(found);
  EXPECT_EQ(found->jars, (Names{"main.jar", "aaa.jar"}));
  EXPECT_EQ(found->mainClass, "a.Main");
  EXPECT_EQ(found->jvmOptions, Names{"-Dx=y"});
  EXPECT_EQ(found->files, Names{"data"});
  EXPECT_EQ(found->layout, "beside");
}

TEST_F(JarApplication, HasTheNativeLibrariesOfAFinishedApplication) {
  jar("lib/main.jar", "Main-Class: a.Main\n");
  writeFile(dir_ / "lib/libone.so", "x");
  writeFile(dir_ / "lib/libtwo.so", "x");
  writeFile(dir_ / "lib/libone.dylib", "x");
  writeFile(dir_ / "libthree.so.1", "x");
  const auto found = findJarApplication(dir_.str());
  EXPECT_EQ(found->nativeLibraries, (Names{"lib/*.so", "lib/*.dylib"}));
  EXPECT_EQ(found->reasons.back(), "native libraries: lib/*.so, lib/*.dylib");
  writeFile(dir_ / "build.gradle", "");
  EXPECT_EQ(findJarApplication(dir_.str())->nativeLibraries, Names{});
}

TEST_F(JarApplication, PrefersTheOneThatTheFolderIsNamedAfter) {
  jar("pages/lib/aaa-demo.jar", "Main-Class: a.Demo\n");
  jar("pages/lib/pages-library.jar");
  jar("pages/lib/pages-basic.jar", "Main-Class: a.Pages\n");
  EXPECT_EQ(findJarApplication(dir_ / "pages")->mainClass, "a.Pages");
  EXPECT_EQ(findJarApplication(dir_ / "pages/")->mainClass, "a.Pages");
}

TEST_F(JarApplication, PathsStartFromTheFolderThatWasLookedInto) {
  jar("app.jar", "Main-Class: a.Main\nClass-Path: jars/one.jar\n");
  jar("jars/one.jar");
  const fs::path before = fs::current_path();
  fs::current_path(dir_.str());
  const auto found = findJarApplication(".");
  fs::current_path(before);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->jars, (Names{"app.jar", "jars/one.jar"}));
  EXPECT_EQ(found->files, Names{"jars"});
}

}  // namespace
}  // namespace quillory::pack
