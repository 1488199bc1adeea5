#include "support/output_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <utility>

#include "support/durable.h"

namespace quillory {
namespace {

// Names of unfinished files for the signal handler, which may touch nothing but atomics. The texts
// belong to the OutputFile objects.
std::array<std::atomic<const char*>, 16> unfinished;

void remember(const char* path) {
  for (auto& slot : unfinished) {
    const char* empty = nullptr;
    if (slot.compare_exchange_strong(empty, path)) {
      return;
    }
  }
}

void forget(const char* path) {
  for (auto& slot : unfinished) {
    const char* expected = path;
    if (slot.compare_exchange_strong(expected, nullptr)) {
      return;
    }
  }
}

extern "C" void removeUnfinishedAndDie(int number) {
  for (auto& slot : unfinished) {
    if (const char* path = slot.load()) {
      unlink(path);
    }
  }
  std::signal(number, SIG_DFL);
  std::raise(number);
}

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "" : path.substr(0, slash + 1);
}

// The umask can only be read by setting it; the packager does so before it starts threads.
mode_t currentUmask() {
  const mode_t mask = umask(022);
  umask(mask);
  return mask;
}

}  // namespace

OutputFile::OutputFile(std::string path, unsigned mode, Durability durability)
    : OutputFile(std::move(path), ExactMode{mode & ~currentUmask()}, durability) {}

OutputFile::OutputFile(std::string path, ExactMode mode, Durability durability)
    : path_(std::move(path)), durability_(durability) {
  struct stat there;
  if (lstat(path_.c_str(), &there) == 0 && !S_ISREG(there.st_mode) && !S_ISLNK(there.st_mode)) {
    error_ = path_ + ": is not a plain file";
    return;
  }
  beside_ = folderOf(path_) + std::string(kUnfinishedPrefix) + "XXXXXX";
  const std::string pattern = beside_;
  const int descriptor = untilUninterrupted([&] {
    beside_ = pattern;
    return mkostemp(beside_.data(), O_CLOEXEC);
  });
  if (descriptor < 0) {
    fail("cannot be created", errno);
    beside_.clear();
    return;
  }
  file_ = SteadyWriter(OwnedDescriptor(descriptor));
  remember(beside_.c_str());
  // Whoever cleans up behind killed processes knows by this that the file is being written.
  flock(descriptor, LOCK_EX | LOCK_NB);
  // Without its mode it may be a program that cannot be run, or a secret that all can read.
  if (!inTwoTries([&] { return fchmod(descriptor, static_cast<mode_t>(mode.bits)) == 0; }))
    fail("cannot get its mode", errno);
}

OutputFile::~OutputFile() {
  if (beside_.empty()) {
    return;
  }
  file_ = SteadyWriter();
  unlink(beside_.c_str());
  forget(beside_.c_str());
}

bool OutputFile::fail(const char* what, int number) {
  error_ = path_ + ": " + what + ": " + std::strerror(number);
  return false;
}

bool OutputFile::write(const void* data, std::size_t size) {
  if (!error_.empty()) {
    return false;
  }
  return file_.write(data, size) || fail("cannot be written", errno);
}

bool OutputFile::isFlushed() {
  if (!file_.flush()) {
    return fail("cannot be written", errno);
  }
  return syncFile(file_.descriptor(), path_) || fail("cannot be written", errno);
}

bool OutputFile::commit() {
  if (!error_.empty()) {
    return false;
  }
  if (durability_ == Durability::kFlushed && !isFlushed()) {
    return false;
  }
  if (!file_.close()) {
    return fail("cannot be written", errno);
  }
  if (!inTwoTries([&] { return std::rename(beside_.c_str(), path_.c_str()) == 0; })) {
    return fail("cannot be put in place", errno);
  }
  forget(beside_.c_str());
  beside_.clear();
  if (durability_ == Durability::kFlushed) {
    const std::string folder = folderOf(path_);
    syncFolder(folder.empty() ? "." : folder);
  }
  return true;
}

void removeUnfinishedFilesOnSignals() {
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
    if (std::signal(number, removeUnfinishedAndDie) == SIG_IGN) {
      std::signal(number, SIG_IGN);
    }
  }
}

}  // namespace quillory
