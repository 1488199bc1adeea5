#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "packager/content/pack_cache.h"

namespace quillory::pack {
namespace {

TEST(UserCacheFolder, IsWhereTheSystemHasThem) {
  const auto valueOf = [](const char* name) {
    const char* value = std::getenv(name);
    return std::string(value == nullptr ? "" : value);
  };
  const std::string before = valueOf("QUILLORY_PACK_CACHE");
  const std::string home = valueOf("HOME");
  const std::string caches = valueOf("XDG_CACHE_HOME");
  setenv("QUILLORY_PACK_CACHE", "/named", 1);
  EXPECT_EQ(standardCacheFolder(), "/named");
  unsetenv("QUILLORY_PACK_CACHE");
  setenv("HOME", "/home/me", 1);
  setenv("XDG_CACHE_HOME", "/caches", 1);
  EXPECT_EQ(standardCacheFolder(), "/caches/quillory-pack");
  setenv("XDG_CACHE_HOME", "relative", 1);
  EXPECT_EQ(standardCacheFolder(), "/home/me/.cache/quillory-pack");
  unsetenv("HOME");
  EXPECT_EQ(standardCacheFolder(), "");
  setenv("QUILLORY_PACK_CACHE", before.c_str(), 1);
  if (!home.empty()) setenv("HOME", home.c_str(), 1);
  caches.empty() ? unsetenv("XDG_CACHE_HOME") : setenv("XDG_CACHE_HOME", caches.c_str(), 1);
}

}  // namespace
}  // namespace quillory::pack
