// Updates by a delta, and those that turn out to need the whole archive.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/update/machine.h"

namespace quillory::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using update::Command;

// Bytes that no compression makes fewer.
std::string noise(unsigned seed, std::size_t size) {
  std::string bytes;
  for (unsigned i = seed; bytes.size() < size; i = i * 1103515245 + 12345)
    bytes += static_cast<char>(i >> 16);
  return bytes;
}

class DeltaInstall : public ::testing::Test {
 protected:
  static Content content(const std::string& version) {
    return {{"app.jar", noise(1, 40000) + version + noise(2, 20000)},
            {"lib/", ""},
            {"lib/same.jar", noise(3, 30000)}};
  }
  ReleaseComponent app(const std::string& version) {
    return releases_.add(kApplicationRole, "Demo", version, content(version));
  }
  // Version 1 came with the bundle; version 2 leads from it.
  void release() {
    ReleaseComponent two = app("2");
    releases_.addDelta(two, app("1"));
    releases_.publish(ReleaseFolder::list(2, {two}));
  }
  static void installOne(const Machine& machine) {
    machine.installApplication("1", {{"app.jar", content("1")["app.jar"]},
                                     {"lib/same.jar", content("1")["lib/same.jar"]}});
  }
  static void expectTwo(const Machine& machine) {
    EXPECT_EQ(machine.fileOf("2", "app.jar"), content("2")["app.jar"]);
    EXPECT_EQ(machine.fileOf("2", "lib/same.jar"), content("2")["lib/same.jar"]);
  }

  ReleaseFolder releases_;
};

TEST_F(DeltaInstall, LoadsWhatHasChanged) {
  release();
  Machine machine(releases_, "");
  installOne(machine);
  const RunResult result = machine.run(Command::kInstall);
  EXPECT_EQ(result.line("done"), "done version=2 release=2");
  expectTwo(machine);
  EXPECT_EQ(machine.transport.countAsked("archive"), 0);
  EXPECT_LT(machine.transport.sent(), 6000);
  EXPECT_THAT(result.lines, Contains("step what=restore component=application"));
  EXPECT_THAT(result.line("progress"), HasSubstr(" rate="));
}

TEST_F(DeltaInstall, GoesOnFromWhatADeltaHasMade) {
  ReleaseComponent one = app("1");
  ReleaseComponent two = app("2");
  releases_.addDelta(two, one);
  releases_.publish(ReleaseFolder::list(2, {two}));
  Machine machine(releases_, "");
  installOne(machine);
  machine.run(Command::kInstall);
  ReleaseComponent three = app("3");
  releases_.addDelta(three, two);
  releases_.addDelta(three, one);
  releases_.publish(ReleaseFolder::list(3, {three}));
  machine.transport.asked.clear();
  EXPECT_EQ(machine.run(Command::kInstall).line("done"), "done version=3 release=3");
  EXPECT_EQ(machine.fileOf("3", "app.jar"), content("3")["app.jar"]);
  EXPECT_EQ(machine.transport.countAsked("archive"), 0);
}

TEST_F(DeltaInstall, TakesTheWholeArchiveWhereTheBaseWasChangedByHand) {
  release();
  Machine machine(releases_, "");
  installOne(machine);
  writeFile(machine / "Quillory-Demo-1-complete/lib/same.jar", "patched");
  const RunResult result = machine.run(Command::kInstall);
  EXPECT_EQ(result.line("done"), "done version=2 release=2");
  expectTwo(machine);
  EXPECT_EQ(machine.transport.countAsked("archive"), 1);
}

TEST_F(DeltaInstall, TakesTheWholeArchiveWhereTheBaseIsAnotherOne) {
  release();
  Machine machine(releases_, "");
  installOne(machine);
  // Of this number, but of another archive.
  writeFile(machine / "Quillory-Demo-1-complete/QuilloryArchive", std::string(64, 'a') + '\n');
  machine.run(Command::kInstall);
  expectTwo(machine);
  EXPECT_EQ(machine.transport.countAsked("delta"), 0);
}

TEST_F(DeltaInstall, TakesTheWholeArchiveWhereTheDeltaIsOfAnotherBase) {
  ReleaseComponent two = app("2");
  releases_.addDelta(two, app("1"));
  // The list is signed, and says of a delta what is not so.
  two.deltas[0].baseVersion = "9";
  releases_.publish(ReleaseFolder::list(2, {two}));
  Machine machine(releases_, "");
  machine.installApplication("9", {{"app.jar", "x"}});
  ReleaseComponent ten = releases_.add(kApplicationRole, "Demo", "10", content("10"));
  ten.deltas = two.deltas;
  releases_.publish(ReleaseFolder::list(3, {ten}));
  const RunResult result = machine.run(Command::kInstall);
  EXPECT_EQ(result.line("done"), "done version=10 release=3");
  EXPECT_EQ(machine.fileOf("10", "app.jar"), content("10")["app.jar"]);
  EXPECT_EQ(machine.transport.countAsked("delta"), 1);
}

TEST_F(DeltaInstall, TakesTheWholeArchiveWhereTheServerHasAnotherDelta) {
  release();
  Machine machine(releases_, "");
  installOne(machine);
  machine.transport.mishap = [](const AskedFor& about) {
    return about.name.find("delta") == std::string::npos ? Mishap()
                                                         : Mishap{.body = "?", .hasBody = true};
  };
  const RunResult result = machine.run(Command::kInstall);
  EXPECT_EQ(result.line("done"), "done version=2 release=2");
  expectTwo(machine);
}

TEST_F(DeltaInstall, TellsThatMoreIsToBeLoadedThanWasThought) {
  release();
  Machine machine(releases_, "");
  installOne(machine);
  writeFile(machine / "Quillory-Demo-1-complete/lib/same.jar", "patched");
  const RunResult result = machine.run(Command::kInstall);
  const std::string last = result.line("progress");
  const std::string done = last.substr(last.find("done=") + 5, last.find(" total") - 14);
  EXPECT_THAT(last, HasSubstr(" total=" + done));
}

TEST_F(DeltaInstall, RestoresARuntimeWhoseFilesLieInTwoFolders) {
  const auto runtime = [](const std::string& version) {
    return Content{{"Contents/", ""},
                   {"Contents/Info.plist", noise(4, 3000)},
                   {"Contents/Home/", ""},
                   {"Contents/Home/bin/", ""},
                   {"Contents/Home/bin/java", "#!/bin/sh\n"},
                   {"Contents/Home/lib/", ""},
                   {"Contents/Home/lib/rt.jar", noise(5, 30000) + version},
                   {"Contents/Home/lib/modules", noise(6, 30000)}};
  };
  const ReleaseComponent old = releases_.add(kRuntimeRole, "JRE", "16", runtime("16"));
  releases_.publish(ReleaseFolder::list(2, {old, app("1")}));
  Machine machine(releases_, "");
  ASSERT_EQ(machine.run(Command::kInstall).status, update::kExitDone);
  ReleaseComponent newer = releases_.add(kRuntimeRole, "JRE", "17", runtime("17"));
  releases_.addDelta(newer, old);
  releases_.publish(ReleaseFolder::list(3, {newer, app("1")}));
  machine.transport.asked.clear();
  EXPECT_EQ(machine.run(Command::kInstall).status, update::kExitDone);
  EXPECT_EQ(readFile(machine / "Quillory-JRE-17-complete/lib/rt.jar"), noise(5, 30000) + "17");
  EXPECT_EQ(machine.transport.countAsked("archive"), 0);
}

}  // namespace
}  // namespace quillory::testing
