// To be preloaded into the launcher: the system refuses it the thread of the number that
// QUILLORY_REFUSED_THREAD has, counted from the run thread, which is 1. Programs that it starts get
// theirs. What runs the launcher may have threads of its own before: QUILLORY_EARLIER_THREADS says
// how many.
#include <dlfcn.h>
#include <errno.h>
#include <pthread.h>
#include <stdlib.h>

#include <atomic>

namespace {

using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);

// Read before the launcher starts anything, and then hidden from its children.
const int refused = [] {
  const char* const number = getenv("QUILLORY_REFUSED_THREAD");
  const char* const earlier = getenv("QUILLORY_EARLIER_THREADS");
  const int value = number == nullptr ? 0 : atoi(number) + (earlier == nullptr ? 0 : atoi(earlier));
  unsetenv("QUILLORY_REFUSED_THREAD");
  return value;
}();

std::atomic<int> asked = 0;

}  // namespace

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*body)(void*), void* argument) noexcept {
  static const Create create = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
  if (++asked == refused) return EAGAIN;
  return create(thread, attributes, body, argument);
}
