#include "packager/commands/bundle_making.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/harness/child_process.h"
#include "tests/harness/records.h"
#include "tests/packager/content/zip_bytes.h"
#include "tests/packager/released_project.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

class BundleMaking : public ReleasedProject {
 protected:
  std::string refusal(const std::string& text, bool isUnsigned) {
    pack::BundleOptions bundle = options().bundle;
    bundle.isUnsigned = isUnsigned;
    std::ostringstream out, err;
    pack::Reporter reporter(out, err, {});
    const pack::Config config = loaded(text);
    try {
      pack::BundleMaking making(config, bundle, reporter);
    } catch (const pack::RejectedInput& e) {
      return asText(e.findings().at(0));
    }
    return "";
  }
  // The plain bytes of the archive of a part.
  std::string archiveOf(pack::PackedPart pack::PackedParts::*part, const std::string& text) {
    std::ostringstream out, err;
    pack::Reporter reporter(out, err, {});
    const pack::Config config = loaded(text);
    pack::BundleMaking making(config, options().bundle, reporter);
    return runChild({"xz", "--format=lzma", "-dc", (making.pack().*part).archive}).out;
  }
  std::string updaterArchive(const std::string& text) {
    return archiveOf(&pack::PackedParts::updater, text);
  }
  std::string applicationArchive(const std::string& text) {
    return archiveOf(&pack::PackedParts::application, text);
  }
};

TEST_F(BundleMaking, GivesTheUpdaterItsSettingsAndProgramsWhereTheyAreAskedFor) {
  const std::string archive = updaterArchive(config(1, "", "check-hours = 12\n"));
  const std::string settings = records({"1", "stable", "background", "20", "12", "2", "0", "1"});
  EXPECT_THAT(archive, HasSubstr(records({"0", "QuilloryUpdate"})));
  EXPECT_THAT(archive, HasSubstr(settings));
  EXPECT_THAT(archive, HasSubstr(records({"0", "quillory-update", "20"}) +
                                 readFile(project_ / "quillory-update")));
  EXPECT_THAT(archive, HasSubstr(records({"0", "quillory-update-window", "27"})));
}

// What is packed for configurations of before has the bytes of before: those of the tests of
// "bundle", and no file more.
TEST_F(BundleMaking, GivesNothingMoreToAnUpdaterOfBefore) {
  const std::string archive = updaterArchive(project_.config());
  EXPECT_EQ(archive.find(records({"0", "QuilloryUpdate"})), std::string::npos);
  EXPECT_EQ(archive.find(records({"0", "quillory-update"})), std::string::npos);
  EXPECT_THAT(archive, HasSubstr("qyArcSpBlock_Component1;Quillory;1;any"));
}

TEST_F(BundleMaking, TakesTheCompressionOutOfJarsWhereUpdatesAreAskedFor) {
  const std::string jar = project_ / "hello.jar";
  withZip(project_ / "packed.jar", "w",
          "  with zipfile.ZipFile('" + jar +
              "') as plain:\n"
              "    for n in plain.namelist(): z.writestr(n, plain.read(n))\n");
  fs::rename(project_ / "packed.jar", jar);
  const std::string manifest = "Main-Class: com.example.hello.Hello";
  EXPECT_THAT(applicationArchive(config(1)), HasSubstr(manifest));
  const std::string before = applicationArchive(project_.config());
  EXPECT_EQ(before.find(manifest), std::string::npos);
  EXPECT_NE(before.find(readFile(jar)), std::string::npos);
}

TEST_F(BundleMaking, RefusesInstallationsThatWouldTakeWhatIsNotSigned) {
  EXPECT_THAT(refusal(config(1), true),
              HasSubstr("no installation takes what is not signed [unsigned]"));
  EXPECT_EQ(refusal(config(1), false), "");
  EXPECT_TRUE(fs::is_empty(project_ / "dist")) << "the work folder is gone";
}

}  // namespace
}  // namespace quillory::testing
