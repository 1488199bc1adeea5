#include "packager/cli/command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "packager/report/reporter.h"
#include "tests/harness/child_process.h"
#include "tests/packager/project_fixture.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

const std::vector<std::string> kCommands = {"init",    "keygen", "bundle", "inspect",   "verify",
                                            "extract", "set",    "doctor", "completion"};

TEST(CommandLine, ListsItsCommandsAndStatuses) {
  for (const char* option : {"--help", "-h"}) {
    const CommandResult result = pack({option});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_THAT(result.out, HasSubstr("exit status: 0 done"));
    for (const std::string& command : kCommands) {
      EXPECT_THAT(result.out, HasSubstr("\n  " + command + ' '));
    }
  }
}

TEST(CommandLine, ExplainsEachCommandWithAnExample) {
  for (const std::string& command : kCommands) {
    const CommandResult result = pack({command, "--help"});
    EXPECT_EQ(result.status, 0) << command;
    EXPECT_THAT(result.out, AllOf(HasSubstr("Usage: quillory-pack " + command), HasSubstr("--json"),
                                  HasSubstr("example:\n  ")))
        << command;
  }
}

TEST(CommandLine, HasAVersion) {
  EXPECT_EQ(pack({"--version"}).status, 0);
  EXPECT_THAT(pack({"--version"}).out, StartsWith("quillory-pack "));
}

TEST(CommandLine, ShowsTheHelpWhenNothingIsAsked) {
  const CommandResult result = pack({});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, HasSubstr("Subcommands:"));
}

TEST(CommandLine, SuggestsTheNearestCommand) {
  const CommandResult result = pack({"bundel"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err, "error: there is no command \"bundel\"\n  -> did you mean \"bundle\"?\n");
  EXPECT_THAT(pack({"xyzzy"}).err, HasSubstr("--help lists the commands"));
}

TEST(CommandLine, RefusesWhatMakesNoSense) {
  const std::vector<std::string> cases[] = {{"bundle", "--wrong"},
                                            {"bundle", "--compression", "10"},
                                            {"bundle", "--compression", "x"},
                                            {"bundle", "a", "b"},
                                            {"bundle", "--target", "windows"},
                                            {"bundle", "--target", ""},
                                            {"bundle", "--target"},
                                            {"keygen", "--bits", "1024"},
                                            {"inspect"},
                                            {"extract", "only-one"},
                                            {"verify"},
                                            {"doctor"},
                                            {"completion", "tcsh"},
                                            {"--wrong"},
                                            {"set"}};
  for (const auto& arguments : cases) {
    const CommandResult result = pack(arguments);
    EXPECT_EQ(result.status, 2) << ::testing::PrintToString(arguments);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, AllOf(StartsWith("error: "), HasSubstr("--help explains")));
  }
}

TEST(CommandLine, ExplainsTheSystemsOfABundleAndSuggestsTheNearest) {
  EXPECT_THAT(pack({"bundle", "--help"}).out,
              AllOf(HasSubstr("--target TEXT"), HasSubstr("instead of this one: linux, macos\n"),
                    HasSubstr("example:\n  quillory-pack bundle --target macos ")));
  EXPECT_EQ(pack({"bundle", "--target", "macosx"}).err,
            "error: --target: \"macosx\" is none of linux, macos; did you mean \"macos\"?\n"
            "  -> quillory-pack bundle --help explains\n");
  EXPECT_EQ(pack({"bundle", "--target", "darwin"}).err,
            "error: --target: \"darwin\" is none of linux, macos\n"
            "  -> quillory-pack bundle --help explains\n");
}

TEST(CommandLine, ReportsAllThatIsWrongWithAConfigurationAtOnce) {
  Project project;
  const CommandResult result =
      pack({"bundle", project.writeConfig("[application]\nname = \"a-b\"\nversoin = 1\n")});
  EXPECT_EQ(result.status, 3);
  EXPECT_THAT(
      result.err,
      AllOf(HasSubstr("quillory.toml:3: error: there is no application.versoin"),
            HasSubstr("application.version is missing"), HasSubstr("application.jars is missing")));
}

TEST(CommandLine, GivesScriptsOneDocumentWithAllFindings) {
  Project project;
  const CommandResult bad =
      pack({"bundle", "--json", project.writeConfig("[application]\nversion = 1.5\n")});
  EXPECT_EQ(bad.err, "");
  const auto document = nlohmann::json::parse(bad.out);
  EXPECT_EQ(document["command"], "bundle");
  EXPECT_EQ(document["status"], 3);
  EXPECT_EQ(document["findings"].back()["rule"], "version");
  EXPECT_EQ(document["findings"].back()["line"], 2);
  const CommandResult good = pack({"bundle", "--json", project.writeConfig(project.config())});
  EXPECT_EQ(good.err, "");
  EXPECT_EQ(nlohmann::json::parse(good.out)["bundle"], project / "dist/Hello.app");
}

TEST(CommandLine, GivesScriptsADocumentForAWrongUseToo) {
  const CommandResult option = pack({"bundle", "--json", "--wrong"});
  EXPECT_EQ(option.status, 2);
  EXPECT_EQ(option.err, "");
  const auto document = nlohmann::json::parse(option.out);
  EXPECT_EQ(document["command"], "bundle");
  EXPECT_EQ(document["status"], 2);
  EXPECT_THAT(document["findings"][0]["what"].get<std::string>(), HasSubstr("--wrong"));
  EXPECT_EQ(document["findings"][0]["advice"], "quillory-pack bundle --help explains");
  const auto command = nlohmann::json::parse(pack({"bundel", "--json"}).out);
  EXPECT_EQ(command["command"], "");
  EXPECT_EQ(command["findings"][0]["advice"], "did you mean \"bundle\"?");
}

TEST(CommandLine, SaysLessOrMoreWhenAsked) {
  Project project;
  const std::string config = project.writeConfig(project.config("[runtime]\nfolder = \"jre\"\n"));
  EXPECT_EQ(pack({"bundle", "--quiet", config}).err, "");
  const std::string normal = pack({"bundle", config}).err;
  EXPECT_THAT(normal, HasSubstr("packing "));
  EXPECT_THAT(pack({"bundle", "--verbose", config}).err, HasSubstr("version 170000900"));
  EXPECT_EQ(normal.find("version 170000900"), std::string::npos);
}

TEST(Init, WritesAConfigurationThatPacks) {
  Project project;
  fs::create_directories(project / "target");
  fs::rename(project / "hello.jar", project / "target/hello-world-1.2.jar");
  fs::copy_file(QUILLORY_UPDATER_JAR, project / "target/some-sources.jar");
  const std::string path = project / "quillory.toml";
  const CommandResult init = pack({"init", path});
  EXPECT_EQ(init.status, 0) << init.err;
  EXPECT_EQ(init.out, path + '\n');
  std::string text = readFile(path);
  EXPECT_THAT(text, AllOf(HasSubstr("name = \"Hello World\" "),
                          HasSubstr("main-class = \"com.example.hello.Hello\"\n"),
                          HasSubstr("jars = [\"target/hello-world-1.2.jar\"]\n")));
  // With the tools and the runtime of this test, and nothing else changed.
  text.replace(text.find("jlink = true"), 12, "folder = \"jre\"");
  text.replace(text.find("signing.pem"), 11, Project::key());
  writeFile(path,
            text + "[bundle]\nlauncher = \"launcher\"\nlzma64 = \"lzma64\"\n[updater]\njar = \"" +
                QUILLORY_UPDATER_JAR + "\"\n");
  const CommandResult bundle = pack({"bundle", path});
  EXPECT_EQ(bundle.status, 0) << bundle.err;
  EXPECT_EQ(bundle.out, project / "dist/Hello World.app\n");
}

TEST(Init, EveryKeyInItsCommentsIsOneThatExists) {
  Project project;
  ASSERT_EQ(pack({"init", project / "quillory.toml"}).status, 0);
  std::istringstream lines(readFile(project / "quillory.toml"));
  std::string text;
  int line = 0;
  for (std::string each; std::getline(lines, each); ++line) {
    const bool isExample = line > 3 && each.rfind("# ", 0) == 0;
    text += (isExample ? each.substr(2) : each) + '\n';
  }
  // One of the examples is for instead of another line.
  text.erase(text.find("folder = \"/path"),
             text.find('\n', text.find("folder = \"/path")) - text.find("folder = \"/path"));
  const CommandResult result = pack({"bundle", project.writeConfig(text)});
  EXPECT_EQ(result.err.find("[unknown-key]"), std::string::npos) << result.err;
  EXPECT_EQ(result.err.find("[wrong-kind]"), std::string::npos) << result.err;
  EXPECT_EQ(result.err.find("[toml]"), std::string::npos) << result.err;
}

TEST(Init, NeverReplacesAConfigurationAndWantsJars) {
  Project project;
  project.writeConfig("mine");
  EXPECT_EQ(pack({"init", project / "quillory.toml"}).status, 1);
  EXPECT_EQ(readFile(project / "quillory.toml"), "mine");
  const TempDir empty;
  const CommandResult result = pack({"init", empty / "quillory.toml"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("there is no jar here"));
  EXPECT_TRUE(fs::is_empty(empty.path()));
}

// What "bundle" makes of the file that "init" writes, with the tools and the runtime of the tests.
CommandResult packWhatInitWrites(const Project& project) {
  const std::string path = project / "quillory.toml";
  const CommandResult init = pack({"init", path});
  EXPECT_EQ(init.status, 0) << init.err;
  std::string text = readFile(path);
  text.replace(text.find("jlink = true"), 12, "folder = \"jre\"");
  text.replace(text.find("signing.pem"), 11, Project::key());
  writeFile(path,
            text + "[bundle]\nlauncher = \"launcher\"\nlzma64 = \"lzma64\"\n[updater]\njar = \"" +
                QUILLORY_UPDATER_JAR + "\"\n");
  return pack({"bundle", path});
}

TEST(Init, WritesWhatCanBePackedWhateverTheJarIsCalled) {
  const std::pair<std::string, std::string> cases[] = {
      {"a\nb\x1b\x7f.jar", "A B"},
      {"quillory.jar", "Quillory App"},
      {"jre-8.jar", "Jre App"},
      {"java.jar", "Java App"},
      {"a \"quoted\" \\name.jar", "A \"quoted\" \\name"},
      {std::string(249, 'n') + ".jar", 'N' + std::string(99, 'n')},
      {"....jar", "My Application"}};
  for (const auto& [jar, name] : cases) {
    Project project;
    fs::rename(project / "hello.jar", project / jar);
    const CommandResult bundle = packWhatInitWrites(project);
    EXPECT_EQ(bundle.status, 0) << jar << bundle.err;
    EXPECT_EQ(bundle.out, project / ("dist/" + name + ".app\n"));
  }
}

TEST(Init, TakesAJarThatWasCopiedOnce) {
  Project project;
  for (const char* folder : {"target", "dist"}) {
    fs::create_directory(project / folder);
    fs::copy_file(project / "hello.jar", project / folder + std::string("/app.jar"));
  }
  fs::copy_file(project / "hello.jar", project / "a:b.jar");
  const CommandResult bundle = packWhatInitWrites(project);
  EXPECT_EQ(bundle.status, 0) << bundle.err;
  EXPECT_THAT(readFile(project / "quillory.toml"),
              HasSubstr("jars = [\"hello.jar\", \"target/app.jar\"]\n"));
}

TEST(Init, PassesOverFilesThatOnlyLookLikeJars) {
  Project project;
  writeFile(project / "aaa.jar", "text");
  ASSERT_EQ(pack({"init", project / "quillory.toml"}).status, 0);
  EXPECT_THAT(readFile(project / "quillory.toml"), HasSubstr("jars = [\"hello.jar\"]"));
}

TEST(Completion, IsAScriptThatBashTakesAndThatCompletes) {
  const TempDir dir;
  const CommandResult script = pack({"completion", "bash"});
  EXPECT_EQ(script.status, 0);
  writeFile(dir / "script",
            script.out +
                "COMP_WORDS=(quillory-pack b) COMP_CWORD=1; _quillory_pack\n"
                "echo \"${COMPREPLY[@]}\"\n"
                "COMP_WORDS=(quillory-pack keygen --b) COMP_CWORD=2; _quillory_pack\n"
                "echo \"${COMPREPLY[@]}\"\n"
                "COMP_WORDS=(quillory-pack bundle --t) COMP_CWORD=2; _quillory_pack\n"
                "echo \"${COMPREPLY[@]}\"\n"
                "COMP_WORDS=(quillory-pack bundle --target '') COMP_CWORD=3; _quillory_pack\n"
                "echo \"${COMPREPLY[@]}\"\n"
                "COMP_WORDS=(quillory-pack inspect --as tai) COMP_CWORD=3; _quillory_pack\n"
                "echo \"${COMPREPLY[@]}\"\n");
  const ChildResult result = runChild({"bash", "--norc", dir / "script"});
  EXPECT_EQ(result.out, "bundle\n--bits\n--target\nlinux macos\ntail\n") << result.err;
}

TEST(Completion, KnowsEveryCommandInEveryShell) {
  for (const char* shell : {"bash", "zsh", "fish"}) {
    const std::string script = pack({"completion", shell}).out;
    for (const std::string& command : kCommands) {
      EXPECT_THAT(script, HasSubstr(command)) << shell;
    }
    EXPECT_THAT(script, HasSubstr("compression")) << shell;
    EXPECT_THAT(script, HasSubstr("linux macos")) << shell;
  }
}

TEST(Reporter, DrawsABarOnTerminalsOnly) {
  quillory::pack::Progress progress;
  progress.total = 2'000'000;
  progress.done = 500'000;
  std::ostringstream out, err;
  quillory::pack::Reporter terminal(out, err, {quillory::pack::Verbosity::kNormal, false, true});
  terminal.progress("packing", progress);
  EXPECT_EQ(err.str(), "\rpacking [#######.......................] 25% of 2.0 MB");
  terminal.line("next");
  EXPECT_THAT(err.str(), HasSubstr("\r\033[Knext\n"));
  std::ostringstream plain;
  quillory::pack::Reporter file(out, plain, {});
  file.progress("packing", progress);
  file.endProgress();
  EXPECT_EQ(plain.str(), "");
}

TEST(ReadableSize, HasAUnitThatPeopleRead) {
  using quillory::pack::readableSize;
  EXPECT_EQ(readableSize(0), "0 bytes");
  EXPECT_EQ(readableSize(999), "999 bytes");
  EXPECT_EQ(readableSize(1000), "1.0 kB");
  EXPECT_EQ(readableSize(999'949), "999.9 kB");
  EXPECT_EQ(readableSize(999'950), "1.0 MB");
  EXPECT_EQ(readableSize(12'345'678'901), "12.3 GB");
}

TEST(Program, EndsBySignalAndCleansUpWhenItIsInterrupted) {
  Project project;
  // Enough to compress for a while.
  std::string noise;
  unsigned state = 1;
  while (noise.size() < 30'000'000) {
    state = state * 1664525 + 1013904223;
    noise.append(reinterpret_cast<const char*>(&state), sizeof state);
  }
  writeFile(project / "data", noise);
  project.writeConfig(project.config("files = [\"data\"]\n"));
  BackgroundChild child({QUILLORY_PACK, "bundle", project / "quillory.toml"});
  ASSERT_TRUE(child.waitForOutput("packing "));
  child.sendSignal(SIGINT);
  EXPECT_EQ(child.finish().signal, SIGINT);
  EXPECT_TRUE(fs::is_empty(project / "dist"));
}

TEST(Program, FailsWhenItsOutputCannotBeWritten) {
  if (!fs::exists("/dev/full")) {
    GTEST_SKIP() << "no device that is always full";
  }
  Project project;
  const std::string bundle = bundleOf(project, project.config("[runtime]\nfolder = \"jre\"\n"));
  for (const std::string& command :
       {std::string("--help"), std::string("completion bash"), "inspect '" + bundle + "'",
        "verify '" + bundle + "'", "verify --json '" + bundle + "'", "doctor '" + bundle + "'",
        "bundle '" + project / "quillory.toml" + "'"}) {
    const ChildResult result =
        runChild({"sh", "-c", "'" QUILLORY_PACK "' " + command + " >/dev/full"});
    EXPECT_EQ(result.exitStatus, 1) << command;
    EXPECT_THAT(result.err, HasSubstr("error: standard output cannot be written\n")) << command;
  }
}

TEST(Program, SaysThatItWasInterruptedAndNotThatItsToolFailed) {
  Project project;
  writeFile(project / "jdk/bin/jdeps", "#!/bin/sh\nkill -INT $PPID\nexit 130\n");
  fs::permissions(project / "jdk/bin/jdeps", fs::perms(0755));
  writeFile(project / "jdk/bin/jlink", "#!/bin/sh\nexit 1\n");
  fs::permissions(project / "jdk/bin/jlink", fs::perms(0755));
  project.writeConfig(project.config("[runtime]\njlink = true\njdk = \"jdk\"\n"));
  const ChildResult result =
      runChild({QUILLORY_PACK, "bundle", "--target", "linux", project / "quillory.toml"});
  EXPECT_EQ(result.signal, SIGINT);
  EXPECT_THAT(result.err, HasSubstr("error: interrupted\n"));
  EXPECT_EQ(result.err.find("130"), std::string::npos) << result.err;
  EXPECT_TRUE(fs::is_empty(project / "dist"));
}

TEST(Program, FillsStandardStreamsThatAreClosed) {
  // The name of a stream can be opened only where there is one. Without it the next file to be
  // opened would get its number, and what is printed would go into that file.
  const std::pair<const char*, const char*> cases[] = {
      {"/dev/stdin", "<&-"}, {"/dev/stdout", ">&-"}, {"/dev/stderr", "2>&-"}};
  for (const auto& [stream, closing] : cases) {
    SCOPED_TRACE(stream);
    const ChildResult result = runChild(
        {"sh", "-c", std::string("exec \"$0\" inspect --as version-file \"$1\" ") + closing,
         QUILLORY_PACK, stream});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
  }
}

TEST(Program, FindsWhatItPacksBesideItself) {
  Project project;
  std::string config = project.config();
  config.erase(0, config.find("[signing]"));
  project.writeConfig(config);
  const ChildResult result = runChild({QUILLORY_PACK, "bundle", project / "quillory.toml"});
  // Without a launcher beside it, it says which file is missing.
  const bool hasLauncher = fs::exists(fs::path(QUILLORY_PACK).parent_path() / "launcher");
  EXPECT_EQ(result.exitStatus, hasLauncher ? 0 : 1) << result.err;
  EXPECT_EQ(result.out, hasLauncher ? project / "dist/Hello.app\n" : "");
}

}  // namespace
}  // namespace quillory::testing
