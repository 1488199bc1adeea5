#include "formats/archive_tools.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "formats/archive.h"
#include "tests/formats/archive_parts.h"
#include "tests/harness/captured_log.h"
#include "tests/harness/scoped_replace.h"
#include "tests/harness/stream_of.h"

namespace quillory {
namespace {

using testing::ArchiveSite;
using testing::CapturedLog;
using ::testing::ElementsAre;
using testing::endOfArchive;
using ::testing::ExitedWithCode;
using testing::fileEntry;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::modeOf;
using testing::readFile;
using testing::ScopedReplace;
using testing::signatureBlock;
using testing::StreamOf;
using testing::writeFile;
namespace fs = std::filesystem;

// The tools are shell scripts: what they are given is in their log, and what they make is their
// input turned to upper case.
class WithTools : public ::testing::Test, public ArchiveSite {
 protected:
  WithTools() {
    makeTool("unpack200", "echo \"$#:$1:$2\" >> " + beside("calls") + "; tr a-z A-Z < $1 > $2");
    makeTool("lzma64", "echo \"$#:$1:$2:$3\" >> " + beside("calls") + "; tr a-z A-Z < $2 > $3");
    makeTool("broken", "exit 1");
  }

  void makeTool(const std::string& name, const std::string& commands) const {
    writeFile(beside(name), "#!/bin/sh\n" + commands + "\n");
    fs::permissions(beside(name), fs::perms{0755});
  }

  std::string toolCalls() const { return readFile(beside("calls")); }

  // As the entries of the tail are extracted.
  void extractFromTail(const std::string& bytes, const std::string& lzmaTool = "lzma64") const {
    StreamOf stream(bytes);
    EXPECT_EQ(
        extractArchiveFileIgnoreSignature(beside(lzmaTool).c_str(), beside("unpack200").c_str(),
                                          destDir().c_str(), stream.get(), nullptr),
        0);
  }

  void extractArchiveWith(const std::string& unpack200Tool, const std::string& bytes) const {
    writeFile(archive(), bytes);
    extractArchive(beside(unpack200Tool).c_str(), archive().c_str(), destDir().c_str(), nullptr);
  }
};

TEST_F(WithTools, Pack200EntryIsUnpackedToItsPath) {
  const ScopedReplace none(up200modified, 0);
  extractArchiveWith("unpack200", fileEntry("lib/a.jar", "packed", "2") + endOfArchive());
  EXPECT_THAT(extracted(), ElementsAre("lib/", "lib/a.jar"));
  EXPECT_EQ(readFile(inDest("lib/a.jar")), "PACKED");
  EXPECT_EQ(toolCalls(), "2:" + inDest("lib/a.jar.p2") + ":" + inDest("lib/a.jar") + "\n");
  EXPECT_EQ(up200modified, 1);
}

TEST_F(WithTools, Pack200EntryIsWrittenBesideItsPathFirst) {
  makeTool("unpack200", "stat -c %a $1 > " + beside("mode") + "; cp $1 $2; chmod 640 $2");
  CapturedLog log;
  extractArchiveWith("unpack200", fileEntry("lib/a.jar", "packed", "2") + endOfArchive());
  EXPECT_TRUE(log.contains("\t[ExtractArchiveFile] Extracting to " + inDest("lib/a.jar.p2") + "\n" +
                           "[ChMod] Executing chmod -R 755 \"" + inDest("lib/a.jar.p2") + "\"\n"));
  EXPECT_EQ(readFile(beside("mode")), "755\n");
  EXPECT_EQ(modeOf(inDest("lib/a.jar")), 0640U) << "as the tool has left it";
}

#ifdef __linux__
// Its output has a name beside its place until the launcher has opened it.
TEST_F(WithTools, ArchiveIsHashedWhileItIsDecompressed) {
  makeTool("lzma64",
           "part=$(dirname $3)/.unfinished-aaaaaa; head -c 100000 /dev/zero > $part\n"
           "until ls -l /proc/$PPID/fd | grep -q $part; do :; done\n"
           "mv $part $3");
  writeFile(inDest("a.p2.l2"), "packed");
  const Decompressed archive = decompressLzma(beside("lzma64").c_str(), inDest("a.p2.l2"));
  EXPECT_EQ(archive.path, inDest("a.p2"));
  EXPECT_GT(archive.digest.part.length, 0);
  EXPECT_FALSE(fs::exists(inDest("a.p2.l2")));
}
#endif

TEST_F(WithTools, PlainFilesNeedNoUnpack200) {
  const ScopedReplace none(up200modified, 0);
  extractArchiveWith("unpack200", fileEntry("a.jar", "hi"));
  EXPECT_EQ(up200modified, 0);
  EXPECT_FALSE(fs::exists(beside("calls")));
}

TEST_F(WithTools, Unpack200ThatMakesNothingEndsTheProcess) {
  for (const char* tool : {"broken", "missing"}) {
    SCOPED_TRACE(tool);
    EXPECT_EXIT(extractArchiveWith(tool, fileEntry("a.jar", "packed", "2")), ExitedWithCode(101),
                HasSubstr("\t[ExtractArchiveFile] ERROR: unpack200 (" + inDest("a.jar") +
                          ") does not exist!\n"));
  }
}

TEST_F(WithTools, Pack200EntryWithoutAToolEndsTheProcess) {
  writeFile(archive(), fileEntry("a.jar", "packed", "2"));
  EXPECT_EXIT(extractArchive(nullptr, archive().c_str(), destDir().c_str(), nullptr),
              ExitedWithCode(101), HasSubstr(" does not exist!\n"));
}

TEST_F(WithTools, OlderFileIsNotTakenForWhatUnpack200Made) {
  writeFile(inDest("a.jar"), "old");
  EXPECT_EXIT(extractArchiveWith("broken", fileEntry("a.jar", "packed", "2")), ExitedWithCode(101),
              HasSubstr(" does not exist!\n"));
}

TEST_F(WithTools, ToolsDoNotWriteThroughPlantedLinks) {
  writeFile(beside("victim"), "untouched");
  fs::create_symlink(beside("victim"), inDest("a.jar"));
  fs::create_symlink(beside("victim"), inDest("b"));
  extractArchiveWith("unpack200", fileEntry("a.jar", "packed", "2"));
  extractFromTail(fileEntry("b.l2", "squeezed"));
  EXPECT_EQ(readFile(beside("victim")), "untouched");
  EXPECT_EQ(readFile(inDest("a.jar")), "PACKED");
  EXPECT_EQ(readFile(inDest("b")), "SQUEEZED");
}

TEST_F(WithTools, LzmaFileOfTheTailIsDecompressed) {
  CapturedLog log;
  extractFromTail(fileEntry("dir/a.l2", "squeezed"));
  EXPECT_THAT(extracted(), ElementsAre("dir/", "dir/a"));
  EXPECT_EQ(readFile(inDest("dir/a")), "SQUEEZED");
  EXPECT_EQ(toolCalls(), "3:d:" + inDest("dir/a.l2") + ":" + inDest("dir/a") + "\n");
  EXPECT_TRUE(
      log.contains("\t[ExtractArchiveFile] Requires un-LZMA\n"
                   "\t[ExtractArchiveFile] Created outpath " +
                   inDest("dir/a") + " and spawning\n"));
  EXPECT_TRUE(log.contains("\t[ExtractArchiveFile] Finished decompressing\n"));
}

TEST_F(WithTools, LzmaToolThatFailsIsNotNoticed) {
  extractFromTail(fileEntry("a.l2", "squeezed"), "broken");
  EXPECT_THAT(extracted(), IsEmpty());
}

TEST_F(WithTools, ArchiveInTheTailIsExtractedIntoTheSameFolderAndDeleted) {
  CapturedLog log;
  extractFromTail(fileEntry("app.p2", fileEntry("a", "hi") + fileEntry("b.l2", "left alone")));
  EXPECT_THAT(extracted(), ElementsAre("a", "b.l2"));
  EXPECT_EQ(log.messages().back(), "\t[ExtractArchiveFile] Finished un-archiving\n");
  EXPECT_TRUE(
      log.contains("\t[ExtractArchiveFile] Starting un-p2Archiving\n"
                   "[ExtractArchive] Extracting archive " +
                   inDest("app.p2") + " into " + destDir() + "\n"));
}

TEST_F(WithTools, CompressedArchiveInTheTailIsDecompressedAndExtracted) {
  makeTool("lzma64", "cp $2 $3");
  extractFromTail(fileEntry("dir/app.p2.l2", fileEntry("lib/a", "hi") + endOfArchive()));
  EXPECT_THAT(extracted(), ElementsAre("dir/", "lib/", "lib/a"));
}

TEST_F(WithTools, Pack200EntryOfTheTailIsUnpackedDecompressedAndExtracted) {
  makeTool("unpack200", "cp $1 $2");
  makeTool("lzma64", "cp $2 $3");
  extractFromTail(fileEntry("app.p2.l2", fileEntry("a", "hi"), "2"));
  EXPECT_THAT(extracted(), ElementsAre("a"));
}

TEST_F(WithTools, NestedArchiveThatCannotBeMadeEndsTheProcess) {
  EXPECT_EXIT(extractFromTail(fileEntry("app.p2.l2", "squeezed"), "broken"), ExitedWithCode(1),
              HasSubstr("couldn't open file " + inDest("app.p2") + "\n"));
}

TEST_F(WithTools, RejectedNestedArchiveEmptiesTheFolder) {
  const std::string nested = fileEntry("a", "hi") + signatureBlock("14", "00");
  writeFile(inDest("older"), "hi");
  extractFromTail(fileEntry("app.p2", nested));
  EXPECT_THAT(extracted(), IsEmpty());
}

TEST_F(WithTools, SuffixesMeanNothingWithoutAnLzmaTool) {
  StreamOf stream(fileEntry("a.l2", "hi") + fileEntry("b.p2", "hi"));
  for (int i = 0; i < 2; ++i)
    extractArchiveFileIgnoreSignature(nullptr, nullptr, destDir().c_str(), stream.get(), nullptr);
  EXPECT_THAT(extracted(), ElementsAre("a.l2", "b.p2"));
}

TEST_F(WithTools, PathBelowFourCharactersIsNotCheckedForSuffixes) {
  CapturedLog log;
  const fs::path before = fs::current_path();
  fs::current_path(destDir());
  StreamOf stream(fileEntry("a", "hi"));
  extractArchiveFileIgnoreSignature("lzma64", nullptr, ".", stream.get(), nullptr);
  fs::current_path(before);
  EXPECT_EQ(readFile(inDest("a")), "hi");
  EXPECT_EQ(log.messages().back(),
            "\t[ExtractArchiveFile] Path to file too short to check for LZMA\n");
}

TEST(DecompressLzma, ReturnsThePathWithoutTheSuffix) {
  CapturedLog log;
  ArchiveSite site;
  writeFile(site.inDest("a.l2"), "squeezed");
  EXPECT_EQ(decompressLzma("/missing", site.inDest("a.l2")).path, site.inDest("a"));
  EXPECT_THAT(site.extracted(), IsEmpty());
}

TEST(UnpackPack200, KeepsThePackedFileWhenNothingWasMade) {
  CapturedLog log;
  ArchiveSite site;
  writeFile(site.inDest("a.p2"), "packed");
  EXPECT_FALSE(unpackPack200(nullptr, site.inDest("a.p2"), site.inDest("a")));
  EXPECT_THAT(site.extracted(), ElementsAre("a.p2"));
}

}  // namespace
}  // namespace quillory
