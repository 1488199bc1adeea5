// Signals. A handler of the image gets Darwin's number: it is called by one here.
#include <csignal>
#include <cstdint>

#include "tests/macos/loader/fail.h"
#include "tests/macos/loader/system/numbers.h"
#include "tests/macos/loader/system/tables.h"

namespace quillory::loader {
namespace {

using Handler = void (*)(int);

struct TheirAction {
  Handler handler;
  std::uint32_t mask;
  int flags;
};
static_assert(sizeof(TheirAction) == 16);

struct ActionFlag {
  int theirs;
  int ours;
};
constexpr ActionFlag kActionFlags[] = {
    {0x1, SA_ONSTACK},   {0x2, SA_RESTART},  {0x4, static_cast<int>(SA_RESETHAND)},
    {0x8, SA_NOCLDSTOP}, {0x10, SA_NODEFER}, {0x20, SA_NOCLDWAIT}};

Handler handlers[NSIG];

void callTheirs(int ours) { handlers[ours](theirSignal(ours)); }

// 0 and 1 are "default" and "ignored" on both.
bool isFunction(Handler handler) {
  return handler != SIG_DFL && handler != SIG_IGN && handler != SIG_ERR;
}

int theirSigaction(int signal, const TheirAction* action, TheirAction* before) {
  const int ours = ourSignal(signal);
  if (ours == 0) fail("sigaction: signal", signal);
  struct sigaction set = {};
  struct sigaction was = {};
  if (action != nullptr) {
    int rest = action->flags;
    for (const ActionFlag& flag : kActionFlags) {
      if ((rest & flag.theirs) != 0) set.sa_flags |= flag.ours;
      rest &= ~flag.theirs;
    }
    if (rest != 0) fail("sigaction: flags", action->flags);
    sigemptyset(&set.sa_mask);
    for (int other = 1; other < 32; ++other)
      if ((action->mask & (1u << (other - 1))) != 0 && ourSignal(other) != 0)
        sigaddset(&set.sa_mask, ourSignal(other));
    set.sa_handler = isFunction(action->handler) ? callTheirs : action->handler;
  }
  const Handler handlerBefore = handlers[ours];
  if (action != nullptr && isFunction(action->handler)) handlers[ours] = action->handler;
  const int result = sigaction(ours, action == nullptr ? nullptr : &set, &was);
  if (result == 0 && before != nullptr) {
    *before = {was.sa_handler == callTheirs ? handlerBefore : was.sa_handler, 0, 0};
    for (const ActionFlag& flag : kActionFlags)
      if ((was.sa_flags & flag.ours) != 0) before->flags |= flag.theirs;
    for (int other = 1; other < NSIG; ++other)
      if (theirSignal(other) != 0 && sigismember(&was.sa_mask, other) == 1)
        before->mask |= 1u << (theirSignal(other) - 1);
  }
  return result;
}

Handler theirSignalCall(int signal, Handler handler) {
  const int ours = ourSignal(signal);
  if (ours == 0) fail("signal: signal", signal);
  const Handler handlerBefore = handlers[ours];
  if (isFunction(handler)) handlers[ours] = handler;
  const Handler was = ::signal(ours, isFunction(handler) ? callTheirs : handler);
  return was == callTheirs ? handlerBefore : was;
}

int theirRaise(int signal) { return raise(ourSignal(signal)); }

int theirKill(int process, int signal) {
  if (signal != 0 && ourSignal(signal) == 0) fail("kill: signal", signal);
  return kill(process, ourSignal(signal));
}

}  // namespace

Symbols signalSymbols() {
  static const Symbol kSymbols[] = {
      {"_kill", code(theirKill)},
      {"_raise", code(theirRaise)},
      {"_sigaction", code(theirSigaction)},
      {"_signal", code(theirSignalCall)},
  };
  return kSymbols;
}

}  // namespace quillory::loader
