#include "packager/commands/bundle_archive.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "packager/content/desktop_files.h"
#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"
#include "tests/packager/project_fixture.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::HasSubstr;

std::string run(const std::vector<std::string>& command, const ChildOptions& options = {}) {
  const ChildResult child = runChild(command, options);
  EXPECT_EQ(child.exitStatus, 0) << child.err;
  return child.out;
}

// An application whose names are as odd as they may be.
std::string oddConfig(const Project& project) {
  std::string config = project.config(
      "display-version = \"1.0/β\"\nurl-schemes = [\"hello\"]\n"
      "executable = \"Say $HOME `hi` %u\"\n" +
      std::string(kRuntime) +
      "\n[[documents]]\nname = \"Letter <1>\"\nextensions = [\"letter\"]\n");
  return config.replace(config.find("\"Hello\""), 7, "\"L'été & |one\"");
}

TEST(BundleArchive, OfLinuxInstallsForOneUserAndGoesAgain) {
  const Project project;
  const CommandResult result =
      pack({"bundle", "--archive", project.writeConfig(oddConfig(project))});
  ASSERT_EQ(result.status, 0) << result.err;
  const std::string archive = project / "dist/L'été & |one-1.0_β-linux.tar.xz";
  EXPECT_THAT(result.out, HasSubstr(archive + '\n'));
  fs::create_directories(project / "home of me");
  fs::create_directories(project / "there");
  run({"tar", "-xJf", archive, "-C", project / "there"});
  const std::string there = project / "there/L'été & |one-1.0_β/";
  run({"shellcheck", there + "install.sh"});
  ChildOptions options;
  options.environment = {{"HOME", project / "home of me"}};
  options.unset = {"XDG_DATA_HOME"};
  EXPECT_THAT(run({there + "install.sh"}, options), HasSubstr("Installed L'été & |one for "));
  const std::string data = project / "home of me/.local/share/";
  const std::string program =
      data + "com.example.hello/L'été & |one.app/Contents/MacOS/Say $HOME `hi` %u";
  EXPECT_EQ(readFile(program), readFile(project / "launcher"));
  EXPECT_EQ(modeOf(program) & 0111u, 0111u);
  const std::string entry = readFile(data + "applications/com.example.hello.desktop");
  // Quoted as a word, and that again as a value.
  EXPECT_THAT(entry, AllOf(HasSubstr("\nName=L'été & |one\n"),
                           HasSubstr("\nExec=\"" + data +
                                     "com.example.hello/L'été & |one.app/Contents/MacOS/"
                                     "Say \\\\$HOME \\\\`hi\\\\` %%u\" %U\n"),
                           HasSubstr("\nMimeType=application/x-com.example.hello.letter;"
                                     "x-scheme-handler/hello;\n")));
  const std::string types = data + "mime/packages/com.example.hello.xml";
  EXPECT_THAT(readFile(types), AllOf(HasSubstr("<comment>Letter &lt;1&gt;</comment>"),
                                     HasSubstr("<glob pattern=\"*.letter\"/>")));
  // Once more, over itself.
  run({there + "install.sh"}, options);
  EXPECT_TRUE(fs::exists(program));
  run({there + "install.sh", "--uninstall"}, options);
  EXPECT_FALSE(fs::exists(types));
  // The desktop's own, where its tools are installed.
  fs::remove_all(data + "mime");
  for (const auto& left : fs::recursive_directory_iterator(project / "home of me")) {
    EXPECT_TRUE(left.is_directory()) << left.path();
  }
  EXPECT_EQ(runChild({there + "install.sh", "--other"}, options).exitStatus, 2);
}

TEST(BundleArchive, TakesTheFoldersThatTheUserHasNamed) {
  const Project project;
  const CommandResult result =
      pack({"bundle", "--archive", project.writeConfig(project.config(kRuntime))});
  ASSERT_EQ(result.status, 0) << result.err;
  run({"tar", "-xJf", project / "dist/Hello-3-linux.tar.xz", "-C", project.folder().str()});
  ChildOptions options;
  options.environment = {{"HOME", project / "home"}, {"XDG_DATA_HOME", project / "data"}};
  run({project / "Hello-3/install.sh"}, options);
  EXPECT_TRUE(fs::exists(project / "data/com.example.hello/Hello.app/Contents/Resources/Tail"));
  EXPECT_FALSE(fs::exists(project / "home"));
}

// A `mv`, `cp` and `rm` that kill the script that runs them: the one with the number of the
// variable AT, before or after it has done its work.
void writeKillingTools(const std::string& folder, const std::string& count) {
  for (const std::string name : {"mv", "cp", "rm"}) {
    const std::string tool = folder + '/' + name;
    writeFile(tool,
              "#!/bin/sh\necho >>'" + count + "'\nn=$(wc -l <'" + count +
                  "')\n[ \"$n\" = \"$AT\" ] && [ \"$WHEN\" = before ] && kill -9 $PPID && exit\n"
                  "/bin/" +
                  name +
                  " \"$@\"\nstatus=$?\n"
                  "[ \"$n\" = \"$AT\" ] && kill -9 $PPID\nexit $status\n");
    fs::permissions(tool, fs::perms::owner_all);
  }
}

TEST(BundleArchive, InstalledAnewLeavesOneThatStartsWhereverItIsKilled) {
  const TempDir dir;
  pack::ApplicationConfig app;
  app.name = "Hello";
  app.identifier = "com.example.hello";
  app.executable = "Hello";
  const std::string program = "Hello.app/Contents/MacOS/Hello";
  writeFile(dir / "install.sh", pack::installScript(app, 0));
  writeFile(dir / "com.example.hello.desktop", "Exec=@EXECUTABLE@\n");
  writeFile(dir / program, "new");
  writeKillingTools(dir / "tools", dir / "count");
  const std::string home = dir / "data/com.example.hello";
  ChildOptions options;
  options.environment = {{"XDG_DATA_HOME", dir / "data"}, {"PATH", dir / "tools:/usr/bin:/bin"}};
  int kills = 0;
  for (const char* when : {"before", "after"}) {
    options.environment["WHEN"] = when;
    for (int at = 1;; ++at) {
      SCOPED_TRACE(when + std::to_string(at));
      fs::remove_all(dir / "data");
      writeFile(home + '/' + program, "old");
      fs::remove(dir / "count");
      options.environment["AT"] = std::to_string(at);
      const bool isKilled = runChild({"sh", dir / "install.sh"}, options).exitStatus != 0;
      const bool isAside = !fs::exists(home + '/' + program);
      const std::string found =
          readFile(isAside ? home + "/Hello.app.old/Contents/MacOS/Hello" : home + '/' + program);
      EXPECT_TRUE(found == "old" || found == "new") << found;
      if (!isKilled) {
        EXPECT_EQ(found, "new");
        break;
      }
      ++kills;
      options.environment["AT"] = "";
      run({"sh", dir / "install.sh"}, options);
      EXPECT_EQ(readFile(home + '/' + program), "new");
      EXPECT_FALSE(fs::exists(home + "/Hello.app.old"));
      EXPECT_FALSE(fs::exists(home + "/Hello.app.new"));
    }
  }
  EXPECT_GE(kills, 10);
}

TEST(BundleArchive, HasTheSameBytesForTheSameInput) {
  const Project project;
  const std::string config = project.writeConfig(project.config(kRuntime));
  ASSERT_EQ(pack({"bundle", "--archive", config}).status, 0);
  const std::string first = readFile(project / "dist/Hello-3-linux.tar.xz");
  for (const auto& file : fs::recursive_directory_iterator(project / "dist")) {
    fs::last_write_time(file, fs::file_time_type::clock::now() - std::chrono::hours(30));
  }
  ASSERT_EQ(pack({"bundle", "--archive", config}).status, 0);
  EXPECT_EQ(readFile(project / "dist/Hello-3-linux.tar.xz"), first);
}

TEST(BundleArchive, IsNotMadeUnlessSomebodyAsks) {
  const Project project;
  bundleOf(project, project.config(kRuntime));
  EXPECT_FALSE(fs::exists(project / "dist/Hello-3-linux.tar.xz"));
}

}  // namespace
}  // namespace quillory::testing
