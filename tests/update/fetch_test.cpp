#include "update/fetch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "support/clock.h"
#include "support/log.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/file_size_limit.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/temp_dir.h"
#include "tests/update/folder_transport.h"
#include "tests/update/release_folder.h"
#include "update/cancel.h"

namespace quillory::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using update::FetchEnd;
using update::fetchFile;
using update::FetchResult;
using update::partPath;

std::string content() {
  std::string bytes;
  for (int i = 0; bytes.size() < 20000; ++i) bytes += std::to_string(i) + ',';
  return bytes;
}

class Fetch : public ::testing::Test {
 protected:
  Fetch() {
    std::filesystem::create_directories(downloads_);
    writeFile(server_ / "the file", content());
    transport_.serve("http://one.test/", server_.str());
    transport_.serve("http://two.test/", mirror_.str());
  }
  ~Fetch() override { update::isCancelled = false; }

  FetchResult fetch() {
    return fetchFile(transport_, {"http://one.test/", "http://two.test/"}, file_, downloads_,
                     [this](std::int64_t bytes) { seen_.push_back(bytes); });
  }
  std::string fetched() const { return readFile(partPath(downloads_, file_)); }
  bool isNothingThere() const { return std::filesystem::is_empty(downloads_); }

  TempDir server_;
  TempDir mirror_;
  TempDir folder_;
  const std::string downloads_ = folder_ / "downloads";
  const ReleaseFile file_ = named("the file", content());
  FolderTransport transport_;
  std::vector<std::int64_t> seen_;

 private:
  CapturedLog log_;
  ScopedReplace<decltype(logCalls.show)> quiet_{logCalls.show, +[](const char*, std::size_t) {}};
  ScopedReplace<decltype(timeCalls.sleepMicros)> sleep_{timeCalls.sleepMicros,
                                                        +[](std::uint64_t) {}};
};

TEST_F(Fetch, BringsTheFileThatIsNamed) {
  const FetchResult result = fetch();
  EXPECT_EQ(result.end, FetchEnd::kComplete) << result.reason;
  EXPECT_EQ(fetched(), content());
  EXPECT_EQ(transport_.asked.at(0).request.url, "http://one.test/the%20file");
  EXPECT_EQ(transport_.asked.size(), 1u);
  EXPECT_EQ(seen_.back(), file_.length);
}

TEST_F(Fetch, GoesOnWhereItWasCutWhereverThatWas) {
  for (std::int64_t cut = 0; cut < file_.length; cut += 997) {
    SCOPED_TRACE(cut);
    std::filesystem::remove_all(downloads_);
    std::filesystem::create_directories(downloads_);
    transport_.asked.clear();
    transport_.mishap = [&](const AskedFor&) {
      return Mishap{.cutAfter = transport_.asked.size() == 1 ? cut : -1};
    };
    ASSERT_EQ(fetch().end, FetchEnd::kComplete);
    EXPECT_EQ(fetched(), content());
    ASSERT_EQ(transport_.asked.size(), 2u);
    EXPECT_EQ(transport_.asked[1].request.from, cut);
    EXPECT_EQ(transport_.sent(), file_.length);
  }
}

TEST_F(Fetch, GoesOnInAnotherRunOnlyWhereTheFileIsTheSame) {
  transport_.mishap = [&](const AskedFor&) {
    return transport_.asked.size() == 1 ? Mishap{.cutAfter = 5000} : Mishap{.isUnreachable = true};
  };
  EXPECT_EQ(fetch().end, FetchEnd::kFailed);
  transport_.asked.clear();
  transport_.mishap = [](const AskedFor&) { return Mishap(); };
  ASSERT_EQ(fetch().end, FetchEnd::kComplete);
  EXPECT_EQ(transport_.asked.at(0).request.from, 5000);
  EXPECT_NE(transport_.asked.at(0).request.ifRange, "");
  EXPECT_EQ(transport_.asked.at(0).status, 206);
  EXPECT_EQ(fetched(), content());
}

TEST_F(Fetch, TakesAllAnewWhereTheServerGivesNoPart) {
  transport_.mishap = [&](const AskedFor&) {
    return transport_.asked.size() == 1 ? Mishap{.cutAfter = 5000} : Mishap{.ignoresRange = true};
  };
  EXPECT_EQ(fetch().end, FetchEnd::kComplete);
  EXPECT_EQ(fetched(), content());
}

TEST_F(Fetch, TakesNoOtherPartThanItAskedFor) {
  transport_.mishap = [&](const AskedFor&) {
    if (transport_.asked.size() == 1) return Mishap{.cutAfter = 5000};
    return transport_.asked.size() == 2 ? Mishap{.shiftRange = -1000} : Mishap();
  };
  writeFile(mirror_ / "the file", content());
  EXPECT_EQ(fetch().end, FetchEnd::kComplete);
  EXPECT_EQ(fetched(), content());
}

TEST_F(Fetch, BeginsAnewWhereWhatWasLeftIsDamaged) {
  writeFile(partPath(downloads_, file_), std::string(5000, '?'));
  EXPECT_EQ(fetch().end, FetchEnd::kComplete);
  EXPECT_EQ(fetched(), content());
  writeFile(partPath(downloads_, file_), std::string(content().size(), '?'));
  EXPECT_EQ(fetch().end, FetchEnd::kComplete);
  EXPECT_EQ(fetched(), content());
  writeFile(partPath(downloads_, file_), content() + "and more");
  EXPECT_EQ(fetch().end, FetchEnd::kComplete);
  EXPECT_EQ(fetched(), content());
}

TEST_F(Fetch, AsksNobodyForWhatIsThere) {
  writeFile(partPath(downloads_, file_), content());
  EXPECT_EQ(fetch().end, FetchEnd::kComplete);
  EXPECT_TRUE(transport_.asked.empty());
}

TEST_F(Fetch, AsksTheNextServerWhereOneHasNotTheFile) {
  for (const Mishap& what :
       {Mishap{.status = 404}, Mishap{.status = 500}, Mishap{.isUnreachable = true},
        Mishap{.body = content() + "more", .hasBody = true},
        Mishap{.body = content().substr(1), .hasBody = true},
        Mishap{.body = "<html>", .hasBody = true},
        Mishap{.body = std::string(content().size(), 'x'), .hasBody = true}}) {
    std::filesystem::remove_all(downloads_);
    std::filesystem::create_directories(downloads_);
    writeFile(mirror_ / "the file", content());
    transport_.mishap = [&](const AskedFor& about) {
      return about.request.url.starts_with("http://one.test/") ? what : Mishap();
    };
    EXPECT_EQ(fetch().end, FetchEnd::kComplete);
    EXPECT_EQ(fetched(), content());
  }
}

TEST_F(Fetch, KeepsNothingOfAnotherFile) {
  transport_.mishap = [](const AskedFor&) {
    return Mishap{.body = std::string(content().size(), 'x'), .hasBody = true};
  };
  const FetchResult result = fetch();
  EXPECT_EQ(result.end, FetchEnd::kFailed);
  EXPECT_EQ(result.reason, "http://two.test/the file: the server has another file under this name");
  EXPECT_EQ(fetched(), "");
}

TEST_F(Fetch, GivesUpWhereNothingMoreComes) {
  writeFile(mirror_ / "the file", content());
  transport_.mishap = [](const AskedFor&) { return Mishap{.cutAfter = 0}; };
  EXPECT_EQ(fetch().end, FetchEnd::kFailed);
  EXPECT_EQ(transport_.asked.size(), 2u * update::kMostVainTries);
}

TEST_F(Fetch, EndsWhereItIsCancelledAndKeepsWhatHasCome) {
  const FetchResult result =
      fetchFile(transport_, {"http://one.test/"}, file_, downloads_, [](std::int64_t bytes) {
        if (bytes >= 7000) update::isCancelled = true;
      });
  EXPECT_EQ(result.end, FetchEnd::kCancelled);
  EXPECT_EQ(fetched(), content().substr(0, 7000));
  update::isCancelled = false;
  EXPECT_EQ(fetch().end, FetchEnd::kComplete);
  EXPECT_EQ(transport_.asked.back().request.from, 7000);
}

TEST_F(Fetch, SaysThatTheDiskIsFullAndKeepsWhatHasCome) {
  FetchResult result;
  {
    const FileSizeLimit full(6000);
    result = fetch();
  }
  EXPECT_EQ(result.end, FetchEnd::kNotWritten);
  EXPECT_THAT(result.reason, HasSubstr(".part: "));
  EXPECT_EQ(fetched(), content().substr(0, 6000));
  EXPECT_EQ(fetch().end, FetchEnd::kComplete);
}

TEST_F(Fetch, WritesThroughNoLink) {
  writeFile(folder_ / "precious", "keep me");
  ASSERT_EQ(symlink((folder_ / "precious").c_str(), partPath(downloads_, file_).c_str()), 0);
  EXPECT_EQ(fetch().end, FetchEnd::kNotWritten);
  EXPECT_EQ(readFile(folder_ / "precious"), "keep me");
}

TEST_F(Fetch, NeedsAServer) {
  EXPECT_EQ(fetchFile(transport_, {}, file_, downloads_).reason, "there is no update URL");
}

TEST(ClearDownloads, LeavesWhatIsStillWanted) {
  const TempDir downloads;
  const ReleaseFile wanted = named("a", "a");
  const ReleaseFile other = named("b", "b");
  for (const ReleaseFile& file : {wanted, other}) {
    writeFile(partPath(downloads.str(), file), "1");
    writeFile(downloads / (file.sha256 + ".from"), "2");
  }
  update::clearDownloads(downloads.str(), {wanted});
  std::vector<std::string> left;
  for (const auto& entry : std::filesystem::directory_iterator(downloads.path()))
    left.push_back(entry.path().filename().string());
  EXPECT_THAT(left,
              ::testing::UnorderedElementsAre(wanted.sha256 + ".part", wanted.sha256 + ".from"));
}

}  // namespace
}  // namespace quillory::testing
