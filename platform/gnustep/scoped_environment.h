// An environment variable with another value until the end of the scope. For moments in which no
// other thread reads the environment.
#pragma once
#include <cstdlib>
#include <optional>
#include <string>

namespace quillory::platform {

class ScopedEnvironment {
 public:
  ScopedEnvironment(const char* name, const char* value) : name_(name) {
    if (const char* before = std::getenv(name)) before_ = before;
    setenv(name, value, 1);
  }
  ~ScopedEnvironment() {
    if (before_) {
      setenv(name_, before_->c_str(), 1);
    } else {
      unsetenv(name_);
    }
  }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  const char* name_;
  std::optional<std::string> before_;
};

}  // namespace quillory::platform
