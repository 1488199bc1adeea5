#include "tests/faults/tracee.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <ctime>
#include <fstream>

namespace quillory::faults {
namespace {

std::string targetOf(const std::string& link) {
  std::array<char, PATH_MAX> target{};
  const ssize_t length = readlink(link.c_str(), target.data(), target.size());
  return length < 0 ? "" : std::string(target.data(), static_cast<std::size_t>(length));
}

/// What is at `address` there, up to the end of its page or `size`; as many bytes as could be read.
std::string memoryOf(pid_t thread, std::uint64_t address, std::size_t size) {
  std::string bytes(size, '\0');
  iovec here{bytes.data(), size};
  iovec there{reinterpret_cast<void*>(address), size};  // NOLINT: an address of another process
  const ssize_t count = process_vm_readv(thread, &here, 1, &there, 1, 0);
  bytes.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
  return bytes;
}

std::string textOf(pid_t thread, std::uint64_t address) {
  constexpr std::uint64_t kPage = 4096;
  std::string text;
  while (text.size() < PATH_MAX) {
    const std::uint64_t at = address + text.size();
    const std::string piece = memoryOf(thread, at, kPage - at % kPage);
    const std::size_t end = piece.find('\0');
    text += piece.substr(0, end);
    if (end != std::string::npos || piece.empty()) break;
  }
  return text;
}

std::string descriptorPath(pid_t thread, std::uint64_t descriptor) {
  return targetOf("/proc/" + std::to_string(thread) + "/fd/" +
                  std::to_string(static_cast<int>(descriptor)));
}

std::string folderPath(pid_t thread, std::uint64_t descriptor) {
  return static_cast<int>(descriptor) == AT_FDCWD
             ? targetOf("/proc/" + std::to_string(thread) + "/cwd")
             : descriptorPath(thread, descriptor);
}

std::string pathFrom(const std::string& folder, const std::string& path) {
  if (!path.empty() && path[0] == '/') return path;
  return path.empty() ? folder : folder + '/' + path;
}

std::string pathNamedBy(pid_t thread, const PendingCall& pending) {
  const auto argument = static_cast<std::size_t>(pending.call->argument);
  switch (pending.call->naming) {
    case Naming::kDescriptor:
      return descriptorPath(thread, pending.arguments[argument]);
    case Naming::kPath:
      return pathFrom(folderPath(thread, static_cast<std::uint64_t>(AT_FDCWD)),
                      textOf(thread, pending.arguments[argument]));
    case Naming::kPathAt:
      return pathFrom(folderPath(thread, pending.arguments[argument - 1]),
                      textOf(thread, pending.arguments[argument]));
    case Naming::kNothing:
      break;
  }
  return "";
}

CallKind kindOf(const PendingCall& pending) {
  const int number = pending.call->number;
  if (number != SYS_open && number != SYS_openat) return pending.call->kind;
  const std::size_t flags = number == SYS_open ? 1 : 2;
  return opensForChange(pending.arguments[flags]) ? CallKind::kChange : CallKind::kRead;
}

user_regs_struct registersOf(pid_t thread) {
  user_regs_struct registers{};
  ptrace(PTRACE_GETREGS, thread, nullptr, &registers);
  return registers;
}

void setRegisters(pid_t thread, const user_regs_struct& registers) {
  ptrace(PTRACE_SETREGS, thread, nullptr, &registers);
}

}  // namespace

PendingCall pendingCallOf(pid_t thread) {
  const user_regs_struct registers = registersOf(thread);
  PendingCall pending;
  pending.call = callOf(registers.orig_rax);
  if (pending.call == nullptr) return pending;
  pending.arguments = {registers.rdi, registers.rsi, registers.rdx,
                       registers.r10, registers.r8,  registers.r9};
  pending.kind = kindOf(pending);
  pending.path = pathNamedBy(thread, pending);
  return pending;
}

void skipCall(pid_t thread) {
  user_regs_struct registers = registersOf(thread);
  registers.orig_rax = static_cast<unsigned long long>(-1);
  setRegisters(thread, registers);
}

bool halveCall(pid_t thread, const PendingCall& call) {
  const int number = call.call->number;
  const bool hasCount =
      number == SYS_read || number == SYS_write || number == SYS_pread64 || number == SYS_pwrite64;
  if (!hasCount || call.arguments[2] < 2) return false;
  user_regs_struct registers = registersOf(thread);
  registers.rdx = call.arguments[2] / 2;
  setRegisters(thread, registers);
  return true;
}

void leaveCall(pid_t thread, std::int64_t result) {
  user_regs_struct registers = registersOf(thread);
  registers.rax = static_cast<unsigned long long>(result);
  setRegisters(thread, registers);
}

std::int64_t resultOf(pid_t thread) { return static_cast<std::int64_t>(registersOf(thread).rax); }

pid_t processOf(pid_t thread) {
  std::ifstream status("/proc/" + std::to_string(thread) + "/status");
  for (std::string word; status >> word;) {
    pid_t process = 0;
    if (word == "Tgid:" && status >> process) return process;
  }
  return thread;
}

std::int64_t secondsOf(pid_t thread, const PendingCall& call) {
  const std::size_t argument = call.call->number == SYS_nanosleep ? 0 : 2;
  const std::string bytes = memoryOf(thread, call.arguments[argument], sizeof(timespec));
  timespec time{};
  std::memcpy(&time, bytes.data(), std::min(bytes.size(), sizeof time));
  return time.tv_sec;
}

bool makesThread(pid_t thread, const PendingCall& call) {
  std::uint64_t flags = 0;
  if (call.call->number == SYS_clone) flags = call.arguments[0];
  if (call.call->number == SYS_clone3) {
    const std::string bytes = memoryOf(thread, call.arguments[0], sizeof flags);
    std::memcpy(&flags, bytes.data(), std::min(bytes.size(), sizeof flags));
  }
  return (flags & CLONE_THREAD) != 0;
}

}  // namespace quillory::faults
