// Entries that are packed by pack200 are unpacked by the tool of the runtime.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/e2e/online_machine.h"
#include "tests/harness/records.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

const std::string kJava = QUILLORY_TEST_RUNTIME "/bin/java";
const std::string kJarPath = "lib/report.jar";

/// A jar, packed.
const std::string& packedJar() {
  static const std::string packed = [] {
    const TempDir folder;
    const ChildResult result = runChild({kJava, "-cp", QUILLORY_PACK200_JAR, "Pack200", "pack",
                                         QUILLORY_REPORT_JAR, folder / "packed"});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    return readFile(folder / "packed");
  }();
  return packed;
}

std::string packedEntry(const std::string& path, const std::string& content = packedJar()) {
  return records({"2", path, std::to_string(content.size())}) + content;
}

std::string unpack200Script() {
  return "#!/bin/sh\nexec \"" + kJava +
         "\" -cp \"" QUILLORY_PACK200_JAR "\" Pack200 unpack \"$@\"\n";
}

std::string runtimeWithTool() {
  return fileEntry("Contents/Home/bin/unpack200", unpack200Script()) + scriptRuntimeContent();
}

/// What the application of a jar says when it is run.
std::string outputOf(const std::string& jar) { return runChild({kJava, "-cp", jar, "Report"}).out; }

class Pack200 : public ::testing::Test {
 protected:
  Tail tail(const std::string& runtime, const std::string& application) {
    Tail tail = quickTail();
    tail.entries = updaterEntries() + fileEntry("JRE.p2.l2", packedArchive(runtime, &testKey())) +
                   applicationEntries(application);
    return tail;
  }

  void expectUnpacked(const std::string& jar) {
    EXPECT_FALSE(fs::exists(jar + ".p2"));
    EXPECT_THAT(outputOf(jar), HasSubstr("REPORT BEGIN\n"));
  }

  OnlineMachine machine_;
  const std::string application_ = machine_.master() + "/Quillory-Demo-3-complete/";
};

TEST_F(Pack200, EntriesOfAnApplicationAreUnpackedByTheToolOfItsRuntime) {
  const ChildResult result = machine_.start(tail(runtimeWithTool(), packedEntry(kJarPath)));
  EXPECT_EQ(result.exitStatus, 0) << result.out;
  EXPECT_EQ(countLine(result, "[ExtractArchiveFile] Extracting lib/report.jar (::2)"), 1);
  expectUnpacked(application_ + kJarPath);
  EXPECT_THAT(startedArguments(machine_.user()), Contains("argument"));
}

TEST_F(Pack200, EntriesOfARuntimeAreUnpackedByTheToolThatCameBeforeThem) {
  HttpServer server;
  const std::string content = runtimeWithTool() + packedEntry("Contents/Home/lib/charsets.jar");
  publishRuntime(server, "8", packedArchive(content, &testKey()));
  machine_.expectGoodStart(onlineTail(server.url()));
  expectUnpacked(machine_.master() + "/Quillory-JRE-8-complete/lib/charsets.jar");
}

TEST_F(Pack200, EntriesAreUnpackedByTheToolOfACopiedSystemJava) {
  const std::string home = machine_.makeScriptJre("jre");
  writeFile(home + "/bin/unpack200", unpack200Script());
  machine_.linkJavaTo(home + "/bin/java");
  Tail online = onlineTail("");
  online.entries = updaterEntries() + applicationEntries(packedEntry(kJarPath));
  const ChildResult result = machine_.start(online);
  EXPECT_EQ(result.exitStatus, 0) << result.out;
  expectUnpacked(application_ + kJarPath);
}

TEST_F(Pack200, EntriesWithoutAToolEndTheStart) {
  const Tail damaged = tail(scriptRuntimeContent(), packedEntry(kJarPath));
  const ChildResult result = machine_.start(damaged);
  EXPECT_EQ(result.exitStatus, 101);
  EXPECT_THAT(result.out, HasSubstr("\t[ExtractArchiveFile] ERROR: unpack200 ("));
  EXPECT_THAT(namesIn(machine_.master()), Not(Contains("Quillory-Demo-3-complete")));

  machine_.expectGoodStart(tail(runtimeWithTool(), packedEntry(kJarPath)));
  expectUnpacked(application_ + kJarPath);
}

TEST_F(Pack200, EntriesThatTheToolRefusesEndTheStart) {
  const std::string cut = packedJar().substr(0, packedJar().size() - 1);
  const ChildResult result = machine_.start(tail(runtimeWithTool(), packedEntry(kJarPath, cut)));
  EXPECT_EQ(result.exitStatus, 101);
  EXPECT_THAT(namesIn(machine_.master()), Not(Contains("Quillory-Demo-3-complete")));
}

}  // namespace
}  // namespace quillory::testing
