#include "java/bundle_loader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/platform.h"
#include "tests/harness/captured_log.h"

namespace quillory {
namespace {

using ::quillory::testing::CapturedLog;
using ::quillory::testing::ScopedReplace;
using ::testing::ElementsAre;

int loads;

void* someBundle(const char*) { return &loads; }

TEST(LoadOSXBundle, SaysThatThereIsNoBundleWithoutAPlatformThatHasThem) {
  const CapturedLog log;
  loadOSXBundle("/m/JRE.plugin");
  EXPECT_THAT(log.messages(),
              ElementsAre("[BundleLoader] Creating jre path URL for path /m/JRE.plugin\n",
                          "[BundleLoader] Bundle is null?"));
}

TEST(LoadOSXBundle, LoadsTheBundleThatWasCreated) {
  loads = 0;
  const ScopedReplace calls(platformCalls.bundles,
                            BundleCalls{.createBundle = someBundle, .loadExecutable = [](void* b) {
                                          loads += b == &loads;
                                          return true;
                                        }});
  const CapturedLog log;
  loadOSXBundle("/m/JRE.plugin");
  EXPECT_EQ(loads, 1);
  EXPECT_THAT(log.messages(),
              ElementsAre("[BundleLoader] Creating jre path URL for path /m/JRE.plugin\n",
                          "[BundleLoader] Created Bundle\n", "[BundleLoader] Bundle Loaded OK\n"));
}

TEST(LoadOSXBundle, OnlyLogsThatABundleCannotBeLoaded) {
  const ScopedReplace calls(
      platformCalls.bundles,
      BundleCalls{.createBundle = someBundle, .loadExecutable = [](void*) { return false; }});
  const CapturedLog log;
  loadOSXBundle("/m/JRE.plugin");
  EXPECT_THAT(
      log.messages(),
      ElementsAre("[BundleLoader] Creating jre path URL for path /m/JRE.plugin\n",
                  "[BundleLoader] Created Bundle\n", "[BundleLoader] Could not load JRE bundle!"));
}

}  // namespace
}  // namespace quillory
