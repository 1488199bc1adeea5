#include "packager/content/pack_cache.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <thread>
#include <vector>

#include "tests/harness/file_size_limit.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::readFile;
using testing::TempDir;
using testing::writeFile;

std::string keyOf(const std::string& text) {
  CacheKey key("test");
  key.add(text);
  return key.hex();
}

class PackCacheOf : public ::testing::Test {
 protected:
  // What is kept under the name; "none" when nothing is, or nothing good.
  std::string fetched(const std::string& name) {
    const bool isThere = cache_.fetchFile(keyOf(name), dir_ / "out");
    EXPECT_EQ(fs::exists(dir_ / "out"), isThere);
    const std::string bytes = isThere ? readFile(dir_ / "out") : "none";
    fs::remove(dir_ / "out");
    return bytes;
  }
  void keep(const std::string& name, const std::string& bytes) {
    writeFile(dir_ / "in", bytes);
    cache_.keepFile(keyOf(name), dir_ / "in");
  }
  std::string entry(const std::string& name) { return dir_ / ("caches/pack/" + keyOf(name)); }

  TempDir dir_;
  PackCache cache_{dir_ / "caches/pack"};
};

TEST_F(PackCacheOf, FilesGivesBackWhatWasKept) {
  EXPECT_EQ(fetched("a"), "none");
  keep("a", "content");
  keep("b", "");
  EXPECT_EQ(fetched("a"), "content");
  EXPECT_EQ(fetched("b"), "");
  EXPECT_EQ(fetched("c"), "none");
  keep("a", "other");
  EXPECT_EQ(fetched("a"), "other");
}

TEST_F(PackCacheOf, BytesGivesBackWhatWasKeptAndNoticesDamage) {
  EXPECT_EQ(cache_.fetchBytes(keyOf("a")), std::nullopt);
  cache_.keepBytes(keyOf("a"), std::string("a\0b", 3));
  cache_.keepBytes(keyOf("empty"), "");
  EXPECT_EQ(cache_.fetchBytes(keyOf("a")), std::string("a\0b", 3));
  EXPECT_EQ(cache_.fetchBytes(keyOf("empty")), "");
  EXPECT_EQ(cache_.fetchBytes(keyOf("b")), std::nullopt);
  std::string bad = readFile(entry("a"));
  bad[0] = 'x';
  writeFile(entry("a"), bad);
  EXPECT_EQ(cache_.fetchBytes(keyOf("a")), std::nullopt);
  EXPECT_FALSE(fs::exists(entry("a")));
}

TEST_F(PackCacheOf, FilesNoticesEveryDamage) {
  keep("a", "content");
  const std::string good = readFile(entry("a"));
  for (std::size_t i = 0; i < good.size(); ++i) {
    std::string bad = good;
    bad[i] = static_cast<char>(bad[i] ^ 1);
    writeFile(entry("a"), bad);
    EXPECT_EQ(fetched("a"), "none") << "byte " << i;
    EXPECT_FALSE(fs::exists(entry("a")));
    writeFile(entry("a"), good.substr(0, i));
    EXPECT_EQ(fetched("a"), "none") << "cut to " << i;
  }
  writeFile(entry("a"), good + "x");
  EXPECT_EQ(fetched("a"), "none");
  keep("a", "content");
  fs::copy_file(entry("a"), entry("b"));
  EXPECT_EQ(fetched("b"), "none") << "under another key";
}

TEST_F(PackCacheOf, FoldersGivesBackFilesAndWhichOfThemAreProgramsOnly) {
  writeFile(dir_ / "jre/bin/java", "program");
  fs::permissions(dir_ / "jre/bin/java", fs::perms::owner_all);
  writeFile(dir_ / "jre/lib/a b", std::string(600'000, 'x') + "\n-5\n");
  writeFile(dir_ / "jre/lib/empty", "");
  fs::create_symlink("../lib/a b", dir_ / "jre/bin/link");
  cache_.keepFolder(keyOf("jre"), dir_ / "jre");
  ASSERT_TRUE(cache_.fetchFolder(keyOf("jre"), dir_ / "back"));
  EXPECT_EQ(readFile(dir_ / "back/bin/java"), "program");
  EXPECT_EQ(readFile(dir_ / "back/lib/a b"), readFile(dir_ / "jre/lib/a b"));
  EXPECT_EQ(readFile(dir_ / "back/bin/link"), readFile(dir_ / "jre/lib/a b"));
  EXPECT_EQ(readFile(dir_ / "back/lib/empty"), "");
  EXPECT_EQ(access((dir_ / "back/bin/java").c_str(), X_OK), 0);
  EXPECT_NE(fs::status(dir_ / "back/lib/empty").permissions() & fs::perms::owner_exec,
            fs::perms::owner_exec);
}

TEST_F(PackCacheOf, FoldersLeavesNothingOfADamagedOne) {
  writeFile(dir_ / "jre/a", "aaaa");
  writeFile(dir_ / "jre/b", "bbbb");
  cache_.keepFolder(keyOf("jre"), dir_ / "jre");
  const std::string good = readFile(entry("jre"));
  for (std::size_t i = 0; i < good.size(); ++i) {
    std::string bad = good;
    bad[i] = static_cast<char>(bad[i] ^ 1);
    writeFile(entry("jre"), bad);
    EXPECT_FALSE(cache_.fetchFolder(keyOf("jre"), dir_ / "back")) << i;
    EXPECT_FALSE(fs::exists(dir_ / "back")) << i;
    writeFile(entry("jre"), good.substr(0, i));
    EXPECT_FALSE(cache_.fetchFolder(keyOf("jre"), dir_ / "back")) << i;
  }
}

TEST_F(PackCacheOf, FilesKeepsWithinItsLimitWhatWasAskedForLast) {
  cache_ = PackCache(dir_ / "caches/pack", 3 * (1000 + kSha256HexLength));
  int minutes = 0;
  for (const char* name : {"a", "b", "c"}) {
    keep(name, std::string(1000, name[0]));
    fs::last_write_time(entry(name),
                        fs::file_time_type::clock::now() - std::chrono::minutes(60 - ++minutes));
  }
  EXPECT_NE(fetched("a"), "none");
  writeFile(dir_ / "caches/pack/not-ours", std::string(9000, 'x'));
  keep("d", std::string(1000, 'd'));
  EXPECT_NE(fetched("a"), "none");
  EXPECT_EQ(fetched("b"), "none");
  EXPECT_NE(fetched("c"), "none");
  EXPECT_NE(fetched("d"), "none");
  EXPECT_TRUE(fs::exists(dir_ / "caches/pack/not-ours"));
  keep("large", std::string(9000, 'x'));
  EXPECT_EQ(fetched("large"), "none");
}

TEST_F(PackCacheOf, FilesIsTheUsersAlone) {
  keep("a", "content");
  EXPECT_EQ(fs::status(dir_ / "caches/pack").permissions(), fs::perms::owner_all);
  fs::permissions(dir_ / "caches/pack", fs::perms::all);
  EXPECT_EQ(fetched("a"), "none") << "others could have put it there";
  fs::permissions(dir_ / "caches/pack", fs::perms::owner_all);
  EXPECT_EQ(fetched("a"), "content");
  fs::rename(dir_ / "caches/pack", dir_ / "elsewhere");
  fs::create_directory_symlink(dir_ / "elsewhere", dir_ / "caches/pack");
  EXPECT_EQ(fetched("a"), "none");
}

TEST_F(PackCacheOf, FilesIsNoReasonToFail) {
  keep("a", "content");
  {
    const testing::FileSizeLimit full(100);  // as a full disk
    keep("b", std::string(90, 'x'));
  }
  EXPECT_EQ(fetched("b"), "none");
  EXPECT_EQ(fetched("a"), "content");
  cache_.keepFile(keyOf("c"), dir_ / "missing");
  EXPECT_EQ(fetched("c"), "none");
  cache_ = PackCache("");
  keep("a", "content");
  EXPECT_EQ(fetched("a"), "none");
  writeFile(dir_ / "file", "x");
  cache_ = PackCache(dir_ / "file/inside");
  keep("a", "content");
  EXPECT_EQ(fetched("a"), "none");
}

TEST_F(PackCacheOf, FilesTakesTwoRunsAtOnce) {
  const std::string bytes(300'000, 'x');
  writeFile(dir_ / "in", bytes);
  const auto work = [&](const std::string& output) {
    PackCache cache(dir_ / "caches/pack", 2 * bytes.size());
    for (int i = 0; i < 30; ++i) {
      cache.keepFile(keyOf(std::to_string(i % 4)), dir_ / "in");
      if (cache.fetchFile(keyOf(std::to_string((i + 1) % 4)), output)) {
        EXPECT_EQ(readFile(output), bytes);
      }
    }
  };
  std::thread other([&] { work(dir_ / "one"); });
  work(dir_ / "two");
  other.join();
}

TEST_F(PackCacheOf, BytesKeepsAllThatSeveralThreadsKeep) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&, i] {
      for (int j = 0; j < 25; ++j) {
        cache_.keepBytes(keyOf(std::to_string(i) + ',' + std::to_string(j)), "content");
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (int i = 0; i < 8; ++i) {
    for (int j = 0; j < 25; ++j) {
      EXPECT_EQ(cache_.fetchBytes(keyOf(std::to_string(i) + ',' + std::to_string(j))), "content");
    }
  }
}

TEST(CacheKey, KnowsWhereOneTextEnds) {
  const auto keyOfTwo = [](const std::string& a, const std::string& b) {
    CacheKey key("kind");
    key.add(a);
    key.add(b);
    return key.hex();
  };
  EXPECT_EQ(keyOfTwo("a", "b"), keyOfTwo("a", "b"));
  EXPECT_NE(keyOfTwo("ab", ""), keyOfTwo("a", "b"));
  EXPECT_NE(keyOfTwo("", "ab"), keyOfTwo("a", "b"));
  EXPECT_NE(CacheKey("a").hex(), CacheKey("b").hex());
}

}  // namespace
}  // namespace quillory::pack
