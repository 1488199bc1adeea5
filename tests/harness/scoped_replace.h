// Replaces a seam (or any variable) until the end of the scope.
#pragma once
#include <utility>

namespace quillory::testing {

template <typename T>
class ScopedReplace {
 public:
  template <typename U>
  ScopedReplace(T& place, U&& value) : place_(place), saved_(std::move(place)) {
    place_ = std::forward<U>(value);
  }
  ~ScopedReplace() { place_ = std::move(saved_); }
  ScopedReplace(const ScopedReplace&) = delete;
  ScopedReplace& operator=(const ScopedReplace&) = delete;

 private:
  T& place_;
  T saved_;
};

}  // namespace quillory::testing
