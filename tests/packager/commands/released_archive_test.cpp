#include "packager/commands/released_archive.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "formats/sha256.h"
#include "packager/commands/packing.h"
#include "tests/packager/released_project.h"

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

constexpr char kReleasedArchive[] = "Quillory-Hello-1-archive.p2.l2";

// A job that packs what version 1 has, unless a test adds to it.
class ReleasedArchive : public ReleasedProject {
 protected:
  ReleasedArchive() {
    content_.addBytes("content", "file");
    release(config(1));
  }
  // Exchanges the application of release 1 with one of this job.
  void releaseJob() {
    std::ostringstream out, err;
    pack::Reporter reporter(out, err, {});
    pack::packAll({job()}, {0, &key_, pack::Salt::kRandom}, reporter);
    ReleaseList made = list();
    made.components[1].archive = {
        kReleasedArchive, static_cast<std::int64_t>(fs::file_size(releasePath(kReleasedArchive))),
        sha256Hex(readFile(releasePath(kReleasedArchive)))};
    for (const char* end : {"", "-1"}) {
      pack::writeReleaseList(releasePath("Quillory-Hello-stable-releases") + end, made, {&key_},
                             pack::Salt::kDerived);
    }
  }
  pack::PackingJob job(const std::string& version = "1") const {
    return {&content_, releasePath(kReleasedArchive), ArchiveIdentity{"Hello", version, "linux"}};
  }
  std::string found(const pack::PackingJob& job) {
    pack::Findings ignored;
    const pack::ReleaseFolder folder(project_ / "dist/release", "Hello", "stable", {}, ignored);
    return pack::releasedArchive(folder, job, key_);
  }
  std::string refusal(const pack::PackingJob& job) {
    try {
      found(job);
    } catch (const pack::RejectedInput& e) {
      return asText(e.findings().at(0));
    } catch (const pack::PackError& e) {
      return asText(e.finding());
    }
    return "";
  }

  pack::ContentTree content_{"application"};
  const pack::SigningKey key_ = pack::SigningKey::load(Project::key());
};

TEST_F(ReleasedArchive, IsFoundByWhatItIsAndHolds) {
  releaseJob();
  EXPECT_EQ(found(job()), releasePath(kReleasedArchive));
  EXPECT_EQ(found(job("2")), "") << "never released";
}

TEST_F(ReleasedArchive, OfOtherContentIsRefused) {
  releaseJob();
  content_.addBytes("more", "file2");
  EXPECT_THAT(refusal(job()), HasSubstr("[version-used]\n  -> raise application.version"));
}

TEST_F(ReleasedArchive, ThatAnotherKeySignedIsRefused) {
  releaseJob();
  pack::Findings ignored;
  const pack::ReleaseFolder folder(project_ / "dist/release", "Hello", "stable", {}, ignored);
  const pack::SigningKey other = pack::SigningKey::generate(2048);
  EXPECT_THROW(pack::releasedArchive(folder, job(), other), pack::RejectedInput);
}

TEST_F(ReleasedArchive, ThatIsGoneOrAnotherCannotBeTaken) {
  releaseJob();
  writeFile(releasePath(kReleasedArchive), "other");
  EXPECT_EQ(refusal(job()), releasePath(kReleasedArchive) +
                                ": error: is not the archive that was released\n"
                                "  -> get it back from your server");
  fs::remove(releasePath(kReleasedArchive));
  EXPECT_EQ(refusal(job()),
            releasePath(kReleasedArchive) + ": error: is gone\n  -> get it back from your server");
}

}  // namespace
}  // namespace quillory::testing
