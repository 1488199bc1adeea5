#include "tests/faults/fault.h"

#include <fcntl.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <initializer_list>

namespace quillory::faults {
namespace {

constexpr struct {
  const char* name;
  Fault fault;
} kFaults[] = {
    {"kill", {FaultKind::kKill, 0}},      {"kill-all", {FaultKind::kKillAll, 0}},
    {"short", {FaultKind::kShort, 0}},    {"ENOSPC", {FaultKind::kFail, ENOSPC}},
    {"EIO", {FaultKind::kFail, EIO}},     {"EMFILE", {FaultKind::kFail, EMFILE}},
    {"EINTR", {FaultKind::kFail, EINTR}}, {"EAGAIN", {FaultKind::kFail, EAGAIN}},
};

bool isOneOf(int number, std::initializer_list<int> numbers) {
  return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

bool isOpen(int number) { return isOneOf(number, {SYS_open, SYS_openat, SYS_creat}); }

bool isTransfer(int number) {
  return isOneOf(number, {SYS_read, SYS_pread64, SYS_readv, SYS_write, SYS_pwrite64, SYS_writev,
                          SYS_pwritev, SYS_sendfile, SYS_copy_file_range});
}

bool needsRoom(const PendingCall& call) {
  const int number = call.call->number;
  if (isOpen(number)) {
    const std::uint64_t flags = call.arguments[number == SYS_openat ? 2 : 1];
    return number == SYS_creat || (flags & O_CREAT) != 0;
  }
  return (isTransfer(number) && call.kind == CallKind::kChange) ||
         isOneOf(number, {SYS_mkdir, SYS_mkdirat, SYS_symlink, SYS_symlinkat, SYS_link, SYS_linkat,
                          SYS_rename, SYS_renameat, SYS_renameat2, SYS_fallocate});
}

bool canFailWith(int error, const PendingCall& call) {
  const int number = call.call->number;
  switch (error) {
    case ENOSPC:
      return needsRoom(call);
    case EIO:
      return call.kind == CallKind::kChange || isTransfer(number);
    case EMFILE:
      return isOpen(number) || isOneOf(number, {SYS_pipe, SYS_pipe2});
    case EINTR:
      return isOpen(number) || isTransfer(number) || number == SYS_flock;
    case EAGAIN:
      return isOneOf(number, {SYS_clone, SYS_clone3, SYS_fork, SYS_vfork});
    default:
      return false;
  }
}

}  // namespace

std::optional<Fault> faultNamed(const std::string& name) {
  for (const auto& [known, fault] : kFaults)
    if (name == known) return fault;
  return std::nullopt;
}

bool canHappen(const Fault& fault, const PendingCall& call) {
  switch (fault.kind) {
    case FaultKind::kNone:
      return false;
    case FaultKind::kShort:
      return isTransfer(call.call->number);
    case FaultKind::kFail:
      return canFailWith(fault.error, call);
    case FaultKind::kKill:
    case FaultKind::kKillAll:
      return true;
  }
  return false;
}

std::string faultsFor(const PendingCall& call) {
  std::string names;
  for (const auto& [name, fault] : kFaults)
    if (canHappen(fault, call)) names += (names.empty() ? "" : ",") + std::string(name);
  return names;
}

}  // namespace quillory::faults
