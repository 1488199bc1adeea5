#include "tests/macos/loader/system/numbers.h"

#include <cerrno>
#include <csignal>
#include <utility>

namespace quillory::loader {
namespace {

struct Pair {
  int ours;
  int theirs;
};

// Those that differ; what is missing has the same number (1 to 34 but for 11) or none there.
constexpr Pair kErrors[] = {
    {EAGAIN, 35},      {EDEADLK, 11},          {EINPROGRESS, 36}, {EALREADY, 37},
    {ENOTSOCK, 38},    {EDESTADDRREQ, 39},     {EMSGSIZE, 40},    {EPROTOTYPE, 41},
    {ENOPROTOOPT, 42}, {EPROTONOSUPPORT, 43},  {ENOTSUP, 45},     {EAFNOSUPPORT, 47},
    {EADDRINUSE, 48},  {EADDRNOTAVAIL, 49},    {ENETDOWN, 50},    {ENETUNREACH, 51},
    {ENETRESET, 52},   {ECONNABORTED, 53},     {ECONNRESET, 54},  {ENOBUFS, 55},
    {EISCONN, 56},     {ENOTCONN, 57},         {ETIMEDOUT, 60},   {ECONNREFUSED, 61},
    {ELOOP, 62},       {ENAMETOOLONG, 63},     {EHOSTDOWN, 64},   {EHOSTUNREACH, 65},
    {ENOTEMPTY, 66},   {EUSERS, 68},           {EDQUOT, 69},      {ESTALE, 70},
    {ENOLCK, 77},      {ENOSYS, 78},           {EOVERFLOW, 84},   {ECANCELED, 89},
    {EIDRM, 90},       {ENOMSG, 91},           {EILSEQ, 92},      {EBADMSG, 94},
    {EMULTIHOP, 95},   {ENODATA, 96},          {ENOLINK, 97},     {EPROTO, 100},
    {ETIME, 101},      {ENOTRECOVERABLE, 104}, {EOWNERDEAD, 105},
};
constexpr int kLastCommonError = 34;

constexpr Pair kSignals[] = {
    {SIGBUS, 10},  {SIGUSR1, 30}, {SIGUSR2, 31}, {SIGCHLD, 20}, {SIGCONT, 19},
    {SIGSTOP, 17}, {SIGTSTP, 18}, {SIGURG, 16},  {SIGIO, 23},   {SIGSYS, 12},
};
constexpr int kSignalsThere = 31;
// 7 is EMT there, 29 is INFO; here 16 is a stack fault, 29 is IO and 30 a power failure.
constexpr bool isSameSignal(int signal) {
  return (signal >= 1 && signal <= 6) || signal == 8 || signal == 9 || signal == 11 ||
         (signal >= 13 && signal <= 15) || signal == 21 || signal == 22 ||
         (signal >= 24 && signal <= 28);
}

template <std::size_t Count>
int find(const Pair (&pairs)[Count], int Pair::*from, int Pair::*to, int number) {
  for (const Pair& pair : pairs)
    if (pair.*from == number) return pair.*to;
  return 0;
}

}  // namespace

int theirError(int ours) {
  if (const int found = find(kErrors, &Pair::ours, &Pair::theirs, ours); found != 0) return found;
  return ours <= kLastCommonError ? ours : find(kErrors, &Pair::ours, &Pair::theirs, EPROTO);
}

int ourError(int theirs) {
  if (const int found = find(kErrors, &Pair::theirs, &Pair::ours, theirs); found != 0) return found;
  // Unknown numbers stay unknown.
  return theirs <= kLastCommonError ? theirs : theirs + 1000;
}

int theirSignal(int ours) {
  if (const int found = find(kSignals, &Pair::ours, &Pair::theirs, ours); found != 0) return found;
  return isSameSignal(ours) ? ours : 0;
}

int ourSignal(int theirs) {
  if (const int found = find(kSignals, &Pair::theirs, &Pair::ours, theirs); found != 0)
    return found;
  return isSameSignal(theirs) && theirs <= kSignalsThere ? theirs : 0;
}

int theirWaitStatus(int ours) {
  if ((ours & 0x7F) == 0x7F) return 0x7F | theirSignal((ours >> 8) & 0xFF) << 8;
  const int signal = ours & 0x7F;
  return signal == 0 ? ours : (ours & ~0x7F) | theirSignal(signal);
}

// A failed call has set ours; it is translated when the image asks, and taken away, so that what
// the image writes there itself is not covered by something older.
int* theirErrorPlace() {
  thread_local int theirs = 0;
  if (errno != 0) theirs = theirError(std::exchange(errno, 0));
  return &theirs;
}

}  // namespace quillory::loader
