// pthread. Darwin's objects are larger than the C library's or may be initialised by a constant, so
// each holds a signature and behind it either the C library's object or a pointer to one.
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdint>
#include <ctime>

#include "tests/macos/loader/fail.h"
#include "tests/macos/loader/system/numbers.h"
#include "tests/macos/loader/system/tables.h"

// Of the C library: calls a destructor at the end of the calling thread.
extern "C" int __cxa_thread_atexit_impl(void (*destructor)(void*), void* object, void* library);
extern "C" void* __dso_handle;

namespace quillory::loader {
namespace {

constexpr long kPlainMutex = 0x32AAABA7;
constexpr long kRecursiveMutex = 0x32AAABA2;
constexpr long kErrorCheckingMutex = 0x32AAABA1;
constexpr long kMutexReady = 0x4D555458;

/// What Darwin gives a thread that asks for nothing.
constexpr std::size_t kTheirStack = 512 * 1024;

/// Any of them: the signature says what it is.
template <class Ours, std::size_t Size>
struct Their {
  std::atomic<long> signature;
  alignas(8) unsigned char place[Size - 8];
  Ours* ours() {
    static_assert(sizeof(Ours) <= Size - 8);
    return reinterpret_cast<Ours*>(place);
  }
};

using TheirMutex = Their<pthread_mutex_t, 64>;
using TheirMutexKind = Their<int, 16>;
using TheirOnce = Their<pthread_once_t, 16>;
using TheirThreadAttributes = Their<pthread_attr_t, 64>;
using TheirReadWriteLock = Their<pthread_rwlock_t, 200>;
using TheirCondition = Their<std::atomic<pthread_cond_t*>, 48>;

void makeMutex(pthread_mutex_t* mutex, int kind) {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, kind);
  pthread_mutex_init(mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

// The first use of one that a constant initialised.
pthread_mutex_t* mutexOf(TheirMutex* their) {
  static pthread_mutex_t making = PTHREAD_MUTEX_INITIALIZER;
  if (their->signature.load(std::memory_order_acquire) == kMutexReady) return their->ours();
  pthread_mutex_lock(&making);
  switch (their->signature.load()) {
    case kMutexReady:
      break;
    case kPlainMutex:
      makeMutex(their->ours(), PTHREAD_MUTEX_NORMAL);
      break;
    case kRecursiveMutex:
      makeMutex(their->ours(), PTHREAD_MUTEX_RECURSIVE);
      break;
    case kErrorCheckingMutex:
      makeMutex(their->ours(), PTHREAD_MUTEX_ERRORCHECK);
      break;
    default:
      fail("a mutex with the signature", their->signature.load());
  }
  their->signature.store(kMutexReady, std::memory_order_release);
  pthread_mutex_unlock(&making);
  return their->ours();
}

int theirMutexInit(TheirMutex* their, TheirMutexKind* kind) {
  // Darwin: 0 plain, 1 error checking, 2 recursive.
  constexpr int kKinds[] = {PTHREAD_MUTEX_NORMAL, PTHREAD_MUTEX_ERRORCHECK,
                            PTHREAD_MUTEX_RECURSIVE};
  makeMutex(their->ours(), kKinds[kind == nullptr ? 0 : *kind->ours()]);
  their->signature = kMutexReady;
  return 0;
}

int theirMutexDestroy(TheirMutex* their) {
  const int result = pthread_mutex_destroy(mutexOf(their));
  if (result == 0) their->signature = 0;
  return asTheirError(result);
}

int theirMutexLock(TheirMutex* their) { return asTheirError(pthread_mutex_lock(mutexOf(their))); }

int theirMutexTrylock(TheirMutex* their) {
  return asTheirError(pthread_mutex_trylock(mutexOf(their)));
}

int theirMutexUnlock(TheirMutex* their) {
  return asTheirError(pthread_mutex_unlock(mutexOf(their)));
}

int theirMutexattrInit(TheirMutexKind* kind) {
  *kind->ours() = 0;
  return 0;
}

int theirMutexattrSettype(TheirMutexKind* kind, int type) {
  if (type < 0 || type > 2) return theirError(22);
  *kind->ours() = type;
  return 0;
}

int theirMutexattrDestroy(TheirMutexKind*) { return 0; }

// One is as large here as the whole of theirs, so it stands elsewhere.
pthread_cond_t* conditionOf(TheirCondition* their) {
  std::atomic<pthread_cond_t*>& place = *their->ours();
  pthread_cond_t* found = place.load();
  if (found != nullptr) return found;
  auto* const made = new pthread_cond_t(PTHREAD_COND_INITIALIZER);
  if (place.compare_exchange_strong(found, made)) return made;
  delete made;
  return found;
}

int theirCondInit(TheirCondition* their, const void* attributes) {
  if (attributes != nullptr) fail("pthread_cond_init with attributes");
  their->ours()->store(nullptr);
  return 0;
}

int theirCondDestroy(TheirCondition* their) {
  delete their->ours()->exchange(nullptr);
  return 0;
}

int theirCondSignal(TheirCondition* their) {
  return asTheirError(pthread_cond_signal(conditionOf(their)));
}

int theirCondBroadcast(TheirCondition* their) {
  return asTheirError(pthread_cond_broadcast(conditionOf(their)));
}

int theirCondWait(TheirCondition* their, TheirMutex* mutex) {
  return asTheirError(pthread_cond_wait(conditionOf(their), mutexOf(mutex)));
}

int theirCondTimedwait(TheirCondition* their, TheirMutex* mutex, const timespec* end) {
  return asTheirError(pthread_cond_timedwait(conditionOf(their), mutexOf(mutex), end));
}

int theirCondTimedwaitRelative(TheirCondition* their, TheirMutex* mutex, const timespec* time) {
  timespec end;
  clock_gettime(CLOCK_REALTIME, &end);
  end.tv_sec += time->tv_sec;
  end.tv_nsec += time->tv_nsec;
  if (end.tv_nsec >= 1000000000) {
    ++end.tv_sec;
    end.tv_nsec -= 1000000000;
  }
  return theirCondTimedwait(their, mutex, &end);
}

// A constant initialises all of it but the signature with zeros, as ours wants it.
int theirRwlockRdlock(TheirReadWriteLock* their) {
  return asTheirError(pthread_rwlock_rdlock(their->ours()));
}

int theirRwlockWrlock(TheirReadWriteLock* their) {
  return asTheirError(pthread_rwlock_wrlock(their->ours()));
}

int theirRwlockUnlock(TheirReadWriteLock* their) {
  return asTheirError(pthread_rwlock_unlock(their->ours()));
}

int theirCallOnce(TheirOnce* their, void (*function)()) {
  return asTheirError(pthread_once(their->ours(), function));
}

int theirAttrInit(TheirThreadAttributes* their) {
  pthread_attr_init(their->ours());
  return asTheirError(pthread_attr_setstacksize(their->ours(), kTheirStack));
}

int theirAttrDestroy(TheirThreadAttributes* their) {
  return asTheirError(pthread_attr_destroy(their->ours()));
}

// In whole pages only, there.
int theirAttrSetstacksize(TheirThreadAttributes* their, std::size_t size) {
  constexpr std::size_t kPage = 4096;
  if (size < 8192 || size % kPage != 0) return theirError(22);
  return asTheirError(pthread_attr_setstacksize(
      their->ours(), std::max(size, static_cast<std::size_t>(PTHREAD_STACK_MIN))));
}

int theirAttrSetdetachstate(TheirThreadAttributes* their, int state) {
  return asTheirError(pthread_attr_setdetachstate(
      their->ours(), state == 2 ? PTHREAD_CREATE_DETACHED : PTHREAD_CREATE_JOINABLE));
}

int theirCreate(pthread_t* thread, TheirThreadAttributes* their, void* (*function)(void*),
                void* argument) {
  TheirThreadAttributes usual{};
  if (their == nullptr) theirAttrInit(&usual);
  const int result =
      pthread_create(thread, (their == nullptr ? &usual : their)->ours(), function, argument);
  if (their == nullptr) theirAttrDestroy(&usual);
  return asTheirError(result);
}

int theirJoin(pthread_t thread, void** result) {
  return asTheirError(pthread_join(thread, result));
}

int theirDetach(pthread_t thread) { return asTheirError(pthread_detach(thread)); }

int theirKeyCreate(unsigned long* key, void (*destructor)(void*)) {
  pthread_key_t ours;
  const int result = pthread_key_create(&ours, destructor);
  *key = ours;
  return asTheirError(result);
}

int theirKeyDelete(unsigned long key) {
  return asTheirError(pthread_key_delete(static_cast<pthread_key_t>(key)));
}

void* theirGetspecific(unsigned long key) {
  return pthread_getspecific(static_cast<pthread_key_t>(key));
}

int theirSetspecific(unsigned long key, const void* value) {
  return asTheirError(pthread_setspecific(static_cast<pthread_key_t>(key), value));
}

pthread_t theirSelf() { return pthread_self(); }

unsigned theirMachThread(pthread_t thread) {
  if (pthread_equal(thread, pthread_self()) == 0) fail("pthread_mach_thread_np of another thread");
  return static_cast<unsigned>(syscall(SYS_gettid));
}

std::size_t theirStacksize(pthread_t thread) {
  pthread_attr_t attributes;
  std::size_t size = 0;
  if (pthread_getattr_np(thread, &attributes) != 0) fail("pthread_get_stacksize_np");
  pthread_attr_getstacksize(&attributes, &size);
  pthread_attr_destroy(&attributes);
  return size;
}

// The C library does this before it gives back the block that the object may stand in.
void theirThreadAtexit(void (*destructor)(void*), void* object) {
  __cxa_thread_atexit_impl(destructor, object, &__dso_handle);
}

int theirSetname(const char* name) {
  pthread_setname_np(pthread_self(), name);
  return 0;
}

}  // namespace

Symbols threadSymbols() {
  static const Symbol kSymbols[] = {
      {"__tlv_atexit", code(theirThreadAtexit)},
      {"_pthread_attr_destroy", code(theirAttrDestroy)},
      {"_pthread_attr_init", code(theirAttrInit)},
      {"_pthread_attr_setdetachstate", code(theirAttrSetdetachstate)},
      {"_pthread_attr_setstacksize", code(theirAttrSetstacksize)},
      {"_pthread_cond_broadcast", code(theirCondBroadcast)},
      {"_pthread_cond_destroy", code(theirCondDestroy)},
      {"_pthread_cond_init", code(theirCondInit)},
      {"_pthread_cond_signal", code(theirCondSignal)},
      {"_pthread_cond_timedwait", code(theirCondTimedwait)},
      {"_pthread_cond_timedwait_relative_np", code(theirCondTimedwaitRelative)},
      {"_pthread_cond_wait", code(theirCondWait)},
      {"_pthread_create", code(theirCreate)},
      {"_pthread_detach", code(theirDetach)},
      {"_pthread_get_stacksize_np", code(theirStacksize)},
      {"_pthread_getspecific", code(theirGetspecific)},
      {"_pthread_join", code(theirJoin)},
      {"_pthread_key_create", code(theirKeyCreate)},
      {"_pthread_key_delete", code(theirKeyDelete)},
      {"_pthread_mach_thread_np", code(theirMachThread)},
      {"_pthread_mutex_destroy", code(theirMutexDestroy)},
      {"_pthread_mutex_init", code(theirMutexInit)},
      {"_pthread_mutex_lock", code(theirMutexLock)},
      {"_pthread_mutex_trylock", code(theirMutexTrylock)},
      {"_pthread_mutex_unlock", code(theirMutexUnlock)},
      {"_pthread_mutexattr_destroy", code(theirMutexattrDestroy)},
      {"_pthread_mutexattr_init", code(theirMutexattrInit)},
      {"_pthread_mutexattr_settype", code(theirMutexattrSettype)},
      {"_pthread_once", code(theirCallOnce)},
      {"_pthread_rwlock_rdlock", code(theirRwlockRdlock)},
      {"_pthread_rwlock_unlock", code(theirRwlockUnlock)},
      {"_pthread_rwlock_wrlock", code(theirRwlockWrlock)},
      {"_pthread_self", code(theirSelf)},
      {"_pthread_setname_np", code(theirSetname)},
      {"_pthread_setspecific", code(theirSetspecific)},
  };
  return kSymbols;
}

}  // namespace quillory::loader
