// Bundles as the platform's own service, or its stand-in, loads them.
#include "java/bundle_loader_cocoa.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "java/bundle_loader.h"
#include "support/platform.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

namespace fs = std::filesystem;
using ::quillory::testing::CapturedLog;
using ::quillory::testing::ScopedReplace;
using ::quillory::testing::TempDir;
using ::quillory::testing::writeFile;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr char kInfo[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN"
 "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0"><dict><key>CFBundleExecutable</key><string>libjli</string></dict></plist>
)";

class CocoaBundle : public ::testing::Test {
 protected:
  void addExecutable(const std::string& name) const {
    fs::create_directories(bundle_ + "/Contents/MacOS");
    fs::copy_file(QUILLORY_STUB_NO_JVM, bundle_ + "/Contents/MacOS/" + name);
  }
  void load() const { loadOSXBundle(bundle_.c_str()); }
  std::string firstLine() const {
    return "[BundleLoader] Creating jre path URL for path " + bundle_ + "\n";
  }
  std::string urlLine() const { return "[BundleLoader] URL is file://" + bundle_ + "/\n"; }
  void expectLoaded() const {
    EXPECT_THAT(log_.messages(), ElementsAre(firstLine(), "[BundleLoader] Created NSURL\n",
                                             urlLine(), "[BundleLoader] Created Bundle\n",
                                             "[BundleLoader] Bundle Loaded OK\n"));
  }
  void expectNotLoaded() const {
    EXPECT_THAT(log_.messages(), ElementsAre(firstLine(), "[BundleLoader] Created NSURL\n",
                                             urlLine(), "[BundleLoader] Created Bundle\n",
                                             "[BundleLoader] Could not load JRE bundle!"));
  }

  ScopedReplace<BundleCalls> bundles_{platformCalls.bundles, cocoaBundles()};
  TempDir dir_;
  std::string bundle_ = dir_ / "Quillory-JRE-17-complete.plugin";
  CapturedLog log_;
};

TEST_F(CocoaBundle, LoadsTheExecutableThatItsInformationNames) {
  addExecutable("libjli");
  writeFile(bundle_ + "/Contents/Info.plist", kInfo);
  load();
  expectLoaded();
}

TEST_F(CocoaBundle, LoadsTheExecutableNamedLikeTheFolderWithoutInformation) {
  addExecutable("Quillory-JRE-17-complete");
  load();
  expectLoaded();
}

TEST_F(CocoaBundle, WritesItsUrlToTheSystemLogOnly) {
  fs::create_directories(bundle_);
  ::testing::internal::CaptureStdout();
  load();
  EXPECT_THAT(::testing::internal::GetCapturedStdout(), Not(HasSubstr("URL is")));
  EXPECT_THAT(log_.messages(), Contains(urlLine()));
}

TEST_F(CocoaBundle, WritesItsUrlWithEscapes) {
  bundle_ = dir_ / "Application Support.plugin";
  fs::create_directories(bundle_);
  load();
  EXPECT_THAT(log_.text(), HasSubstr("/Application%20Support.plugin/\n"));
}

TEST_F(CocoaBundle, IsNotThereWithoutAFolder) {
  load();
  EXPECT_THAT(log_.messages(), ElementsAre(firstLine(), "[BundleLoader] Created NSURL\n", urlLine(),
                                           "[BundleLoader] Bundle is null?"));
}

TEST_F(CocoaBundle, IsNotThereWhereAFileIs) {
  writeFile(bundle_, "");
  load();
  EXPECT_EQ(log_.messages().back(), "[BundleLoader] Bundle is null?");
}

TEST_F(CocoaBundle, IsNotThereUnderAPathThatIsNotUtf8) {
  bundle_ = dir_ / "\xFF.plugin";
  fs::create_directories(bundle_);
  load();
  EXPECT_EQ(log_.messages().back(), "[BundleLoader] Bundle is null?");
}

TEST_F(CocoaBundle, CannotBeLoadedWithoutItsExecutable) {
  fs::create_directories(bundle_ + "/Contents/MacOS");
  load();
  expectNotLoaded();
}

TEST_F(CocoaBundle, CannotBeLoadedWhenItsExecutableIsNone) {
  writeFile(bundle_ + "/Contents/MacOS/libjli", "no library");
  writeFile(bundle_ + "/Contents/Info.plist", kInfo);
  load();
  expectNotLoaded();
}

TEST_F(CocoaBundle, SurvivesInformationThatIsNone) {
  addExecutable("Quillory-JRE-17-complete");
  for (const char* info : {"", "garbage {", "<plist><array/></plist>"}) {
    SCOPED_TRACE(info);
    writeFile(bundle_ + "/Contents/Info.plist", info);
    const CapturedLog log;
    load();
    EXPECT_EQ(log.messages().back(), "[BundleLoader] Bundle Loaded OK\n");
  }
}

}  // namespace
}  // namespace quillory
