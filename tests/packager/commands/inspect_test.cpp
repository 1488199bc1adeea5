#include "packager/commands/inspect.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/harness/page_example.h"
#include "tests/harness/records.h"
#include "tests/packager/finished_bundle.h"

namespace quillory::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

using Inspect = FinishedBundle;

TEST_F(Inspect, ShowsABundleWithItsParametersTailAndArchives) {
  const CommandResult result = pack({"inspect", bundle_});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(
      result.out,
      AllOf(HasSubstr("kind: bundle\n"), HasSubstr("target: linux\nCFBundleIdentifier"),
            HasSubstr("CFBundleIdentifier: com.example.hello\n"), HasSubstr("    jre_name = JRE\n"),
            HasSubstr("    App Name: Hello\n"), HasSubstr("    JRE Version: 170000900\n"),
            HasSubstr("      bits: 2048\n"), HasSubstr("  installs: for the current user\n"),
            HasSubstr("    file     GU.p2.l2  "), HasSubstr("        signed: yes\n"),
            HasSubstr("          file     Contents/Home/bin/java  9\n")));
}

TEST_F(Inspect, ShowsEveryKindOfFile) {
  const TempDir dir;
  writeFile(dir / "QuilloryLaunch", pageExample("formats/launch-file.md"));
  writeFile(dir / "QYLaunchProperties-1-2", pageExample("formats/launch-properties.md"));
  writeFile(dir / "JRE-LastSuccessfulOptions-x", pageExample("formats/remembered-options.md"));
  writeFile(dir / "Quillory-JRE-version.txt", pageExample("formats/version-file.md"));
  writeFile(dir / "a.p2", pageExample("formats/archive.md", 2));
  const std::pair<std::string, std::vector<std::string>> cases[] = {
      {dir / "QuilloryLaunch",
       {"kind: launch-file", "version: 6", "main class: com.example.hello.Hello",
        "largest heap MiB: 256", "class path:\n  hello.jar\n  lib/a.jar", "must fork: no"}},
      {dir / "QYLaunchProperties-1-2",
       {"kind: launch-properties", "static app_name = Demo", "static silent_parameter = \n",
        "dynamic url_req = demo://x"}},
      {dir / "JRE-LastSuccessfulOptions-x",
       {"kind: remembered-options", "-Xss4m", "-Dsun.java2d.opengl=false"}},
      {dir / "Quillory-JRE-version.txt", {"kind: version-file", "version: 1.8.0_202"}},
      {dir / "a.p2", {"kind: archive", "signed: yes", "signed bytes: 29", "lib/hello.txt  5"}},
      {release("Hello-3"), {"kind: compressed-archive", "QuilloryLaunch", "lib/hello.jar"}},
      {tail(), {"kind: tail", "App Version: 3", "verpatch.exe  0"}},
      {params(),
       {"kind: parameters", "count: 3", "jre_name = JRE", "hardened = true",
        "error_dialog = true"}},
      {Project::key(), {"kind: key", "bits: 2048", "the private key, which signs"}}};
  for (const auto& [path, parts] : cases) {
    const CommandResult result = pack({"inspect", path});
    EXPECT_EQ(result.status, 0) << path << result.err;
    for (const std::string& part : parts) {
      EXPECT_THAT(result.out + '\n', HasSubstr(part)) << path;
    }
  }
}

TEST_F(Inspect, KnowsFilesByTheirContentToo) {
  const TempDir dir;
  const std::pair<std::string, std::string> cases[] = {
      {pageExample("formats/archive.md", 1), "archive"},
      {readFile(release("Hello-3")), "compressed-archive"},
      {pageExample("formats/launch-properties.md"), "launch-properties"},
      {readFile(params()), "parameters"},
      {readFile(Project::key()), "key"}};
  for (const auto& [content, kind] : cases) {
    writeFile(dir / "file", content);
    EXPECT_THAT(pack({"inspect", dir / "file"}).out, HasSubstr("kind: " + kind + '\n'));
  }
  writeFile(dir / "file", "something else");
  const CommandResult unknown = pack({"inspect", dir / "file"});
  EXPECT_EQ(unknown.status, 1);
  EXPECT_THAT(unknown.err, HasSubstr("is none of the files that quillory-pack knows"));
  EXPECT_EQ(pack({"inspect", dir / "missing"}).status, 1);
}

TEST_F(Inspect, TakesTheWordOfWhoeverKnowsBetter) {
  const TempDir dir;
  writeFile(dir / "x", pageExample("formats/launch-file.md"));
  EXPECT_THAT(pack({"inspect", "--as", "launch-file", dir / "x"}).out,
              HasSubstr("main class: com.example.hello.Hello"));
  EXPECT_EQ(pack({"inspect", "--as", "nonsense", dir / "x"}).status, 2);
}

TEST_F(Inspect, GivesScriptsADocument) {
  const auto document = nlohmann::json::parse(pack({"inspect", "--json", bundle_}).out);
  EXPECT_EQ(document["command"], "inspect");
  EXPECT_EQ(document["status"], 0);
  EXPECT_EQ(document["content"]["tail"]["records"]["App Name"], "Hello");
  EXPECT_EQ(document["content"]["tail"]["entries"][0]["path"], "lzma64");
  EXPECT_TRUE(document["findings"].empty());
}

TEST_F(Inspect, ShowsWhatCannotBePrintedAndShortensWhatIsLong) {
  const TempDir dir;
  writeFile(dir / "QYLaunchProperties-1-2",
            records({"qystat_a", "line\nend\x01", "qydyna_b"}) + std::string(500, 'x'));
  const CommandResult result = pack({"inspect", dir / "QYLaunchProperties-1-2"});
  EXPECT_THAT(result.out, HasSubstr("static a = line\\nend\\x01\n"));
  EXPECT_THAT(result.out, HasSubstr("dynamic b = " + std::string(120, 'x') + "... (500 bytes)"));
}

TEST_F(Inspect, ReportsWhatIsWrongWithAFile) {
  const std::string bytes = readFile(tail());
  writeFile(tail(), bytes.substr(0, bytes.size() - 100));
  const CommandResult result = pack({"inspect", tail()});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("[cut-short]"));
}

}  // namespace
}  // namespace quillory::testing
