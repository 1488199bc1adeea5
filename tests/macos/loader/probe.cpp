// A program for macOS that says what of its C++ works: run by the loader, it is the loader that is
// looked at. Each line is a name and what came of it.
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

struct Counted {
  ~Counted() { ++destroyed; }
  static inline int destroyed = 0;
};

__attribute__((noinline)) void throwDeep(int depth, int number) {
  const Counted counted;
  // Of several sizes, so that frames of each kind are passed.
  volatile char room[3000];
  room[depth] = 1;
  if (depth == 0) throw std::runtime_error("number " + std::to_string(number));
  throwDeep(depth - 1, number);
  room[0] = 2;
}

void exceptions() {
  try {
    try {
      throwDeep(10, 7);
    } catch (const std::logic_error&) {
      std::puts("exceptions: the wrong handler");
    } catch (const std::runtime_error& error) {
      std::printf("caught: %s\n", error.what());
      throw;
    }
  } catch (...) {
    std::printf("rethrown: %d frames left\n", Counted::destroyed);
  }
}

thread_local int counter = 5;
thread_local std::string text = "own";

void threadLocals() {
  counter += 1;
  std::string others;
  std::thread([&] {
    counter += 10;
    others = text + std::to_string(counter);
    text = "gone";
  }).join();
  std::printf("thread-local: %d %s, of another thread %s\n", counter, text.c_str(), others.c_str());
}

void* stackSizeOfThread(void*) {
  return reinterpret_cast<void*>(pthread_get_stacksize_np(pthread_self()));
}

void errorNumbers() {
  const bool failed = open("/no/such/file", O_RDONLY | O_CLOEXEC) < 0;
  std::printf("open: %d, ENOENT %d\n", failed, errno == ENOENT);
  errno = 0;
  std::strtol("99999999999999999999999", nullptr, 10);
  std::printf("strtol: ERANGE %d\n", errno == ERANGE);
  std::error_code code;
  std::filesystem::remove("/proc/self", code);
  std::printf("remove: %d\n", code.value() != 0);
}

void files() {
  char folder[] = "/tmp/macho-probe-XXXXXX";
  if (mkdtemp(folder) == nullptr) return;
  namespace fs = std::filesystem;
  const fs::path root = folder;
  std::ofstream(root / "a") << "hello\n";
  fs::create_directory(root / "sub");
  fs::create_symlink("a", root / "sub/link");
  fs::copy_file(root / "a", root / "b");
  int count = 0;
  for (const auto& entry : fs::recursive_directory_iterator(root)) count += !entry.path().empty();
  struct stat found;
  stat((root / "b").c_str(), &found);
  std::printf("files: %d entries, %d bytes, file %d\n", count, static_cast<int>(found.st_size),
              S_ISREG(found.st_mode));
  std::error_code code;
  fs::remove(root, code);
  std::printf("a full folder: ENOTEMPTY %d\n", code.value() == ENOTEMPTY);
  fs::remove_all(root);
}

int lastSignal = 0;

void signals() {
  signal(SIGUSR1, [](int number) { lastSignal = number; });
  raise(SIGUSR1);
  const int status = system("kill -USR2 $$");
  std::printf("signals: SIGUSR1 %d, child by SIGUSR2 %d\n", lastSignal == SIGUSR1,
              WIFSIGNALED(status) && WTERMSIG(status) == SIGUSR2);
}

struct BeforeMain {
  BeforeMain() { ready = true; }
  static inline bool ready = false;
} beforeMain;

}  // namespace

int main(int argc, char** argv) {
  std::printf("arguments: %d %s, initialised %d\n", argc, argv[argc - 1], BeforeMain::ready);
  exceptions();
  threadLocals();
  errorNumbers();
  files();
  signals();
  pthread_t thread;
  void* size = nullptr;
  pthread_create(&thread, nullptr, stackSizeOfThread, nullptr);
  pthread_join(thread, &size);
  std::printf("stack of a thread: %zu KiB\n", reinterpret_cast<std::size_t>(size) / 1024);
  std::fflush(stdout);
  throw std::runtime_error("nobody catches this");
}
