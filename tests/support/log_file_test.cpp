#include "support/log_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <thread>

#include "tests/harness/temp_dir.h"

namespace quillory {
namespace {

using testing::readFile;
using testing::TempDir;

bool isOpen(int descriptor) { return fcntl(descriptor, F_GETFD) != -1; }

TEST(LogFile, HasNoStreamAtFirst) {
  const TempDir folder;
  LogFile log;
  log.write("lost\n");
  log.close();
  log.set(std::fopen((folder / "log").c_str(), "w"));
  log.close();
  EXPECT_EQ(readFile(folder / "log"), "");
}

TEST(LogFile, WritesAndFlushesEveryLine) {
  const TempDir folder;
  const std::string path = folder / "log";
  LogFile log;
  log.set(std::fopen(path.c_str(), "w"));
  log.write("one\n");
  EXPECT_EQ(readFile(path), "one\n");
  log.write("two\n");
  EXPECT_EQ(readFile(path), "one\ntwo\n");
  log.close();
}

TEST(LogFile, ClosesItsStreamOnce) {
  const TempDir folder;
  std::FILE* stream = std::fopen((folder / "log").c_str(), "w");
  const int descriptor = fileno(stream);
  LogFile log;
  log.set(stream);
  log.close();
  EXPECT_FALSE(isOpen(descriptor));
  log.close();
  log.write("lost\n");
  EXPECT_EQ(readFile(folder / "log"), "");
}

TEST(LogFile, LeavesAReplacedStreamOpen) {
  const TempDir folder;
  std::FILE* stream = std::fopen((folder / "log").c_str(), "w");
  LogFile log;
  log.set(stream);
  log.set(nullptr);
  log.close();
  EXPECT_TRUE(isOpen(fileno(stream)));
  std::fclose(stream);
}

TEST(LogFile, IgnoresAFullDisk) {
  LogFile log;
  const TempDir folder;
  log.set(std::fopen("/dev/full", "w"));
  log.write("lost\n");
  log.write("lost\n");
  log.close();
  log.set(std::fopen((folder / "log").c_str(), "w"));
  log.write("written\n");
  log.close();
  EXPECT_EQ(readFile(folder / "log"), "written\n");
}

void waitUntilFull(int pipeEnd) {
  const int capacity = fcntl(pipeEnd, F_GETPIPE_SZ);
  for (int waiting = 0; waiting < capacity; ioctl(pipeEnd, FIONREAD, &waiting))
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

std::string readToEnd(int descriptor) {
  std::string all;
  char chunk[4096];
  for (ssize_t count = 0; (count = read(descriptor, chunk, sizeof chunk)) > 0;)
    all.append(chunk, static_cast<std::size_t>(count));
  return all;
}

// The pipe is full, so that the write is under way for as long as the test wants.
TEST(LogFile, IsClosedBehindAWriteThatIsUnderWay) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const std::string line(1000000, 'x');
  LogFile log;
  log.set(fdopen(ends[1], "w"));
  std::thread writer([&] { log.write(line); });
  waitUntilFull(ends[0]);

  log.close();  // does not wait
  EXPECT_TRUE(isOpen(ends[1]));
  log.write("behind the end\n");
  EXPECT_TRUE(isOpen(ends[1]));

  EXPECT_EQ(readToEnd(ends[0]), line);  // it ends: the writer has closed the stream
  writer.join();
  EXPECT_FALSE(isOpen(ends[1]));
  close(ends[0]);
}

TEST(LogFile, MayBeClosedAtAnyMomentOfManyWrites) {
  const TempDir folder;
  for (int round = 0; round < 200; ++round) {
    const std::string path = folder / "log";
    LogFile log;
    log.set(std::fopen(path.c_str(), "w"));
    std::thread one([&] {
      for (int i = 0; i < 50; ++i) log.write("0123456789\n");
    });
    std::thread other([&] {
      for (int i = 0; i < 50; ++i) log.write("0123456789\n");
    });
    log.close();
    one.join();
    other.join();
    const std::string content = readFile(path);
    EXPECT_EQ(content.size() % 11, 0U);
  }
}

}  // namespace
}  // namespace quillory
