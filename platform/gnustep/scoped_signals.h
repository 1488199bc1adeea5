// Keeps what the process was told to do on a signal, whatever a toolkit sets up in the scope. A
// launcher dies of what kills other programs, and so do the shell tools that it starts.
#pragma once
#include <signal.h>

#include <array>
#include <cstddef>

namespace quillory::platform {

class ScopedSignals {
 public:
  ScopedSignals() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], nullptr, &before_[i]);
  }
  ~ScopedSignals() {
    for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &before_[i], nullptr);
  }
  ScopedSignals(const ScopedSignals&) = delete;
  ScopedSignals& operator=(const ScopedSignals&) = delete;

 private:
  static constexpr std::array kSignals = {SIGPIPE, SIGTERM, SIGINT, SIGHUP};
  std::array<struct sigaction, kSignals.size()> before_;
};

}  // namespace quillory::platform
