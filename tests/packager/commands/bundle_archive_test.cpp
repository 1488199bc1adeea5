#include "packager/commands/bundle_archive.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/harness/child_process.h"
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
