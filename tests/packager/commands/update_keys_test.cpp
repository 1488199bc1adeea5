#include "packager/commands/update_keys.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "packager/keys/public_key.h"
#include "tests/packager/hello_config.h"
#include "tests/packager/openssl.h"

namespace quillory::pack {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::madeKey;
using testing::openssl;

// Keys that are made once a process: the working one is madeKey().
const std::string& otherKey() {
  static const testing::TempDir folder;
  static const std::string path = [] {
    openssl({"genrsa", "-traditional", "-out", folder / "other.pem", "2048"});
    return folder / "other.pem";
  }();
  return path;
}

class LoadUpdateKeys : public testing::HelloConfig {
 protected:
  LoadUpdateKeys() {
    openssl({"rsa", "-in", otherKey(), "-pubout", "-out", dir_ / "other.public.pem"});
    openssl({"rsa", "-in", madeKey(), "-pubout", "-out", dir_ / "working.public.pem"});
    working_ = PublicKey::load(madeKey()).hex();
    other_ = PublicKey::load(otherKey()).hex();
    for (const auto& [key, line] :
         {std::pair{"update.reserve-key", 20u}, std::pair{"update.next-keys", 21u},
          std::pair{"signing.next-key", 22u}}) {
      config_.places[key] = {"quillory.toml", line};
    }
  }

  UpdateKeys keys() {
    std::ostringstream out;
    Reporter reporter(out, said_, {});
    return loadUpdateKeys(config_, SigningKey::load(madeKey()), reporter);
  }
  std::string refusal() {
    try {
      keys();
    } catch (const RejectedInput& e) {
      return asText(e.findings().at(0));
    }
    return "";
  }

  std::string working_, other_;
  std::ostringstream said_;
};

TEST_F(LoadUpdateKeys, TrustsTheWorkingKeyAndTheReserve) {
  EXPECT_THAT(keys().trusted, ElementsAre(working_));
  config_.update.reserveKey = "other.public.pem";
  const UpdateKeys both = keys();
  EXPECT_THAT(both.trusted, ElementsAre(working_, other_));
  EXPECT_TRUE(both.nextKeys.empty());
  EXPECT_EQ(both.forArchives().publicHex(), working_);
  ASSERT_EQ(both.forLists().size(), 1u);
  EXPECT_EQ(both.forLists()[0]->publicHex(), working_);
  EXPECT_EQ(said_.str(), "");
}

TEST_F(LoadUpdateKeys, SignsListsTwiceAndArchivesWithTheNextKeyWhileKeysChange) {
  config_.update.reserveKey = "other.public.pem";  // of before; installations forget it
  config_.update.nextKeys = {"other.public.pem"};
  config_.signing.nextKey = otherKey();
  const UpdateKeys changing = keys();
  EXPECT_THAT(changing.nextKeys, ElementsAre(other_));
  EXPECT_THAT(changing.trusted, ElementsAre(other_));
  EXPECT_EQ(changing.forArchives().publicHex(), other_);
  ASSERT_EQ(changing.forLists().size(), 2u);
  EXPECT_EQ(changing.forLists()[0]->publicHex(), working_);
  EXPECT_EQ(changing.forLists()[1]->publicHex(), other_);
  EXPECT_THAT(changing.known(), ElementsAre(working_, other_));
}

// One signature is both where the working key stays and only the reserve is exchanged.
TEST_F(LoadUpdateKeys, NeedsOneSignatureWhereTheWorkingKeyStays) {
  config_.update.nextKeys = {"working.public.pem", "other.public.pem"};
  const UpdateKeys changing = keys();
  EXPECT_EQ(changing.forLists().size(), 1u);
  EXPECT_THAT(changing.trusted, ElementsAre(working_, other_));
}

TEST_F(LoadUpdateKeys, RefusesNextKeysThatNobodyWouldTakeOver) {
  config_.update.nextKeys = {"other.public.pem"};
  EXPECT_EQ(refusal(),
            "quillory.toml:21: error: update.next-keys has no key that signs: no installation "
            "would take them over [next-keys]\n"
            "  -> next-key = \"new.pem\" in [signing], and its public half among next-keys");
  config_.update.nextKeys = {"working.public.pem"};
  config_.signing.nextKey = otherKey();
  EXPECT_THAT(refusal(), HasSubstr("does not have the key that signing.next-key signs with"));
}

TEST_F(LoadUpdateKeys, RefusesFilesThatHoldNoKey) {
  testing::writeFile(dir_ / "text.pem", "text");
  config_.update.reserveKey = "text.pem";
  EXPECT_THAT(refusal(), HasSubstr("quillory.toml:20: error: " + dir_ / "text.pem" +
                                   ": is not a key in PEM format [update-key]"));
  config_.update.reserveKey = "";
  config_.signing.nextKey = "other.public.pem";
  EXPECT_THAT(refusal(), HasSubstr("quillory.toml:22: error: "));
}

TEST_F(LoadUpdateKeys, RefusesAReserveThatIsTheWorkingKey) {
  config_.update.reserveKey = "working.public.pem";
  EXPECT_THAT(refusal(), HasSubstr("is the key that signs already: there would be no second one"));
}

TEST_F(LoadUpdateKeys, WarnsOfAReserveThatLiesHere) {
  config_.update.reserveKey = otherKey();
  EXPECT_THAT(keys().trusted, ElementsAre(working_, other_));
  EXPECT_THAT(said_.str(), HasSubstr("[reserve-private]"));
}

}  // namespace
}  // namespace quillory::pack
