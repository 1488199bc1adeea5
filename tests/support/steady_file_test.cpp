#include "support/steady_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>

#include "tests/harness/file_size_limit.h"
#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

using testing::FileSizeLimit;
using testing::readFile;
using testing::TempDir;
using testing::writeFile;

TEST(UntilUninterrupted, MakesACallAgainThatASignalInterrupts) {
  int calls = 0;
  const auto call = [&calls] {
    errno = EINTR;
    return ++calls < 3 ? -1 : 7;
  };
  EXPECT_EQ(untilUninterrupted(call), 7);
  EXPECT_EQ(calls, 3);
}

TEST(UntilUninterrupted, MakesAnyOtherFailureNotAgain) {
  int calls = 0;
  const auto call = [&calls] {
    ++calls;
    errno = EIO;
    return -1;
  };
  EXPECT_EQ(untilUninterrupted(call), -1);
  EXPECT_EQ(calls, 1);
}

TEST(InTwoTries, AsksTwiceAndNotMore) {
  int calls = 0;
  EXPECT_TRUE(inTwoTries([&calls] { return ++calls == 2; }));
  EXPECT_FALSE(inTwoTries([&calls] { return ++calls == 0; }));
  EXPECT_EQ(calls, 4);
  EXPECT_TRUE(inTwoTries([&calls] { return ++calls == 5; }));
  EXPECT_EQ(calls, 5);
}

bool isOpenDescriptor(int descriptor) { return fcntl(descriptor, F_GETFD) != -1; }

TEST(OwnedDescriptor, ClosesWhatItHas) {
  OwnedDescriptor first = openSteadily("/dev/null", O_RDONLY);
  const int one = first.get();
  OwnedDescriptor second = openSteadily("/dev/null", O_RDONLY);
  const int two = second.get();
  second = std::move(first);
  EXPECT_FALSE(isOpenDescriptor(two));
  EXPECT_EQ(second.get(), one);
  second.reset();
  EXPECT_FALSE(isOpenDescriptor(one));
  EXPECT_EQ(second.get(), -1);
}

TEST(OpenSteadily, IsNotInheritedAndTellsWhyNot) {
  const OwnedDescriptor null = openSteadily("/dev/null", O_RDONLY);
  EXPECT_EQ(fcntl(null.get(), F_GETFD), FD_CLOEXEC);
  EXPECT_EQ(openSteadily("/nonexistent/file", O_RDONLY).get(), -1);
  EXPECT_EQ(errno, ENOENT);
}

class Pipe {
 public:
  Pipe() {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) == 0) {
      out = OwnedDescriptor(ends[0]);
      in = OwnedDescriptor(ends[1]);
    }
  }
  OwnedDescriptor out, in;
};

// A pipe gives and takes what is there: less than was asked for.
TEST(ReadSteadily, GoesOnBehindAShortRead) {
  Pipe pipe;
  std::thread writer([&pipe] {
    for (const std::string part : {"one ", "two ", "three"}) writeSteadily(pipe.in.get(), part);
    pipe.in.reset();
  });
  std::string bytes(100, '\0');
  EXPECT_EQ(readSteadily(pipe.out.get(), bytes.data(), bytes.size()), 13);
  EXPECT_EQ(bytes.substr(0, 13), "one two three");
  writer.join();
  EXPECT_EQ(readSteadily(-1, bytes.data(), 1), -1);
}

TEST(WriteSteadily, GoesOnBehindAShortWrite) {
  Pipe pipe;
  const std::string sent(1'000'000, 'x');  // much more than a pipe holds
  bool isWritten = false;
  std::thread writer([&] {
    isWritten = writeSteadily(pipe.in.get(), sent);
    pipe.in.reset();
  });
  std::string received(sent.size() + 1, '\0');
  EXPECT_EQ(readSteadily(pipe.out.get(), received.data(), received.size()), ssize_t{1'000'000});
  writer.join();
  EXPECT_TRUE(isWritten);
  EXPECT_FALSE(writeSteadily(-1, "x"));
}

TEST(ReadWholeFile, GivesAllBytes) {
  const TempDir folder;
  for (const std::size_t size : {0U, 1U, 65'535U, 65'536U, 65'537U, 200'000U}) {
    const std::string content(size, 'y');
    writeFile(folder / "file", content);
    EXPECT_EQ(readWholeFile(folder / "file"), content);
  }
}

TEST(ReadWholeFile, GivesNothingForAFolderOrWhereThereIsNone) {
  const TempDir folder;
  EXPECT_EQ(readWholeFile(folder.str()), std::nullopt);
  EXPECT_EQ(errno, EISDIR);
  EXPECT_EQ(readWholeFile(folder / "missing"), std::nullopt);
  EXPECT_EQ(errno, ENOENT);
}

std::string allOf(std::FILE* stream) {
  std::string bytes;
  for (int byte = std::getc(stream); byte != EOF; byte = std::getc(stream))
    bytes += static_cast<char>(byte);
  return bytes;
}

TEST(StreamOver, ReadsTheBytesAndNoMore) {
  for (const std::string& bytes : {std::string(), std::string("x"), std::string("a\0b", 3),
                                   std::string("ends in zero\0", 13), std::string(100'000, 'z')}) {
    const OwnedFile stream = streamOver(bytes);
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(allOf(stream.get()), bytes);
    EXPECT_EQ(std::ferror(stream.get()), 0);
  }
}

TEST(SteadyWriter, WritesSmallAndLargePartsInTheirOrder) {
  const TempDir folder;
  SteadyWriter writer(openSteadily(folder / "file", O_WRONLY | O_CREAT, 0600));
  ASSERT_TRUE(writer.isOpen());
  std::string expected;
  for (const std::size_t size : {3U, 70'000U, 5U, 65'535U, 65'536U, 1U}) {
    const std::string part(size, static_cast<char>('a' + expected.size() % 26));
    expected += part;
    EXPECT_TRUE(writer.write(part.data(), part.size()));
  }
  EXPECT_TRUE(writer.close());
  EXPECT_FALSE(writer.isOpen());
  EXPECT_EQ(readFile(folder / "file"), expected);
}

TEST(SteadyWriter, TellsWhatTheDiskDoesNotTake) {
  const TempDir folder;
  const FileSizeLimit limit(1'000);
  SteadyWriter late(openSteadily(folder / "late", O_WRONLY | O_CREAT, 0600));
  const std::string small(2'000, 'x'), large(100'000, 'x');
  EXPECT_TRUE(late.write(small.data(), small.size())) << "collected";
  EXPECT_FALSE(late.close());
  EXPECT_EQ(errno, EFBIG);
  SteadyWriter early(openSteadily(folder / "early", O_WRONLY | O_CREAT, 0600));
  EXPECT_FALSE(early.write(large.data(), large.size()));
  EXPECT_EQ(errno, EFBIG);
}

TEST(SteadyWriter, DropsWhatWasNotFlushed) {
  const TempDir folder;
  {
    SteadyWriter writer(openSteadily(folder / "file", O_WRONLY | O_CREAT, 0600));
    writer.write("one", 3);
    EXPECT_TRUE(writer.flush());
    writer.write("two", 3);
  }
  EXPECT_EQ(readFile(folder / "file"), "one");
}

}  // namespace
}  // namespace quillory
