// Usage: fault_injector [OPTION]... -- COMMAND...
//
//   --under FOLDER        what counts is done to files in it, or makes a process or a thread; there
//                         may be more than one
//   --ignore TEXT         except to paths that hold TEXT
//   --calls change|all    only calls that change something, or also those that read or make
//   --fault NAME          what happens to a call: fault.h has the names
//   --at N, --from N      to the call of this number, or to all from it on; the first is 1
//   --report FILE         where to say what came of it
//   --list                with a line a call
//
// Runs a command, sees the system calls of its processes, counts, and puts one fault into them. The
// calls are seen where the system gets them, so that neither a buffer nor a static program hides
// one. Sleeps of half a minute and more are not waited for. Ends when the last process does, with
// the command's status, or 128 and its signal. The lines of the report:
//
//   status N        of the command          signal N    that ended it, or 0
//   calls N         counted                 hit 0|1     whether the fault was put in
//   slept N         seconds not waited for
//   dirty DEV INO   a file with content that no fsync or syncfs has followed
//   call N NAME KIND FAULTS PATH    FAULTS: those that can happen to it, with commas between
#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/faults/fault.h"
#include "tests/faults/tracee.h"

namespace quillory::faults {
namespace {

constexpr std::int64_t kLongestSleep = 30;
constexpr int kUnusable = 125;  // as env(1) and others say that they could not begin

struct Options {
  std::vector<std::string> under;
  std::string ignored;
  bool countsAll = false;
  Fault fault;
  long at = 0;
  bool isForAllFrom = false;
  std::string report;
  bool isListed = false;
};

/// A call that is being made, and what is to be done behind it.
struct Behind {
  PendingCall pending;
  bool isReplaced = false;
  std::int64_t result = 0;
};

class Run {
 public:
  explicit Run(Options options) : options_(std::move(options)), report_(options_.report) {}

  int follow(pid_t command);

 private:
  void before(pid_t thread);
  void behind(pid_t thread);
  bool isUnder(const std::string& path) const;
  bool counts(const PendingCall& pending) const;
  void list(pid_t thread, const PendingCall& pending);
  bool putFault(pid_t thread, const PendingCall& pending, Behind& later);
  void noteData(pid_t thread, const PendingCall& pending);
  void resume(pid_t thread, int signal = 0, bool untilBehind = false);
  void killAll() const;
  void writeReport();

  using File = std::pair<unsigned long, unsigned long>;  // device and inode

  Options options_;
  std::ofstream report_;
  std::set<pid_t> threads_;
  std::map<pid_t, Behind> calls_;
  std::set<File> dirty_;
  long count_ = 0;
  bool isHit_ = false;
  std::int64_t slept_ = 0;
  int status_ = 0;
  int signal_ = 0;
};

bool Run::isUnder(const std::string& path) const {
  return std::any_of(options_.under.begin(), options_.under.end(),
                     [&path](const auto& folder) { return path.rfind(folder, 0) == 0; });
}

bool Run::counts(const PendingCall& pending) const {
  if (pending.kind == CallKind::kSleep) return false;
  if (!options_.countsAll && pending.kind != CallKind::kChange) return false;
  if (pending.kind == CallKind::kMake || pending.call->naming == Naming::kNothing) return true;
  const bool isIgnored =
      !options_.ignored.empty() && pending.path.find(options_.ignored) != std::string::npos;
  return isUnder(pending.path) && !isIgnored;
}

void Run::list(pid_t thread, const PendingCall& pending) {
  constexpr const char* kKinds[] = {"change", "read", "make"};
  const bool isThread = pending.kind == CallKind::kMake && makesThread(thread, pending);
  report_ << "call " << count_ << ' ' << pending.call->name << ' '
          << (isThread ? "thread" : kKinds[static_cast<int>(pending.kind)]) << ' '
          << faultsFor(pending) << ' ' << pending.path << '\n';
}

void Run::killAll() const {
  for (const pid_t thread : threads_) kill(thread, SIGKILL);
}

/// Whether the process stands behind the call next; after a kill it stands nowhere.
bool Run::putFault(pid_t thread, const PendingCall& pending, Behind& later) {
  const bool isDue = options_.isForAllFrom ? count_ >= options_.at : count_ == options_.at;
  if (!isDue || !canHappen(options_.fault, pending)) return true;
  switch (options_.fault.kind) {
    case FaultKind::kNone:
      return true;
    case FaultKind::kKill:
      isHit_ = true;
      kill(processOf(thread), SIGKILL);
      return false;
    case FaultKind::kKillAll:
      isHit_ = true;
      killAll();
      return false;
    case FaultKind::kShort:
      isHit_ = halveCall(thread, pending) || isHit_;
      return true;
    case FaultKind::kFail:
      isHit_ = true;
      skipCall(thread);
      later.isReplaced = true;
      later.result = -options_.fault.error;
      return true;
  }
  return true;
}

void Run::before(pid_t thread) {
  Behind later;
  later.pending = pendingCallOf(thread);
  if (later.pending.call == nullptr) return resume(thread);
  if (later.pending.kind == CallKind::kSleep) {
    const std::int64_t seconds = secondsOf(thread, later.pending);
    if (seconds < kLongestSleep) return resume(thread);
    slept_ += seconds;
    skipCall(thread);
    later.isReplaced = true;
  } else if (counts(later.pending)) {
    ++count_;
    if (options_.isListed) list(thread, later.pending);
    if (!putFault(thread, later.pending, later)) return;
  }
  const bool hasResult = later.isReplaced || later.pending.kind == CallKind::kChange;
  if (hasResult) calls_[thread] = std::move(later);
  resume(thread, 0, hasResult);
}

/// Keeps account of whose content is on the disk for certain.
void Run::noteData(pid_t thread, const PendingCall& pending) {
  const int number = pending.call->number;
  if (number == SYS_sync || number == SYS_syncfs) return dirty_.clear();
  const bool isSync = number == SYS_fsync || number == SYS_fdatasync;
  const bool isWrite = number == SYS_write || number == SYS_pwrite64 || number == SYS_writev ||
                       number == SYS_pwritev || number == SYS_sendfile ||
                       number == SYS_copy_file_range;
  if (!isSync && !isWrite) return;
  const auto descriptor =
      static_cast<int>(pending.arguments[static_cast<std::size_t>(pending.call->argument)]);
  if (!isUnder(pending.path)) return;
  const std::string path = "/proc/" + std::to_string(thread) + "/fd/" + std::to_string(descriptor);
  struct stat found {};
  if (stat(path.c_str(), &found) != 0 || !S_ISREG(found.st_mode)) return;
  const File file = {found.st_dev, found.st_ino};
  if (isSync) {
    dirty_.erase(file);
  } else {
    dirty_.insert(file);
  }
}

void Run::behind(pid_t thread) {
  const auto found = calls_.find(thread);
  if (found == calls_.end()) return resume(thread);
  const Behind call = std::move(found->second);
  calls_.erase(found);
  if (call.isReplaced) {
    leaveCall(thread, call.result);
  } else if (resultOf(thread) >= 0) {
    noteData(thread, call.pending);
  }
  resume(thread);
}

void Run::resume(pid_t thread, int signal, bool untilBehind) {
  ptrace(untilBehind ? PTRACE_SYSCALL : PTRACE_CONT, thread, nullptr, signal);
}

void Run::writeReport() {
  report_ << "status " << status_ << "\nsignal " << signal_ << "\ncalls " << count_ << "\nhit "
          << isHit_ << "\nslept " << slept_ << '\n';
  for (const auto& [device, inode] : dirty_) report_ << "dirty " << device << ' ' << inode << '\n';
}

int Run::follow(pid_t command) {
  threads_.insert(command);
  for (;;) {
    int stop = 0;
    const pid_t thread = waitpid(-1, &stop, __WALL);
    if (thread < 0) break;
    if (!WIFSTOPPED(stop)) {
      threads_.erase(thread);
      calls_.erase(thread);
      if (thread == command) {
        status_ = WIFEXITED(stop) ? WEXITSTATUS(stop) : 0;
        signal_ = WIFSIGNALED(stop) ? WTERMSIG(stop) : 0;
      }
      continue;
    }
    threads_.insert(thread);
    const int event = stop >> 16;
    const int signal = WSTOPSIG(stop);
    if (event == PTRACE_EVENT_SECCOMP) {
      before(thread);
    } else if (signal == (SIGTRAP | 0x80)) {
      behind(thread);
    } else {
      // An event of ptrace's, or a signal that is on its way.
      resume(thread, event == 0 ? signal : 0, calls_.count(thread) != 0);
    }
  }
  writeReport();
  return signal_ != 0 ? 128 + signal_ : status_;
}

/// Lets all calls pass but those of the table, at which the process stops.
void stopAtCalls() {
  std::vector<sock_filter> filter = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, arch)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, AUDIT_ARCH_X86_64, 1, 0),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
  const CallTable table = allCalls();
  for (int i = 0; i < table.count; ++i) {
    filter.push_back(
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(table.first[i].number), 0, 1));
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRACE));
  }
  filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
  sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
  // Root may do without: then set-user-ID programs such as sudo stay what they are.
  if (geteuid() != 0) prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0) {
    std::perror("fault_injector: no filter");
    _exit(kUnusable);
  }
}

int runCommand(const Options& options, char** command) {
  std::array<int, 2> gate{};
  if (pipe(gate.data()) != 0) return kUnusable;
  const pid_t child = fork();
  if (child < 0) return kUnusable;
  if (child == 0) {
    close(gate[1]);
    char byte = 0;
    if (read(gate[0], &byte, 1) != 1) _exit(kUnusable);
    close(gate[0]);
    stopAtCalls();
    execvp(command[0], command);
    std::perror(command[0]);
    _exit(kUnusable);
  }
  close(gate[0]);
  constexpr unsigned long kSeen = PTRACE_O_TRACESECCOMP | PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK |
                                  PTRACE_O_TRACECLONE | PTRACE_O_TRACEEXEC | PTRACE_O_TRACESYSGOOD |
                                  PTRACE_O_EXITKILL;
  if (ptrace(PTRACE_SEIZE, child, nullptr, kSeen) != 0) {
    std::perror("fault_injector: cannot trace");
    return kUnusable;
  }
  if (write(gate[1], "", 1) != 1) return kUnusable;
  close(gate[1]);
  return Run(options).follow(child);
}

/// The index of the command, or 0 where the options make no sense.
int readOptions(int argc, char** argv, Options& options) {
  for (int i = 1; i < argc; ++i) {
    const std::string name = argv[i];
    if (name == "--") return i + 1 < argc ? i + 1 : 0;
    if (name == "--list") {
      options.isListed = true;
      continue;
    }
    if (i + 1 == argc) return 0;
    const std::string value = argv[++i];
    if (name == "--under") options.under.push_back(value);
    if (name == "--ignore") options.ignored = value;
    if (name == "--calls") options.countsAll = value == "all";
    if (name == "--at" || name == "--from") options.at = std::atol(value.c_str());
    if (name == "--from") options.isForAllFrom = true;
    if (name == "--report") options.report = value;
    if (name == "--fault") {
      const std::optional<Fault> fault = faultNamed(value);
      if (!fault) return 0;
      options.fault = *fault;
    }
  }
  return 0;
}

}  // namespace
}  // namespace quillory::faults

int main(int argc, char** argv) {
  quillory::faults::Options options;
  const int command = quillory::faults::readOptions(argc, argv, options);
  if (command == 0) {
    std::fprintf(stderr, "fault_injector: the head of its source tells how to use it\n");
    return quillory::faults::kUnusable;
  }
  return quillory::faults::runCommand(options, argv + command);
}
