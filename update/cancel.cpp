#include "update/cancel.h"

#include <signal.h>

#include <initializer_list>

namespace quillory::update {
namespace {

extern "C" void cancel(int) { isCancelled = true; }

}  // namespace

std::atomic<bool> isCancelled = false;

void cancelOnSignals() {
  struct sigaction action {};
  action.sa_handler = cancel;
  sigemptyset(&action.sa_mask);
  for (const int number : {SIGTERM, SIGINT, SIGHUP}) sigaction(number, &action, nullptr);
}

}  // namespace quillory::update
