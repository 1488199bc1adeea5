#include "packager/commands/output_place.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "formats/markers.h"
#include "packager/report/findings.h"
#include "support/durable.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using testing::readFile;
using testing::TempDir;
using testing::writeFile;

constexpr char kArchive[] = "Quillory-Hello-3-archive.p2.l2";
constexpr char kVersionFile[] = "Quillory-Hello-version.txt";

// A bundle and two release files that were made, and the place for them.
class PutInPlace : public ::testing::Test {
 protected:
  PutInPlace() {
    writeFile(dir_ / "work/Hello.app/Contents/new", "new");
    writeFile(dir_ / "work/release/" + kArchive, "archive");
    writeFile(dir_ / "work/release/" + kVersionFile, "3\n");
    fs::create_directories(dir_ / "dist");
  }

  void makeEarlierRun() {
    writeFile(dir_ / "dist/Hello.app/Contents/old", "old");
    writeFile(dir_ / "dist/Hello.app/Contents/Resources/Tail", "Hello");
    writeFile(dir_ / "dist/Hello.app/Contents/Resources/AppParams.excludefromsigning",
              paramsMarker() + std::string("0\0", 2));
    writeFile(dir_ / "dist/release/" + kVersionFile, "2\n");
  }
  // A folder cannot be replaced by a file.
  void block(const std::string& path) { fs::create_directories(dir_ / path); }

  std::string errorOf() {
    try {
      putInPlace(made_, place_);
    } catch (const PackError& e) {
      return asText(e.finding());
    }
    return "";
  }
  bool isThere(const std::string& path) const { return fs::exists(dir_ / path); }
  std::string versionFile() const { return readFile(dir_ / "dist/release/" + kVersionFile); }

  TempDir dir_;
  const MadeFiles made_{dir_ / "work/Hello.app", dir_ / "work/release"};
  const OutputPlace place_{dir_ / "dist/Hello.app", dir_ / "dist/release", dir_ / "work/earlier"};
};

TEST_F(PutInPlace, MovesEverything) {
  EXPECT_EQ(errorOf(), "");
  EXPECT_EQ(readFile(dir_ / "dist/Hello.app/Contents/new"), "new");
  EXPECT_EQ(readFile(dir_ / "dist/release/" + kArchive), "archive");
  EXPECT_EQ(versionFile(), "3\n");
  EXPECT_TRUE(fs::is_empty(dir_ / "work/release"));
  EXPECT_FALSE(isThere("work/Hello.app"));
}

TEST_F(PutInPlace, ReplacesAnEarlierRunAndKeepsOtherReleaseFiles) {
  makeEarlierRun();
  writeFile(dir_ / "dist/release/Quillory-Hello-2-archive.p2.l2", "older");
  EXPECT_EQ(errorOf(), "");
  EXPECT_FALSE(isThere("dist/Hello.app/Contents/old"));
  EXPECT_TRUE(isThere("dist/Hello.app/Contents/new"));
  EXPECT_TRUE(isThere("work/earlier/Contents/old"));
  EXPECT_EQ(versionFile(), "3\n");
  EXPECT_EQ(readFile(dir_ / "dist/release/Quillory-Hello-2-archive.p2.l2"), "older");
}

TEST_F(PutInPlace, TellsOfNoVersionWhoseArchiveIsNotThere) {
  makeEarlierRun();
  block("dist/release/"s + kArchive);
  EXPECT_EQ(errorOf(),
            dir_ / "dist/release/" + kArchive + ": error: cannot be put in place: Is a directory");
  EXPECT_EQ(versionFile(), "2\n");
  EXPECT_TRUE(isThere("dist/Hello.app/Contents/old")) << "the bundle is not touched";
}

// Each of them cannot be put for once; what comes behind it then is not there.
TEST_F(PutInPlace, HasTheReleaseListBehindAllThatItSpeaksOf) {
  const std::vector<std::string> inOrder = {kArchive, "Quillory-Hello-3-from-2-delta", kVersionFile,
                                            "Quillory-Hello-stable-releases-7",
                                            "Quillory-Hello-stable-releases"};
  for (std::size_t blocked = 0; blocked < inOrder.size(); ++blocked) {
    writeFile(dir_ / "work/Hello.app/Contents/new", "new");
    for (const std::string& name : inOrder) writeFile(dir_ / "work/release/" + name, "made");
    fs::remove_all(dir_ / "dist");
    block("dist/release/" + inOrder[blocked]);
    EXPECT_NE(errorOf(), "") << inOrder[blocked];
    for (std::size_t i = 0; i < inOrder.size(); ++i) {
      EXPECT_EQ(fs::is_regular_file(dir_ / "dist/release/" + inOrder[i]), i < blocked)
          << inOrder[i] << " where " << inOrder[blocked] << " is blocked";
    }
    fs::remove_all(dir_ / "work");
  }
}

TEST_F(PutInPlace, TellsOfNoVersionWhoseBundleIsNotThere) {
  makeEarlierRun();
  fs::remove_all(dir_ / "work/Hello.app");
  EXPECT_NE(errorOf(), "");
  EXPECT_EQ(versionFile(), "2\n");
  EXPECT_TRUE(isThere("dist/release/"s + kArchive)) << "archives come first";
  EXPECT_TRUE(isThere("dist/Hello.app/Contents/old")) << "it is back";
  EXPECT_FALSE(isThere("work/earlier"));
}

TEST_F(PutInPlace, BringsTheEarlierBundleBackWhenAVersionFileCannotBePut) {
  makeEarlierRun();
  fs::remove(dir_ / "dist/release/" + kVersionFile);
  block("dist/release/"s + kVersionFile);
  EXPECT_NE(errorOf(), "");
  EXPECT_TRUE(isThere("dist/Hello.app/Contents/old"));
  EXPECT_FALSE(isThere("dist/Hello.app/Contents/new"));
  EXPECT_TRUE(isThere("work/Hello.app/Contents/new"));
}

TEST_F(PutInPlace, LeavesNoFirstBundleWhenAVersionFileCannotBePut) {
  block("dist/release/"s + kVersionFile);
  EXPECT_NE(errorOf(), "");
  EXPECT_FALSE(isThere("dist/Hello.app"));
}

TEST_F(PutInPlace, LeavesAloneWhatIsNoBundle) {
  writeFile(dir_ / "dist/Hello.app", "somebody's file");
  const std::string inTheWay =
      dir_ / "dist/Hello.app" + ": error: is in the way, and is no bundle\n  -> move it away";
  EXPECT_EQ(errorOf(), inTheWay);
  EXPECT_EQ(readFile(dir_ / "dist/Hello.app"), "somebody's file");
  EXPECT_FALSE(isThere("dist/release")) << "it is looked at before anything is moved";
  fs::remove(dir_ / "dist/Hello.app");
  fs::create_symlink("nowhere", dir_ / "dist/Hello.app");
  EXPECT_EQ(errorOf(), inTheWay);
}

TEST_F(PutInPlace, LeavesAloneABundleThatSomebodyElseHasMade) {
  const std::string foreign = dir_ / "dist/Hello.app/Contents";
  const std::string error =
      dir_ / "dist/Hello.app" +
      ": error: is in the way, and is no bundle that this program has finished\n"
      "  -> move it away, or name another folder with --output or bundle.output";
  writeFile(foreign + "/MacOS/Hello", "program");
  EXPECT_EQ(errorOf(), error);
  writeFile(foreign + "/Resources/Tail", "a file of that name");
  EXPECT_EQ(errorOf(), error);
  writeFile(foreign + "/Resources/AppParams.excludefromsigning", "without the marker");
  EXPECT_EQ(errorOf(), error);
  writeFile(foreign + "/Resources/AppParams.excludefromsigning",
            paramsMarker() + std::string("0\0", 2));
  fs::remove(foreign + "/Resources/Tail");
  EXPECT_EQ(errorOf(), error);
  EXPECT_EQ(readFile(foreign + "/MacOS/Hello"), "program");
  EXPECT_FALSE(isThere("dist/release")) << "it is looked at before anything is moved";
}

// What was flushed, and what stood under its final name then.
class Flushed : public PutInPlace {
 protected:
  Flushed() {
    self_ = this;
    durableCalls.flushFolder = [](int, const std::string& path) { return self_->note(path); };
    durableCalls.flushTree = [](int, const std::string& path) { return self_->note(path); };
  }
  ~Flushed() override { durableCalls = before_; }

  int note(const std::string& path) {
    std::string line = path.substr(dir_.str().size() + 1) + ':';
    for (const std::string& name :
         {"release/"s + kArchive, "Hello.app"s, "release/"s + kVersionFile}) {
      line += isThere("dist/" + name) ? " " + fs::path(name).extension().string() : "";
    }
    seen_.push_back(line);
    return static_cast<int>(seen_.size()) == failing_ ? EIO : 0;
  }

  static inline Flushed* self_ = nullptr;
  const DurableCalls before_ = durableCalls;
  std::vector<std::string> seen_;
  int failing_ = 0;
};

TEST_F(Flushed, BeforeItsNameAndEachNameBeforeTheNext) {
  EXPECT_EQ(errorOf(), "");
  EXPECT_EQ(seen_,
            (std::vector<std::string>{"work/release:", "dist/release: .l2", "work/Hello.app: .l2",
                                      "dist: .l2 .app", "dist/release: .l2 .app .txt"}));
}

TEST_F(Flushed, OrNothingOfItIsToldOf) {
  for (failing_ = 1; failing_ <= 4; ++failing_) {
    seen_.clear();
    EXPECT_NE(errorOf().find("error: cannot be written to the disk: Input/output error"),
              std::string::npos)
        << failing_;
    EXPECT_FALSE(isThere("dist/Hello.app")) << failing_;
    EXPECT_FALSE(isThere("dist/release/"s + kVersionFile)) << failing_;
    writeFile(dir_ / "work/release/" + kArchive, "archive");
  }
}

TEST_F(PutInPlace, NamesAReleaseFolderThatCannotBeMade) {
  writeFile(dir_ / "dist/release", "a file");
  EXPECT_EQ(errorOf().find(dir_ / "dist/release" + ": error: cannot be "), 0u) << errorOf();
  EXPECT_FALSE(isThere("dist/Hello.app"));
}

}  // namespace
}  // namespace quillory::pack
