#include "packager/commands/trusted_keys.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "tests/packager/openssl.h"
#include "tests/packager/released_project.h"

namespace quillory::testing {
namespace {

using ::testing::ElementsAre;

class TrustedBy : public ReleasedProject {
 protected:
  pack::Trusted trusted(const pack::TrustArguments& given) {
    std::ostringstream out;
    pack::Reporter reporter(out, said_, {});
    return pack::trustedBy(given, reporter);
  }
};

TEST_F(TrustedBy, AreTheKeysOfTheConfigurationOrThoseGiven) {
  openssl({"genrsa", "-traditional", "-out", project_ / "other.pem", "2048"});
  openssl({"rsa", "-in", project_ / "other.pem", "-pubout", "-out", project_ / "other.public.pem"});
  const std::string working = pack::PublicKey::load(Project::key()).hex();
  const std::string other = pack::PublicKey::load(project_ / "other.pem").hex();
  pack::TrustArguments given;
  given.config = project_.writeConfig(config(1, "", "reserve-key = \"other.public.pem\"\n"));
  EXPECT_EQ(trusted(given).application, "Hello");
  EXPECT_EQ(trusted(given).channel, "stable");
  EXPECT_THAT(trusted(given).keys, ElementsAre(working, other));
  given.keys = {project_ / "other.public.pem"};
  given.channel = "beta";
  EXPECT_THAT(trusted(given).keys, ElementsAre(other));
  EXPECT_EQ(trusted(given).channel, "beta");
}

}  // namespace
}  // namespace quillory::testing
