#include "packager/commands/archive_facts.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/harness/child_process.h"
#include "tests/harness/records.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;
using testing::records;
using testing::runChild;
using testing::TempDir;
using testing::writeFile;

// An archive of hand-written records, compressed and hashed by independent tools.
TEST(ArchiveFacts, AreThoseOfTheFileAndOfWhatIsInIt) {
  const TempDir dir;
  const std::string plain = records({"0", "qyArcSpBlock_Component1;Demo;3;linux", "0"}) +
                            records({"1", "lib"}) + records({"0", "lib/a", "5"}) + "hello" +
                            records({"0", "b", "2"}) + "hi" + records({""});
  writeFile(dir / "a.p2", plain);
  writeFile(dir / "a.p2.l2", runChild({"xz", "--format=lzma", "-c", dir / "a.p2"}).out);
  const ReleaseComponent component = ArchiveFacts(dir / "a.p2.l2").component("application", "name");
  EXPECT_EQ(component.role, "application");
  EXPECT_EQ(component.name, "Demo");
  EXPECT_EQ(component.version, "3");
  EXPECT_EQ(component.archive.name, "name");
  EXPECT_EQ(component.archive.length, static_cast<std::int64_t>(fs::file_size(dir / "a.p2.l2")));
  EXPECT_EQ(component.archive.sha256, runChild({"sha256sum", dir / "a.p2.l2"}).out.substr(0, 64));
  EXPECT_EQ(component.plainLength, static_cast<std::int64_t>(plain.size()));
  EXPECT_EQ(component.plainSha256, runChild({"sha256sum", dir / "a.p2"}).out.substr(0, 64));
  EXPECT_EQ(component.installedLength, 7);
}

TEST(ArchiveFacts, AreNotToldOfWhatIsNoArchive) {
  const TempDir dir;
  writeFile(dir / "a.p2.l2", "text");
  EXPECT_THROW(ArchiveFacts(dir / "a.p2.l2"), DamagedArchive);
}

}  // namespace
}  // namespace quillory::pack
