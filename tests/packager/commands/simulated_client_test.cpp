#include "packager/commands/simulated_client.h"

#include <gtest/gtest.h>

#include "packager/commands/release_source.h"
#include "tests/packager/plain_archives.h"
#include "tests/packager/released_project.h"

namespace quillory::testing {
namespace {

class SimulatedClient : public ReleasedProject {
 protected:
  const std::string key_ = pack::PublicKey::load(Project::key()).hex();
};

TEST_F(SimulatedClient, GoesFromReleaseToReleaseAsAnInstallationDoes) {
  for (int version = 1; version <= 2; ++version) {
    writeFile(project_ / "data", noise(1, 100'000) + std::to_string(version));
    release(config(version, "files = [\"data\"]\n"));
  }
  pack::ReleaseSource source(project_ / "dist/release");
  pack::SimulatedClient client("Hello", source.base(), {key_});
  const ReleaseList first = listIn("Quillory-Hello-stable-releases-1");
  std::vector<pack::SimulatedStep> steps = client.take(first, source);
  ASSERT_EQ(steps.size(), 2u);
  EXPECT_EQ(steps[0].component, "Quillory");
  EXPECT_EQ(steps[1].component, "Hello");
  EXPECT_EQ(steps[1].from, "");
  EXPECT_EQ(steps[1].bytes, first.components[1].archive.length);
  steps = client.take(list(), source);
  ASSERT_EQ(steps.size(), 1u);
  EXPECT_EQ(steps[0].version, "2");
  EXPECT_EQ(steps[0].from, "1");
  EXPECT_TRUE(client.take(list(), source).empty());
}

TEST_F(SimulatedClient, TakesNothingThatAnotherKeyHasSigned) {
  release(config(1));
  pack::ReleaseSource source(project_ / "dist/release");
  const pack::SigningKey other = pack::SigningKey::generate(2048);
  pack::SimulatedClient client("Hello", source.base(), {other.publicHex()});
  EXPECT_THROW(client.take(list(), source), pack::PackError);
}

}  // namespace
}  // namespace quillory::testing
