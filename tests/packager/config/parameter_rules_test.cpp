#include "packager/config/parameter_rules.h"

#include <gtest/gtest.h>

namespace quillory::pack {
namespace {

const Subject kParameter = {"it", {"quillory.toml", 4}};

// What is wrong, behind the name of the subject.
std::string textOf(const std::optional<Finding>& flaw) {
  if (!flaw) {
    return "";
  }
  EXPECT_NE(flaw->advice, "");
  EXPECT_EQ(asText(flaw->place), "quillory.toml:4");
  EXPECT_EQ(flaw->what.substr(0, 3), "it ");
  return flaw->what.substr(3);
}

TEST(FlawOfUpdateUrl, IsNoneOfFoldersOfServers) {
  for (const char* url : {"https://example.com/", "http://example.com", "http://a",
                          "https://example.com:8080/a/b%20c/", "http://[::1]/", "https://a@b/"}) {
    EXPECT_EQ(textOf(flawOfUpdateUrl(kParameter, url)), "") << url;
  }
}

TEST(FlawOfUpdateUrl, SaysWhatIsWrong) {
  const std::string scheme = "does not begin with https:// or http://";
  const std::string server = "names no server";
  const std::string blank = "holds a blank or a control character";
  const std::string query = "holds a \"?\" or \"#\", and the names of files are put behind it";
  const std::pair<std::string, std::string> cases[] = {
      {"ftp://example.com/", scheme}, {"example.com", scheme},  {"HTTPS://example.com", scheme},
      {"x https://a/", scheme},       {"https:/a", scheme},     {"http://", server},
      {"https:///a", server},         {"https://:80/", server}, {"https://?a", server},
      {"https://#a", server},         {"https://a/b c", blank}, {"https://a/\x7f", blank},
      {"https://a/\x01", blank},      {"https://a/\n", blank},  {"https://a/?b", query},
      {"https://a/#b", query}};
  for (const auto& [url, what] : cases) {
    EXPECT_EQ(textOf(flawOfUpdateUrl(kParameter, url)), what) << url;
  }
}

TEST(FlawOfParameter, WantsAName) {
  EXPECT_EQ(textOf(flawOfParameter(kParameter, "", "x")), "has no name");
  EXPECT_EQ(textOf(flawOfParameter(kParameter, "anything", "")), "");
  EXPECT_EQ(textOf(flawOfParameter(kParameter, "any thing", "a-b:c")), "");
}

TEST(FlawOfParameter, TakesSwitchesThatAreTrueOrFalse) {
  for (const char* name : {"force_spawn", "show_no_ui"}) {
    EXPECT_EQ(textOf(flawOfParameter(kParameter, name, "true")), "");
    EXPECT_EQ(textOf(flawOfParameter(kParameter, name, "false")), "");
    for (const char* value : {"", "True", "1", "yes", "true "}) {
      EXPECT_EQ(textOf(flawOfParameter(kParameter, name, value)),
                "is \"true\" or \"false\", and nothing else")
          << name << '=' << value;
    }
  }
  EXPECT_EQ(textOf(flawOfParameter(kParameter, "other", "1")), "");
}

TEST(FlawOfParameter, TakesJreNamesThatFoldersCanHave) {
  EXPECT_EQ(textOf(flawOfParameter(kParameter, "jre_name", "JRE")), "");
  EXPECT_EQ(textOf(flawOfParameter(kParameter, "jre_name", "")), "is empty");
  EXPECT_EQ(textOf(flawOfParameter(kParameter, "jre_name", "J-RE")).substr(0, 11), "holds a \"-\"");
}

TEST(FlawOfParameter, TakesAnUpdateUrlOrNone) {
  EXPECT_EQ(textOf(flawOfParameter(kParameter, "update_url", "")), "");
  EXPECT_EQ(textOf(flawOfParameter(kParameter, "update_url", "https://example.com/")), "");
  EXPECT_EQ(textOf(flawOfParameter(kParameter, "update_url", "example.com")),
            "does not begin with https:// or http://");
}

}  // namespace
}  // namespace quillory::pack
